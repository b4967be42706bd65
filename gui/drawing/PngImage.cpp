// SPDX-License-Identifier: ISC
#include "gui/drawing/PngImage.h"

#include "gui/drawing/PixelMath.h"

// The whole library is compiled here, without what it could do besides. The static analyser reads
// the declarations alone: its findings would be the library's.
#ifndef __clang_analyzer__
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#endif
#define STBI_ONLY_PNG
#define STBI_NO_STDIO
#define STBI_NO_LINEAR
#define STBI_NO_HDR
#define STBI_NO_FAILURE_STRINGS
#define STBI_NO_THREAD_LOCALS
#include <stb_image.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>

namespace qlx::gui {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kLargestSide = 32767;
constexpr std::size_t kChannels = 4;

// Signature, then the first chunk: length 13, "IHDR", width, height, and five bytes for 8 bits of
// red, green, blue and alpha, the only compression, the only filters, no interlace.
constexpr std::array<std::uint8_t, 16> kBeginning{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n',
                                                  0,    0,   0,   13,  'I',  'H',  'D',  'R'};
constexpr std::size_t kSignatureBytes = 8;
constexpr std::size_t kAroundChunk = 12; // length, name and checksum
constexpr std::size_t kWidthPlace = 16;
constexpr std::size_t kHeightPlace = 20;
constexpr std::array<std::uint8_t, 5> kKind{8, 6, 0, 0, 0};
constexpr std::size_t kKindPlace = 24;

// Deflate makes at most 1032 bytes of one: larger sides than the file can fill are refused before
// memory is taken for them.
constexpr std::size_t kLargestExpansion = 1032;

std::size_t bigEndian(Bytes bytes) {
  return std::size_t{bytes[0]} << 24 | std::size_t{bytes[1]} << 16 | std::size_t{bytes[2]} << 8 |
         bytes[3];
}

/// Length, name and checksum around each chunk's content. The decoder takes memory for a length
/// before it looks whether the file is that long, and copies image data of no bytes to no memory.
bool chunksCanBeTaken(Bytes file) {
  constexpr std::array<std::uint8_t, 4> kImageData{'I', 'D', 'A', 'T'};
  std::size_t place = kSignatureBytes;
  while (place < file.size()) {
    if (file.size() - place < kAroundChunk) return false;
    const std::size_t length = bigEndian(file.subspan(place, 4));
    if (length > file.size() - place - kAroundChunk) return false;
    if (length == 0 && std::ranges::equal(file.subspan(place + 4, 4), kImageData)) return false;
    place += kAroundChunk + length;
  }
  return true;
}

bool canBeDecoded(Bytes file) {
  if (file.size() < kKindPlace + kKind.size() ||
      file.size() > std::numeric_limits<int>::max() / kLargestExpansion ||
      !std::ranges::equal(file.first(kBeginning.size()), kBeginning) ||
      !std::ranges::equal(file.subspan(kKindPlace, kKind.size()), kKind))
    return false;
  const std::size_t width = bigEndian(file.subspan(kWidthPlace, 4));
  const std::size_t height = bigEndian(file.subspan(kHeightPlace, 4));
  return width > 0 && height > 0 && width <= kLargestSide && height <= kLargestSide &&
         width * height * kChannels <= file.size() * kLargestExpansion && chunksCanBeTaken(file);
}

} // namespace

std::optional<ImageSize> pngSize(Bytes file) {
  if (!canBeDecoded(file)) return std::nullopt;
  return ImageSize{static_cast<int>(bigEndian(file.subspan(kWidthPlace, 4))),
                   static_cast<int>(bigEndian(file.subspan(kHeightPlace, 4)))};
}

std::vector<Bytes> partedPngFiles(Bytes bytes) {
  constexpr std::array<std::uint8_t, 4> kImageEnd{'I', 'E', 'N', 'D'};
  std::vector<Bytes> files;
  std::size_t place = kSignatureBytes;
  while (place < bytes.size() && bytes.size() - place >= kAroundChunk) {
    const std::size_t length = bigEndian(bytes.subspan(place, 4));
    if (length > bytes.size() - place - kAroundChunk) break;
    const bool last = std::ranges::equal(bytes.subspan(place + 4, 4), kImageEnd);
    place += kAroundChunk + length;
    if (!last || place == bytes.size()) continue;
    files.push_back(bytes.first(place));
    bytes = bytes.subspan(place);
    place = kSignatureBytes;
  }
  if (!bytes.empty()) files.push_back(bytes);
  return files;
}

std::optional<PixelBuffer> decodePng(Bytes file) {
  if (!canBeDecoded(file)) return std::nullopt;
  int width = 0;
  int height = 0;
  const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> decoded(
      stbi_load_from_memory(file.data(), static_cast<int>(file.size()), &width, &height, nullptr,
                            static_cast<int>(kChannels)),
      &stbi_image_free);
  if (decoded == nullptr) return std::nullopt;
  PixelBuffer pixels(width, height);
  const stbi_uc* from = decoded.get();
  for (std::uint32_t& pixel : pixels.pixels) {
    const std::uint32_t colour = static_cast<std::uint32_t>(from[0]) << 16 |
                                 static_cast<std::uint32_t>(from[1]) << 8 | from[2];
    const std::uint32_t alpha = from[3];
    pixel = (alpha << 24) | (alpha == kFull ? colour : scaled(colour, alpha));
    from += kChannels;
  }
  return pixels;
}

std::optional<std::vector<std::uint8_t>> inflated(Bytes stream, std::size_t size) {
  if (size == 0 || stream.size() > std::numeric_limits<int>::max() / kLargestExpansion ||
      size > stream.size() * kLargestExpansion)
    return std::nullopt;
  std::vector<std::uint8_t> content(size);
  const int made = stbi_zlib_decode_buffer(
      reinterpret_cast<char*>(content.data()), static_cast<int>(size),
      reinterpret_cast<const char*>(stream.data()), static_cast<int>(stream.size()));
  if (made < 0 || static_cast<std::size_t>(made) != size) return std::nullopt;
  return content;
}

} // namespace qlx::gui
