// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CParamDisplay.h"

namespace qlx::editor {

/// A display under a knob: small white text in the middle of its well. The background bitmap is
/// the window's; with the display's own corner as background offset the well shows through.
class CBrezanParamDisplay final : public gui::CParamDisplay {
 public:
  CBrezanParamDisplay(const gui::CRect& size, gui::CBitmapRef background, std::int32_t style = 0);
};

} // namespace qlx::editor
