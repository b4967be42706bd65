// SPDX-License-Identifier: ISC
// Draws the glyphs of a font in the sizes of gui/drawing/GlyphPack.h for a window of one scale,
// those of its common characters or of all others: generate_glyphs FONT PACK SCALE [others]

#include "gui/drawing/GlyphPack.h"

#include <ft2build.h>
// FreeType's headers come through macros of its own.
#include FT_FREETYPE_H

#include <zlib.h>

#include <cmath>
#include <exception>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace qlx::gui;

// FreeType counts in 64ths of a pixel.
constexpr FT_F26Dot6 kUnitsPerPixel = 64;

// The automatic hinter puts the stems of small text on whole pixels; the font's own instructions
// and the light hinter move heights only and leave most stems as two grey columns.
constexpr FT_Int32 kLoading = FT_LOAD_RENDER | FT_LOAD_FORCE_AUTOHINT | FT_LOAD_TARGET_NORMAL;

/// What windows of every scale have glyphs of their own for: Latin, Greek and Cyrillic letters,
/// punctuation and currencies. Pictures of all the font's characters in all sizes would be seven
/// megabytes.
bool isCommon(std::uint32_t character) {
  const auto in = [character](std::uint32_t first, std::uint32_t last) {
    return character >= first && character <= last;
  };
  return in(0, 0x17F) || in(0x386, 0x3CE) || in(0x401, 0x45F) || in(0x2010, 0x2044) ||
         character == 0x20AC || character == 0x2122 || character == 0xFFFD;
}

template <typename Field>
Field fitted(long value) {
  if (value < std::numeric_limits<Field>::min() || value > std::numeric_limits<Field>::max())
    throw std::runtime_error("a glyph does not fit into the pack's fields");
  return static_cast<Field>(value);
}

long wholePixels(FT_Pos units) {
  return std::lround(std::floor(static_cast<double>(units) / kUnitsPerPixel + 0.5));
}

void require(FT_Error error, const char* what) {
  if (error != 0) throw std::runtime_error(std::string("FreeType cannot ") + what);
}

class Font {
 public:
  explicit Font(const char* file) {
    require(FT_Init_FreeType(&m_library), "start");
    require(FT_New_Face(m_library, file, 0, &m_face), "read the font");
  }
  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;
  ~Font() {
    if (m_face != nullptr) FT_Done_Face(m_face);
    FT_Done_FreeType(m_library);
  }

  /// Ascending, after 0, which stands for the missing ones.
  std::vector<std::uint32_t> characters() const {
    std::vector<std::uint32_t> all{0};
    FT_UInt glyph = 0;
    for (FT_ULong c = FT_Get_First_Char(m_face, &glyph); glyph != 0;
         c = FT_Get_Next_Char(m_face, c, &glyph)) {
      if (c != 0) all.push_back(static_cast<std::uint32_t>(c));
    }
    return all;
  }

  PackedSize select(std::uint8_t pixels, double scale) {
    const long units = std::lround(pixels * scale * kUnitsPerPixel);
    require(FT_Set_Char_Size(m_face, 0, units, 72, 72), "select a size");
    const FT_Size_Metrics& metrics = m_face->size->metrics;
    return {pixels, fitted<std::uint8_t>(wholePixels(metrics.ascender)),
            fitted<std::uint8_t>(wholePixels(-metrics.descender)), 0};
  }

  FT_GlyphSlot draw(std::uint32_t character) {
    const FT_UInt glyph = character == 0 ? 0 : FT_Get_Char_Index(m_face, character);
    require(FT_Load_Glyph(m_face, glyph, kLoading), "draw a glyph");
    return m_face->glyph;
  }

 private:
  FT_Library m_library = nullptr;
  FT_Face m_face = nullptr;
};

std::string coverageOf(const FT_Bitmap& bitmap) {
  std::string rows;
  for (unsigned y = 0; y < bitmap.rows; ++y) {
    const unsigned char* row =
        bitmap.buffer + static_cast<std::ptrdiff_t>(y) * static_cast<std::ptrdiff_t>(bitmap.pitch);
    rows.append(row, row + bitmap.width);
  }
  return rows;
}

template <typename Value>
void append(std::string& bytes, std::span<const Value> values) {
  bytes.append(reinterpret_cast<const char*>(values.data()), values.size_bytes());
}

std::string makePack(Font& font, double scale, bool common) {
  std::vector<std::uint32_t> characters = font.characters();
  std::erase_if(characters, [common](std::uint32_t c) { return c != 0 && isCommon(c) != common; });
  PackHead head{kPackTag, fitted<std::uint32_t>(static_cast<long>(characters.size())), {}};
  const std::size_t pictures =
      sizeof head +
      characters.size() * (sizeof characters[0] + kGlyphSizes.size() * sizeof(PackedGlyph));
  std::vector<PackedGlyph> glyphs;
  std::string coverage;
  std::map<std::string, std::size_t> places; // equal pictures are kept once
  for (std::size_t size = 0; size < kGlyphSizes.size(); ++size) {
    head.sizes[size] = font.select(kGlyphSizes[size], scale);
    for (const std::uint32_t character : characters) {
      const FT_GlyphSlot slot = font.draw(character);
      const std::string picture = coverageOf(slot->bitmap);
      const auto [place, fresh] = places.try_emplace(picture, pictures + coverage.size());
      if (fresh) coverage += picture;
      glyphs.push_back(
          {fitted<std::int8_t>(slot->bitmap_left), fitted<std::int8_t>(slot->bitmap_top),
           fitted<std::uint8_t>(slot->bitmap.width), fitted<std::uint8_t>(slot->bitmap.rows),
           fitted<std::uint8_t>(wholePixels(slot->advance.x)), fitted<std::int8_t>(slot->lsb_delta),
           fitted<std::int8_t>(slot->rsb_delta), 0,
           fitted<std::uint32_t>(static_cast<long>(place->second))});
    }
  }
  std::string pack;
  append(pack, std::span<const PackHead>(&head, 1));
  append(pack, std::span<const std::uint32_t>(characters));
  append(pack, std::span<const PackedGlyph>(glyphs));
  return pack + coverage;
}

std::string deflated(const std::string& pack) {
  const DeflatedHead head{kDeflatedTag, fitted<std::uint32_t>(static_cast<long>(pack.size()))};
  uLongf length = compressBound(pack.size());
  std::string stream(length, '\0');
  if (compress2(reinterpret_cast<Bytef*>(stream.data()), &length,
                reinterpret_cast<const Bytef*>(pack.data()), pack.size(),
                Z_BEST_COMPRESSION) != Z_OK)
    throw std::runtime_error("a pack cannot be deflated");
  stream.resize(length);
  std::string bytes;
  append(bytes, std::span<const DeflatedHead>(&head, 1));
  return bytes + stream;
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 4 || argc > 5) {
    std::cerr << "usage: generate_glyphs FONT PACK SCALE [others]\n";
    return 2;
  }
  try {
    Font font(argv[1]);
    const std::string pack = deflated(makePack(font, std::stod(argv[3]), argc == 4));
    std::ofstream file(argv[2], std::ios::binary);
    file.write(pack.data(), static_cast<std::streamsize>(pack.size()));
    file.close();
    if (!file) throw std::runtime_error(std::string("cannot write ") + argv[2]);
  } catch (const std::exception& fault) {
    std::cerr << "generate_glyphs: " << fault.what() << '\n';
    return 1;
  }
  return 0;
}
