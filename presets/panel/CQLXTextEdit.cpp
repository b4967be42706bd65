// SPDX-License-Identifier: ISC
#include "presets/panel/CQLXTextEdit.h"

namespace qlx::presets {

namespace {

constexpr gui::CFontDesc kNameFont{11.0};
constexpr gui::CColor kNameColour{36, 36, 32, 255};
constexpr gui::CCoord kSpaceAroundText = 2.0;
constexpr std::size_t kMostTyped = 255;
constexpr std::size_t kMostShownWhileTyping = 29;

gui::CRect placeOf(gui::CCoord left, gui::CCoord right, gui::CCoord middle) {
  const gui::CCoord half = kNameFont.size / 2.0 + kSpaceAroundText;
  return {left, middle - half, right, middle + half};
}

} // namespace

CQLXTextEdit::CQLXTextEdit(gui::CCoord left, gui::CCoord right, gui::CCoord middle,
                           gui::CControlListener* listener, std::int32_t tag, std::string_view text,
                           gui::CBitmapRef background)
    : CTextEdit(placeOf(left, right, middle), listener, tag, text, std::move(background)) {
  setBackOffset(getViewSize().topLeft());
  setFont(kNameFont);
  setFontColor(kNameColour);
  setFrameColor(kNameColour);
  setBackColor(gui::kWhiteCColor);
  setHoriAlign(gui::CHoriTxtAlign::kCenterText);
  setInputLimit(kMostTyped);
  setFieldLimit(kMostShownWhileTyping);
}

} // namespace qlx::presets
