// SPDX-License-Identifier: ISC
#include "gui/drawing/CBitmap.h"

#include "gui/drawing/PngImage.h"

#include <algorithm>
#include <array>

namespace qlx::gui {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr int kLargestSide = 32767;
constexpr std::array<std::uint8_t, 8> kPngSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t kDibFileHeaderSize = 14;
constexpr std::size_t kDibHeaderSize = 40;

std::uint32_t littleEndian(Bytes bytes, std::size_t offset, std::size_t count) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < count; ++i)
    value |= static_cast<std::uint32_t>(bytes[offset + i]) << (8 * i);
  return value;
}

std::optional<PixelBuffer> decodeDib(Bytes bytes) {
  if (bytes.size() >= kDibFileHeaderSize && bytes[0] == 'B' && bytes[1] == 'M')
    bytes = bytes.subspan(kDibFileHeaderSize);
  if (bytes.size() < kDibHeaderSize || littleEndian(bytes, 0, 4) != kDibHeaderSize)
    return std::nullopt;
  const auto width = static_cast<std::int32_t>(littleEndian(bytes, 4, 4));
  const auto signedHeight = static_cast<std::int32_t>(littleEndian(bytes, 8, 4));
  const std::uint32_t depth = littleEndian(bytes, 14, 2);
  const bool uncompressed = littleEndian(bytes, 16, 4) == 0;
  if (!uncompressed || (depth != 24 && depth != 32) || width <= 0 || width > kLargestSide ||
      signedHeight == 0 || signedHeight < -kLargestSide || signedHeight > kLargestSide)
    return std::nullopt;
  const bool fromTop = signedHeight < 0;
  const int height = fromTop ? -signedHeight : signedHeight;
  const std::size_t pixelBytes = depth / 8;
  const std::size_t stride = (static_cast<std::size_t>(width) * pixelBytes + 3) / 4 * 4;
  if (bytes.size() - kDibHeaderSize < stride * static_cast<std::size_t>(height))
    return std::nullopt;
  PixelBuffer pixels(width, height);
  for (int y = 0; y < height; ++y) {
    const auto line = static_cast<std::size_t>(fromTop ? y : height - 1 - y);
    for (int x = 0; x < width; ++x)
      pixels.row(y)[x] =
          0xFF000000U |
          littleEndian(
              bytes, kDibHeaderSize + line * stride + static_cast<std::size_t>(x) * pixelBytes, 3);
  }
  return pixels;
}

} // namespace

CBitmapRef CBitmap::decode(std::span<const std::uint8_t> bytes) {
  const bool png = bytes.size() >= kPngSignature.size() &&
                   std::equal(kPngSignature.begin(), kPngSignature.end(), bytes.begin());
  auto pixels = png ? decodePng(bytes) : decodeDib(bytes);
  return pixels ? std::make_shared<const CBitmap>(std::move(*pixels)) : nullptr;
}

} // namespace qlx::gui
