// SPDX-License-Identifier: ISC
#include "gui/drawing/CBitmap.h"

#include "gui/drawing/EnlargedPixels.h"
#include "gui/drawing/PackedImage.h"
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

bool isPng(Bytes bytes) {
  return bytes.size() >= kPngSignature.size() &&
         std::equal(kPngSignature.begin(), kPngSignature.end(), bytes.begin());
}

bool isParted(Bytes bytes) { return isPackedImage(bytes) || isPng(bytes); }

std::vector<Bytes> partsOf(Bytes bytes) {
  return isPackedImage(bytes) ? partedPackedImages(bytes) : partedPngFiles(bytes);
}

std::optional<ImageSize> sizeOf(Bytes part) {
  return isPackedImage(part) ? packedImageSize(part) : pngSize(part);
}

std::optional<PixelBuffer> decodedPart(std::span<const Bytes> parts, std::size_t index) {
  const Bytes part = parts[index];
  return isPackedImage(part) ? decodePackedImage(parts, index) : decodePng(part);
}

} // namespace

CBitmap::CBitmap(PixelBuffer pixels)
    : m_width(pixels.width), m_height(pixels.height), m_plain(std::move(pixels)) {}

CBitmap::CBitmap(Files files, int width, int height)
    : m_files(std::move(files)), m_width(width), m_height(height) {}

CBitmapRef CBitmap::decode(Bytes bytes) {
  auto pixels = isParted(bytes) ? decodedPart(std::span(&bytes, 1), 0) : decodeDib(bytes);
  return pixels ? std::make_shared<const CBitmap>(std::move(*pixels)) : nullptr;
}

CBitmapRef CBitmap::load(Files files) {
  const Bytes plain = files(1);
  if (!isParted(plain)) {
    const auto pixels = decodeDib(plain);
    if (!pixels) return nullptr;
    return CBitmapRef(new CBitmap(std::move(files), pixels->width, pixels->height));
  }
  const auto parts = partsOf(plain);
  const auto size = sizeOf(parts.front());
  if (!size || parts.size() > static_cast<std::size_t>(kLargestSide / size->height)) return nullptr;
  return CBitmapRef(
      new CBitmap(std::move(files), size->width, size->height * static_cast<int>(parts.size())));
}

// Without pixels where the files don't fit.
CBitmap::Pieces CBitmap::piecesOf(int scale, int from) const {
  const Bytes bytes = m_files == nullptr ? Bytes{} : m_files(from);
  const int width = m_width * from;
  const int height = m_height * from;
  if (bytes.empty()) return {};
  Pieces pieces{height, from, {}, {}};
  if (!isParted(bytes)) {
    auto pixels = decodeDib(bytes);
    if (scale != from || !pixels || pixels->width != width || pixels->height != height) return {};
    pieces.pixels.push_back(std::move(*pixels));
    return pieces;
  }
  pieces.files = partsOf(bytes);
  const int count = static_cast<int>(pieces.files.size());
  const int drawn = height / count;
  const auto fits = [&](Bytes file) {
    const auto size = sizeOf(file);
    return size && size->width == width && size->height == drawn;
  };
  pieces.height = drawn * scale / from;
  if (drawn * count != height || pieces.height * from != drawn * scale ||
      !std::ranges::all_of(pieces.files, fits))
    return {};
  pieces.pixels.resize(pieces.files.size());
  return pieces;
}

CBitmap::Pieces CBitmap::enlarged(int scale) const {
  PixelBuffer large(m_width * scale, m_height * scale);
  for (int y = 0; y < large.height; ++y) {
    const std::uint32_t* from =
        m_files == nullptr ? m_plain.row(y / scale) : decodedRow(1, y / scale);
    std::uint32_t* to = large.row(y);
    for (int x = 0; x < large.width; ++x) to[x] = from[x / scale];
  }
  Pieces pieces{large.height, scale, {}, {}};
  pieces.pixels.push_back(std::move(large));
  return pieces;
}

CBitmap::Pieces CBitmap::made(int scale) const {
  Pieces pieces = piecesOf(scale, scale);
  if (pieces.pixels.empty() && scale == 3) pieces = piecesOf(scale, 2);
  if (pieces.pixels.empty() && scale > 1) pieces = enlarged(scale);
  if (pieces.pixels.empty()) pieces = {m_height, scale, {}, {PixelBuffer(m_width, m_height)}};
  return pieces;
}

const std::uint32_t* CBitmap::row(int scale, int y) const {
  if (m_files == nullptr && scale == 1) return m_plain.row(y);
  const std::scoped_lock lock(m_decoding);
  return decodedRow(scale, y);
}

const std::uint32_t* CBitmap::decodedRow(int scale, int y) const {
  auto found = m_pieces.find(scale);
  if (found == m_pieces.end()) found = m_pieces.emplace(scale, made(scale)).first;
  Pieces& pieces = found->second;
  const auto index = static_cast<std::size_t>(y / pieces.height);
  PixelBuffer& piece = pieces.pixels[index];
  if (piece.pixels.empty()) {
    auto pixels = decodedPart(pieces.files, index);
    if (pixels && pieces.from != scale) pixels = halfAsLargeAgain(*pixels);
    piece = pixels ? std::move(*pixels) : PixelBuffer(m_width * scale, pieces.height);
  }
  return piece.row(y % pieces.height);
}

PixelBuffer CBitmap::pixels(int scale) const {
  PixelBuffer all(m_width * scale, m_height * scale);
  for (int y = 0; y < all.height; ++y) std::copy_n(row(scale, y), all.width, all.row(y));
  return all;
}

} // namespace qlx::gui
