// SPDX-License-Identifier: ISC
#pragma once

#include "gui/drawing/PixelBuffer.h"
#include "gui/drawing/PngImage.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// The form into which resources/images packs PNG files while building: for each of them a
/// PackedImageHead and a zlib stream, behind each other where a strip has several. Every pixel is
/// green, red - green, blue - green and, with four channels, alpha; colours are multiplied by alpha
/// before. From these bytes those of the image's base are taken, then what the filter predicts, all
/// modulo 256. Numbers are stored lowest byte first.
namespace qlx::gui {

inline constexpr std::array<char, 4> kPackedImageTag{'Q', 'L', 'X', 'I'};

/// For each byte that of the same channel in the pixel to the left or above (0 outside), or
/// Paeth's choice between these two and the one above the left.
enum class ImageFilter : std::uint8_t { none, left, above, paeth };

struct PackedImageHead {
  std::array<char, 4> tag;
  std::uint16_t width;
  std::uint16_t height;
  std::uint8_t channels; ///< 3 of an opaque image, or 4
  ImageFilter filter;
  std::uint8_t base; ///< how many images before this one its base stands; 0: it has none
  std::uint8_t unused;
  std::uint32_t bytes; ///< of the stream
};

static_assert(sizeof(PackedImageHead) == 16);

bool isPackedImage(std::span<const std::uint8_t> file);

/// Parts such images that follow each other in `bytes`. What follows no complete one is one of its
/// own.
std::vector<std::span<const std::uint8_t>> partedPackedImages(std::span<const std::uint8_t> bytes);

/// Nothing for what decodePackedImage refuses without looking at the stream.
std::optional<ImageSize> packedImageSize(std::span<const std::uint8_t> file);

/// Image `index` of such files. Nothing where it, or its base, which must be of the same size and
/// have no base of its own, is broken or not there. Any thread.
std::optional<PixelBuffer> decodePackedImage(std::span<const std::span<const std::uint8_t>> files,
                                             std::size_t index);

/// What the filter predicts for the byte at `x` of a row of bytes with so many channels; `above` is
/// the row above, empty at the top.
inline std::uint8_t predictedByte(ImageFilter filter, const std::uint8_t* row,
                                  const std::uint8_t* above, std::size_t x, std::size_t channels) {
  const int left = x < channels ? 0 : row[x - channels];
  const int up = above == nullptr ? 0 : above[x];
  if (filter == ImageFilter::none) return 0;
  if (filter == ImageFilter::left) return static_cast<std::uint8_t>(left);
  if (filter == ImageFilter::above) return static_cast<std::uint8_t>(up);
  const int corner = x < channels || above == nullptr ? 0 : above[x - channels];
  const int toLeft = up > corner ? up - corner : corner - up;
  const int toUp = left > corner ? left - corner : corner - left;
  const int both = left + up - 2 * corner;
  const int toCorner = both > 0 ? both : -both;
  if (toLeft <= toUp && toLeft <= toCorner) return static_cast<std::uint8_t>(left);
  return static_cast<std::uint8_t>(toUp <= toCorner ? up : corner);
}

} // namespace qlx::gui
