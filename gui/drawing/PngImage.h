// SPDX-License-Identifier: ISC
#pragma once

#include "gui/drawing/PixelBuffer.h"

#include <optional>
#include <span>

namespace qlx::gui {

/// The pixels of a PNG file of the kind that the editor's images are: 8 bits of red, green, blue
/// and alpha, not interlaced, both sides at most 32767. Nothing for other or broken files;
/// checksums are not looked at. Any thread.
std::optional<PixelBuffer> decodePng(std::span<const std::uint8_t> file);

} // namespace qlx::gui
