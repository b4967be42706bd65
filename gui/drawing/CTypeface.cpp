// SPDX-License-Identifier: ISC
#include "gui/drawing/CTypeface.h"

#include "gui/drawing/Utf8.h"

#include <ft2build.h>
// FreeType's headers come through macros of its own.
#include FT_FREETYPE_H
#include FT_MODULE_H

#include <algorithm>
#include <cmath>

namespace qlx::gui {

// A FreeType library of our own: nothing is shared with the host or with another instance.
struct CTypeface::Faces {
  FT_Library library = nullptr;
  FT_Face face = nullptr;

  ~Faces() {
    if (face != nullptr) FT_Done_Face(face);
    if (library != nullptr) FT_Done_FreeType(library);
  }
};

struct CTypeface::SizedGlyphs {
  CFontDesc font;
  bool antialias;
  std::vector<Glyph> glyphs; // sorted by character
};

namespace {

// FreeType counts in 64ths of a pixel.
constexpr double kUnitsPerPixel = 64.0;

int wholePixels(FT_Pos units) {
  return static_cast<int>(std::floor(static_cast<double>(units) / kUnitsPerPixel + 0.5));
}

void copyCoverage(const FT_Bitmap& bitmap, CTypeface::Glyph& glyph) {
  glyph.width = static_cast<int>(bitmap.width);
  glyph.height = static_cast<int>(bitmap.rows);
  glyph.coverage.resize(static_cast<std::size_t>(bitmap.width) * bitmap.rows);
  for (unsigned y = 0; y < bitmap.rows; ++y) {
    const unsigned char* row =
        bitmap.buffer + static_cast<std::ptrdiff_t>(y) * static_cast<std::ptrdiff_t>(bitmap.pitch);
    std::uint8_t* out = glyph.coverage.data() + static_cast<std::size_t>(y) * bitmap.width;
    for (unsigned x = 0; x < bitmap.width; ++x) {
      if (bitmap.pixel_mode == FT_PIXEL_MODE_MONO)
        out[x] = (row[x / 8] & (0x80U >> (x % 8))) != 0 ? 255 : 0;
      else
        out[x] = row[x];
    }
  }
}

} // namespace

CTypeface::CTypeface(std::unique_ptr<Faces> faces) : m_faces(std::move(faces)) {}
CTypeface::~CTypeface() = default;

std::shared_ptr<CTypeface> CTypeface::create(std::span<const std::uint8_t> font) {
  auto faces = std::make_unique<Faces>();
  if (FT_Init_FreeType(&faces->library) != 0) return nullptr;
  // The environment can choose another hinting engine; texts are to look alike everywhere.
  FT_UInt interpreter = 40;
  FT_Property_Set(faces->library, "truetype", "interpreter-version", &interpreter);
  if (FT_New_Memory_Face(faces->library, font.data(), static_cast<FT_Long>(font.size()), 0,
                         &faces->face) != 0)
    return nullptr;
  return std::shared_ptr<CTypeface>(new CTypeface(std::move(faces)));
}

void CTypeface::select(const CFontDesc& font) {
  const auto size = static_cast<FT_F26Dot6>(std::lround(font.size * kUnitsPerPixel));
  FT_Set_Char_Size(m_faces->face, 0, size, 72, 72);
}

const CTypeface::Glyph& CTypeface::glyph(char32_t character, const CFontDesc& font,
                                         bool antialias) {
  auto sized = std::find_if(m_sizes.begin(), m_sizes.end(), [&](const SizedGlyphs& s) {
    return s.font == font && s.antialias == antialias;
  });
  if (sized == m_sizes.end())
    sized = m_sizes.insert(m_sizes.end(), SizedGlyphs{font, antialias, {}});
  std::vector<Glyph>& glyphs = sized->glyphs;
  const auto place = std::lower_bound(glyphs.begin(), glyphs.end(), character,
                                      [](const Glyph& g, char32_t c) { return g.character < c; });
  if (place != glyphs.end() && place->character == character) return *place;

  Glyph glyph;
  glyph.character = character;
  select(font);
  const FT_Int32 target = antialias ? FT_LOAD_TARGET_NORMAL : FT_LOAD_TARGET_MONO;
  if (FT_Load_Char(m_faces->face, character, FT_LOAD_RENDER | target) == 0) {
    const FT_GlyphSlot slot = m_faces->face->glyph;
    glyph.left = slot->bitmap_left;
    glyph.top = slot->bitmap_top;
    glyph.advance = wholePixels(slot->advance.x);
    copyCoverage(slot->bitmap, glyph);
  }
  return *glyphs.insert(place, std::move(glyph));
}

CTypeface::Metrics CTypeface::metrics(const CFontDesc& font) {
  select(font);
  const FT_Size_Metrics& sizes = m_faces->face->size->metrics;
  return {wholePixels(sizes.ascender), wholePixels(-sizes.descender)};
}

int CTypeface::width(std::string_view text, const CFontDesc& font) {
  int width = 0;
  while (!text.empty()) width += glyph(takeUtf8(text), font).advance;
  return width;
}

} // namespace qlx::gui
