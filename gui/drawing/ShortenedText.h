// SPDX-License-Identifier: ISC
#pragma once

#include "gui/drawing/CTypeface.h"

#include <string>
#include <string_view>

namespace qlx::gui {

/// A text (UTF-8) that fits into `room` pixels: where it is too long its end, or its beginning,
/// gives way to an ellipsis. `typeface` may be null: nothing is too long then.
std::string shortenedAtEnd(CTypeface* typeface, std::string_view text, const CFontDesc& font,
                           int room);
std::string shortenedAtStart(CTypeface* typeface, std::string_view text, const CFontDesc& font,
                             int room);

} // namespace qlx::gui
