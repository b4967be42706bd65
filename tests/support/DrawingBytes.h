// SPDX-License-Identifier: ISC
#pragma once

#include "gui/drawing/GlyphPack.h"
#include "gui/drawing/PackedImage.h"

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace qlx::test {

using ByteVector = std::vector<std::uint8_t>;

/// A zlib stream of at most 65535 bytes, which are stored without compression; its checksum is 0.
inline ByteVector storedStream(const ByteVector& content) {
  const auto low = static_cast<std::uint8_t>(content.size());
  const auto high = static_cast<std::uint8_t>(content.size() >> 8);
  ByteVector stream{
      0x78, 0x01, 1, low, high, static_cast<std::uint8_t>(~low), static_cast<std::uint8_t>(~high)};
  stream.insert(stream.end(), content.begin(), content.end());
  stream.insert(stream.end(), 4, 0);
  return stream;
}

/// A PNG file of 8-bit red, green, blue and alpha. `rows` holds each row's filter number and
/// filtered bytes; they are stored without compression (at most 65535 bytes), checksums are 0.
inline ByteVector pngFile(std::uint32_t width, std::uint32_t height, const ByteVector& rows) {
  ByteVector file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  const auto word = [](ByteVector& to, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
      to.push_back(static_cast<std::uint8_t>(value >> shift));
  };
  const auto chunk = [&](std::string_view name, const ByteVector& content) {
    word(file, static_cast<std::uint32_t>(content.size()));
    file.insert(file.end(), name.begin(), name.end());
    file.insert(file.end(), content.begin(), content.end());
    word(file, 0);
  };
  ByteVector head;
  word(head, width);
  word(head, height);
  head.insert(head.end(), {8, 6, 0, 0, 0});
  chunk("IHDR", head);
  chunk("IDAT", storedStream(rows));
  chunk("IEND", {});
  return file;
}

/// Two pixels a row, five rows, one of each filter: none, left, above, mean, Paeth.
inline ByteVector smallPng() {
  return pngFile(2, 5, {0, 16, 32, 48, 255, 64,  0,   0,   128, //
                        1, 1,  2,  3,  255, 1,   1,   1,   0,   //
                        2, 9,  8,  7,  0,   200, 100, 50,  129, //
                        3, 10, 20, 30, 128, 7,   7,   7,   33,  //
                        4, 3,  2,  1,  0,   250, 251, 252, 20});
}

/// A packed image of two pixels a row and as many rows as `bytes`, three channels of each pixel as
/// the filter and the base leave them, are enough for.
inline ByteVector packedImage(gui::ImageFilter filter, std::uint8_t base, const ByteVector& bytes) {
  const auto stream = storedStream(bytes);
  const gui::PackedImageHead head{gui::kPackedImageTag,
                                  2,
                                  static_cast<std::uint16_t>(bytes.size() / 6),
                                  3,
                                  filter,
                                  base,
                                  0,
                                  static_cast<std::uint32_t>(stream.size())};
  ByteVector file(sizeof head);
  std::memcpy(file.data(), &head, sizeof head);
  file.insert(file.end(), stream.begin(), stream.end());
  return file;
}

/// Two of one size: one alone, and one as its difference to that.
inline ByteVector smallPackedStrip() {
  ByteVector strip =
      packedImage(gui::ImageFilter::paeth, 0, {40, 10, 20, 1, 2, 3, 255, 0, 1, 5, 250, 7});
  const ByteVector second =
      packedImage(gui::ImageFilter::above, 1, {1, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 255});
  strip.insert(strip.end(), second.begin(), second.end());
  return strip;
}

/// A pack of the box, 'a' and 'b' in every size, with pictures of one pixel. 'a' ends 20 units
/// early and 'b' begins 20 late.
inline ByteVector smallGlyphPack() {
  using namespace gui;
  ByteVector pack;
  const auto put = [&pack](const auto& value) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&value);
    pack.insert(pack.end(), bytes, bytes + sizeof value);
  };
  PackHead head{kPackTag, 3, {}};
  for (std::size_t i = 0; i < kGlyphSizes.size(); ++i)
    head.sizes[i] = {kGlyphSizes[i], 8, static_cast<std::uint8_t>(i), 0};
  put(head);
  for (const std::uint32_t character : {0U, 97U, 98U}) put(character);
  const auto pictures =
      static_cast<std::uint32_t>(pack.size() + 3 * kGlyphSizes.size() * sizeof(PackedGlyph));
  for (const std::uint8_t pixels : kGlyphSizes) {
    put(PackedGlyph{0, 1, 1, 1, pixels, 0, 0, 0, pictures});
    put(PackedGlyph{1, 1, 1, 1, 3, -20, 20, 0, pictures + 1});
    put(PackedGlyph{-1, 2, 1, 2, 6, -20, 20, 0, pictures + 1});
  }
  pack.insert(pack.end(), {100, 200, 255});
  return pack;
}

/// The deflated form of this pack.
inline ByteVector deflatedGlyphPack(const ByteVector& pack) {
  const auto stream = storedStream(pack);
  ByteVector deflated(sizeof(gui::DeflatedHead));
  const gui::DeflatedHead head{gui::kDeflatedTag, static_cast<std::uint32_t>(pack.size())};
  std::memcpy(deflated.data(), &head, sizeof head);
  deflated.insert(deflated.end(), stream.begin(), stream.end());
  return deflated;
}

} // namespace qlx::test
