// SPDX-License-Identifier: ISC
#include "gui/controls/CTextLabel.h"

namespace qlx::gui {

CTextLabel::CTextLabel(const CRect& size, std::string_view text, CBitmapRef background,
                       std::int32_t style)
    : CParamDisplay(size, std::move(background), style), m_text(text) {}

std::unique_ptr<CView> CTextLabel::newCopy() const {
  return std::unique_ptr<CView>(new CTextLabel(*this));
}

void CTextLabel::draw(CDrawContext& context) {
  drawBack(context);
  drawText(context, m_text);
  setDirty(false);
}

void CTextLabel::setText(std::string_view text) {
  if (text == m_text) return;
  m_text = text;
  setDirty();
}

} // namespace qlx::gui
