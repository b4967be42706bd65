// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <bit>
#include <cstdint>

/// The form of a glyph pack, which resources/glyphs writes while building for each of kWindowScales
/// and CTypeface reads:
///   PackHead
///   std::uint32_t[glyphs]                 characters, ascending; the first is 0
///   PackedGlyph[kGlyphSizes][glyphs]      for each size the glyphs in the order of the characters
///   coverage bytes (0..255), row by row
/// Glyph 0 is the font's box for missing characters. Numbers are stored lowest byte first.
/// It writes a further pack of the characters that those for kWindowScales leave out, drawn for
/// scale 1. A pack is kept as it is or as DeflatedHead and a zlib stream of it.
namespace qlx::gui {

static_assert(std::endian::native == std::endian::little);

/// Every size that texts are drawn in, ascending: the layout's pixels of the em square.
inline constexpr std::array<std::uint8_t, 5> kGlyphSizes{9, 10, 11, 12, 13};

inline constexpr std::array<char, 4> kPackTag{'Q', 'L', 'X', 'G'};

inline constexpr std::array<char, 4> kDeflatedTag{'Q', 'L', 'X', 'Z'};

struct DeflatedHead {
  std::array<char, 4> tag;
  std::uint32_t bytes; ///< of the pack
};

/// Heights above and below the baseline in whole pixels of the window.
struct PackedSize {
  std::uint8_t pixels; ///< of kGlyphSizes
  std::uint8_t ascent;
  std::uint8_t descent;
  std::uint8_t unused;
};

struct PackHead {
  std::array<char, 4> tag;
  std::uint32_t glyphs;
  std::array<PackedSize, kGlyphSizes.size()> sizes;
};

/// Fields as in CTypeface::Glyph.
struct PackedGlyph {
  std::int8_t left;
  std::int8_t top;
  std::uint8_t width;
  std::uint8_t height;
  std::uint8_t advance;
  std::int8_t leftShift;
  std::int8_t rightShift;
  std::uint8_t unused;
  std::uint32_t coverage; // place of width x height bytes, from the pack's first byte
};

static_assert(sizeof(DeflatedHead) == 8);
static_assert(sizeof(PackHead) == 8 + 4 * kGlyphSizes.size() && sizeof(PackedGlyph) == 12);

} // namespace qlx::gui
