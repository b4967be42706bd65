// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CColor.h"
#include "gui/CControl.h"
#include "gui/drawing/CDrawContext.h"

#include <array>
#include <cstddef>

namespace qlx::gui {

/// Room for a converter's text, its terminating zero included.
inline constexpr std::size_t kDisplayTextSize = 256;

/// Turns a value into a text (UTF-8) of at most kDisplayTextSize - 1 bytes. `text` comes as an
/// empty string.
using CParamDisplayConverter = void (*)(float value, char* text, void* userData);

/// Bits of a display's style.
enum CParamDisplayStyle : std::int32_t {
  kNoFrame = 1,     ///< no frame around a plain background
  kNoTextStyle = 2, ///< nothing is written
  kNoDrawStyle = 4, ///< nothing is drawn at all
};

/// Shows a text made from its value over its part of a background bitmap, or, without one, over a
/// plain background with a frame. Without a converter it shows the value with two decimals. Ignores
/// the mouse.
class CParamDisplay : public CControl {
 public:
  CParamDisplay(const CRect& size, CBitmapRef background = nullptr, std::int32_t style = 0);

  bool isTypeOf(std::string_view className) const override {
    return className == "CParamDisplay" || CControl::isTypeOf(className);
  }
  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;

  /// The converter is called with `userData` whenever the display is drawn.
  void setStringConvert(CParamDisplayConverter converter, void* userData = nullptr);

  void setFont(const CFontDesc& font);
  const CFontDesc& getFont() const { return m_font; }
  void setFontColor(const CColor& colour);
  const CColor& getFontColor() const { return m_fontColour; }
  void setBackColor(const CColor& colour);
  void setFrameColor(const CColor& colour);
  void setHoriAlign(CHoriTxtAlign align);
  CHoriTxtAlign getHoriAlign() const { return m_align; }
  std::int32_t getStyle() const { return m_style; }

 protected:
  CParamDisplay(const CParamDisplay&) = default;
  bool looksAlike(float a, float b) const override;
  std::string textOfValue() const override { return textFor(getValue()).data(); }
  void drawBack(CDrawContext& context) const;
  void drawText(CDrawContext& context, std::string_view text) const;

 private:
  using Text = std::array<char, kDisplayTextSize>;

  /// Ends in zeros, whatever a converter writes.
  Text textFor(float value) const;

  CParamDisplayConverter m_converter = nullptr;
  void* m_userData = nullptr;
  CFontDesc m_font = kNormalFontSmall;
  CColor m_fontColour = kWhiteCColor;
  CColor m_backColour = kBlackCColor;
  CColor m_frameColour = kBlackCColor;
  CHoriTxtAlign m_align = CHoriTxtAlign::kCenterText;
  std::int32_t m_style;
};

} // namespace qlx::gui
