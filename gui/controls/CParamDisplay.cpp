// SPDX-License-Identifier: ISC
#include "gui/controls/CParamDisplay.h"

#include <charconv>

namespace qlx::gui {

CParamDisplay::CParamDisplay(const CRect& size, CBitmapRef background, std::int32_t style)
    : CControl(size, nullptr, 0, std::move(background)), m_style(style) {
  setMouseEnabled(false);
}

std::unique_ptr<CView> CParamDisplay::newCopy() const {
  return std::unique_ptr<CView>(new CParamDisplay(*this));
}

CParamDisplay::Text CParamDisplay::textFor(float value) const {
  Text text{};
  if (m_converter != nullptr) {
    m_converter(value, text.data(), m_userData);
  } else {
    std::to_chars(text.data(), text.data() + text.size() - 1, static_cast<double>(value),
                  std::chars_format::fixed, 2);
  }
  text.back() = '\0';
  return text;
}

bool CParamDisplay::looksAlike(float a, float b) const {
  return std::string_view(textFor(a).data()) == textFor(b).data();
}

void CParamDisplay::draw(CDrawContext& context) {
  const Text text = textFor(drawnValue());
  drawBack(context);
  drawText(context, text.data());
  setDirty(false);
}

void CParamDisplay::drawBack(CDrawContext& context) const {
  if ((m_style & kNoDrawStyle) != 0) return;
  if (getBackground() != nullptr) {
    drawBackground(context);
    return;
  }
  context.fillRect(getViewSize(), m_backColour);
  if ((m_style & kNoFrame) == 0) context.frameRect(getViewSize(), m_frameColour);
}

void CParamDisplay::drawText(CDrawContext& context, std::string_view text) const {
  if ((m_style & (kNoDrawStyle | kNoTextStyle)) != 0) return;
  context.setFont(m_font);
  context.setFontColor(m_fontColour);
  context.drawString(text, getViewSize(), m_align);
}

void CParamDisplay::setStringConvert(CParamDisplayConverter converter, void* userData) {
  m_converter = converter;
  m_userData = userData;
  setDirty();
}

void CParamDisplay::setFont(const CFontDesc& font) {
  m_font = font;
  setDirty();
}

void CParamDisplay::setFontColor(const CColor& colour) {
  m_fontColour = colour;
  setDirty();
}

void CParamDisplay::setBackColor(const CColor& colour) {
  m_backColour = colour;
  setDirty();
}

void CParamDisplay::setFrameColor(const CColor& colour) {
  m_frameColour = colour;
  setDirty();
}

void CParamDisplay::setHoriAlign(CHoriTxtAlign align) {
  m_align = align;
  setDirty();
}

} // namespace qlx::gui
