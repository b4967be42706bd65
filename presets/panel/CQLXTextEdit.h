// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CTextEdit.h"

namespace qlx::presets {

/// The preset panel's name field: dark, centred text on its part of the window's background, edited
/// in place.
class CQLXTextEdit final : public gui::CTextEdit {
 public:
  /// The field is `left`..`right` wide and lies around the height `middle`.
  CQLXTextEdit(gui::CCoord left, gui::CCoord right, gui::CCoord middle,
               gui::CControlListener* listener, std::int32_t tag, std::string_view text,
               gui::CBitmapRef background);
};

} // namespace qlx::presets
