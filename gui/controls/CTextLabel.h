// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CParamDisplay.h"

#include <string>

namespace qlx::gui {

/// Shows a fixed text (UTF-8) in the manner of a display.
class CTextLabel : public CParamDisplay {
 public:
  CTextLabel(const CRect& size, std::string_view text, CBitmapRef background = nullptr,
             std::int32_t style = 0);

  bool isTypeOf(std::string_view className) const override {
    return className == "CTextLabel" || CParamDisplay::isTypeOf(className);
  }
  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;

  void setText(std::string_view text);
  const std::string& getText() const { return m_text; }

 protected:
  CTextLabel(const CTextLabel&) = default;
  std::string textOfValue() const override { return m_text; }

 private:
  std::string m_text;
};

} // namespace qlx::gui
