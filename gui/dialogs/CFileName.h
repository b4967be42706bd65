// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CTextEdit.h"

#include <functional>

namespace qlx::gui {

/// The field of a file dialog that a name is typed into. Keys that mean the dialog go there.
class CFileName final : public CTextEdit {
 public:
  /// `dialogKey` is asked about every key before the field takes it; true when it has dealt with
  /// it.
  CFileName(const CRect& size, std::string_view name,
            std::function<bool(const CKeyCode&)> dialogKey);

  bool onKeyDown(const CKeyCode& key) override;

 private:
  std::function<bool(const CKeyCode&)> m_dialogKey;
};

} // namespace qlx::gui
