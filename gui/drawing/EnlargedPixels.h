// SPDX-License-Identifier: ISC
#pragma once

#include "gui/drawing/PixelBuffer.h"

namespace qlx::gui {

/// A picture, both of whose sides are even, one and a half times as large by Catmull-Rom's cubic.
PixelBuffer halfAsLargeAgain(const PixelBuffer& picture);

} // namespace qlx::gui
