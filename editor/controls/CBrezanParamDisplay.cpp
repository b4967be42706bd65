// SPDX-License-Identifier: ISC
#include "editor/controls/CBrezanParamDisplay.h"

namespace qlx::editor {

CBrezanParamDisplay::CBrezanParamDisplay(const gui::CRect& size, gui::CBitmapRef background,
                                         std::int32_t style)
    : CParamDisplay(size, std::move(background), style) {
  setHoriAlign(gui::CHoriTxtAlign::kCenterText);
  setFont(gui::kNormalFontSmall);
  setFontColor(gui::kWhiteCColor);
}

} // namespace qlx::editor
