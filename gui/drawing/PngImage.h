// SPDX-License-Identifier: ISC
#pragma once

#include "gui/drawing/PixelBuffer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qlx::gui {

/// The pixels of a PNG file of the kind that the editor's images are: 8 bits of red, green, blue
/// and alpha, not interlaced, both sides at most 32767. Nothing for other or broken files;
/// checksums are not looked at. Any thread.
std::optional<PixelBuffer> decodePng(std::span<const std::uint8_t> file);

struct ImageSize {
  int width;
  int height;
};

/// The size that such a file announces. Nothing for files that decodePng refuses without looking at
/// the image data.
std::optional<ImageSize> pngSize(std::span<const std::uint8_t> file);

/// Parts PNG files that follow each other in `bytes`. What follows no complete file is one of its
/// own.
std::vector<std::span<const std::uint8_t>> partedPngFiles(std::span<const std::uint8_t> bytes);

/// What a zlib stream holds; nothing where that is broken or not `size` bytes long. Its checksum is
/// not looked at.
std::optional<std::vector<std::uint8_t>> inflated(std::span<const std::uint8_t> stream,
                                                  std::size_t size);

} // namespace qlx::gui
