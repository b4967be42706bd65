// SPDX-License-Identifier: ISC
#include "resources/artwork/drawing/Lettering.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <cmath>
#include <limits>
#include <stdexcept>

namespace qlx::artwork {
namespace {

constexpr std::array<const char*, 4> kFiles = {
    "RobotoCondensed-Regular.ttf", "RobotoCondensed-Bold.ttf", "texgyreadventor-bold.otf",
    "LiberationSans-Regular.ttf"};

constexpr double kPixel = 64.0;   // font units of a finished pixel
constexpr double kOverhang = 0.3; // how far, in pixels, a letter may reach into the next pixel

constexpr FT_Int32 kFittedLoad = FT_LOAD_NO_BITMAP | FT_LOAD_FORCE_AUTOHINT | FT_LOAD_TARGET_NORMAL;

FT_BBox boxOf(FT_Outline& outline) {
  FT_BBox box{};
  if (outline.n_points > 0) FT_Outline_Get_CBox(&outline, &box);
  return box;
}

/// Receives a glyph's outline: font units of 1/64 finished pixel, y up.
struct PathSink {
  cairo_t* cr;
  double originX;
  double baseline;
  double unit; // layout pixels per font unit
  bool open = false;

  double x(const FT_Vector& v) const { return originX + static_cast<double>(v.x) * unit; }
  double y(const FT_Vector& v) const { return baseline - static_cast<double>(v.y) * unit; }
};

int moveTo(const FT_Vector* to, void* user) {
  auto& sink = *static_cast<PathSink*>(user);
  if (sink.open) cairo_close_path(sink.cr);
  sink.open = true;
  cairo_move_to(sink.cr, sink.x(*to), sink.y(*to));
  return 0;
}

int lineTo(const FT_Vector* to, void* user) {
  auto& sink = *static_cast<PathSink*>(user);
  cairo_line_to(sink.cr, sink.x(*to), sink.y(*to));
  return 0;
}

int conicTo(const FT_Vector* control, const FT_Vector* to, void* user) {
  auto& sink = *static_cast<PathSink*>(user);
  double px = 0;
  double py = 0;
  cairo_get_current_point(sink.cr, &px, &py);
  const double cx = sink.x(*control);
  const double cy = sink.y(*control);
  const double tx = sink.x(*to);
  const double ty = sink.y(*to);
  cairo_curve_to(sink.cr, px + (cx - px) * 2.0 / 3.0, py + (cy - py) * 2.0 / 3.0,
                 tx + (cx - tx) * 2.0 / 3.0, ty + (cy - ty) * 2.0 / 3.0, tx, ty);
  return 0;
}

int cubicTo(const FT_Vector* first, const FT_Vector* second, const FT_Vector* to, void* user) {
  auto& sink = *static_cast<PathSink*>(user);
  cairo_curve_to(sink.cr, sink.x(*first), sink.y(*first), sink.x(*second), sink.y(*second),
                 sink.x(*to), sink.y(*to));
  return 0;
}

} // namespace

struct Lettering::Library {
  FT_Library library = nullptr;
  std::array<FT_Face, kFiles.size()> faces{};

  /// How far the upright stems stand to the right of whole pixels, font units: some faces are
  /// fitted with their stems' middle, not their edge, on the grid.
  double stemPhase(const LetterStyle& style, int scale) {
    FT_Face face = faces[static_cast<std::size_t>(style.face)];
    FT_Set_Char_Size(face, 0, std::lround(style.size * scale * 64.0), 72, 72);
    if (FT_Load_Char(face, 'H', kFittedLoad) != 0) return 0.0;
    const auto left = static_cast<double>(boxOf(face->glyph->outline).xMin);
    return left - std::floor(left / kPixel + kOverhang) * kPixel;
  }

  /// Calls `visit` (outline, pen x in font units) for each letter of the line.
  template <class Visit>
  void forEachGlyph(std::string_view text, const LetterStyle& style, int scale,
                    const Visit& visit) {
    FT_Face face = faces[static_cast<std::size_t>(style.face)];
    FT_Set_Char_Size(face, 0, std::lround(style.size * scale * 64.0), 72, 72);
    const double tracking = style.tracking * scale * kPixel;
    double pen = 0.0;
    double inkRight = 0.0;   // end of the pixels that the letter before touches
    double inkEdge = 0.0;    // where its ink itself ends
    double rightSpace = 0.0; // designed white to that letter's right
    for (std::size_t i = 0; i < text.size(); ++i) {
      const auto letter = static_cast<FT_ULong>(static_cast<unsigned char>(text[i]));
      if (FT_Load_Char(face, letter, FT_LOAD_NO_BITMAP | FT_LOAD_NO_HINTING) != 0) {
        throw std::runtime_error("a letter is missing in a font");
      }
      const double advance = static_cast<double>(face->glyph->advance.x);
      if (!style.fitted) {
        visit(face->glyph->outline, pen);
        pen += advance + tracking;
        continue;
      }
      const FT_BBox designed = boxOf(face->glyph->outline);
      if (FT_Load_Char(face, letter, kFittedLoad) != 0) {
        throw std::runtime_error("a letter is missing in a font");
      }
      const FT_BBox ink = boxOf(face->glyph->outline);
      if (face->glyph->outline.n_points == 0) {
        // Condensed capitals need a wider word space than the face has.
        rightSpace += advance + tracking + kPixel;
        continue;
      }
      const double inkLeft =
          std::floor(static_cast<double>(ink.xMin) / kPixel + kOverhang) * kPixel;
      if (i > 0) {
        // The white between two letters is whole pixels, as the stems are; none at all only
        // where the two shapes recede from each other by themselves.
        const double recess = inkRight - inkEdge + static_cast<double>(ink.xMin) - inkLeft;
        const bool receding = recess > 0.45 * kPixel;
        const double white = rightSpace + static_cast<double>(designed.xMin) + tracking -
                             (receding ? 0.1 * kPixel : 0.0);
        const double least = receding ? 0.0 : 1.0;
        pen = inkRight + std::max(least, std::round(white / kPixel)) * kPixel - inkLeft;
      }
      visit(face->glyph->outline, pen);
      inkEdge = pen + static_cast<double>(ink.xMax);
      inkRight = pen + std::ceil(static_cast<double>(ink.xMax) / kPixel - kOverhang) * kPixel;
      rightSpace = advance - static_cast<double>(designed.xMax);
    }
  }
};

Lettering::Lettering(const std::filesystem::path& fontDirectory)
    : m_library(std::make_unique<Library>()) {
  if (FT_Init_FreeType(&m_library->library) != 0) throw std::runtime_error("no font library");
  for (std::size_t i = 0; i < kFiles.size(); ++i) {
    const auto file = fontDirectory / kFiles[i];
    if (FT_New_Face(m_library->library, file.c_str(), 0, &m_library->faces[i]) != 0) {
      FT_Done_FreeType(m_library->library);
      throw std::runtime_error("cannot read the font " + file.string());
    }
  }
}

Lettering::~Lettering() { FT_Done_FreeType(m_library->library); }

Lettering::Extent Lettering::extent(std::string_view text, const LetterStyle& style,
                                    int scale) const {
  Extent extent{std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest()};
  m_library->forEachGlyph(text, style, scale, [&](FT_Outline& outline, double pen) {
    if (outline.n_points == 0) return;
    const FT_BBox box = boxOf(outline);
    extent.left = std::min(extent.left, pen + static_cast<double>(box.xMin));
    extent.right = std::max(extent.right, pen + static_cast<double>(box.xMax));
  });
  extent.left /= 64.0 * scale;
  extent.right /= 64.0 * scale;
  return extent;
}

void Lettering::trace(cairo_t* cr, std::string_view text, const LetterStyle& style, int scale,
                      double x, double baseline) const {
  static constexpr FT_Outline_Funcs kSinkFunctions{moveTo, lineTo, conicTo, cubicTo, 0, 0};
  const double unit = 1.0 / (64.0 * scale);
  m_library->forEachGlyph(text, style, scale, [&](FT_Outline& outline, double pen) {
    PathSink sink{cr, x + pen * unit, baseline, unit};
    FT_Outline_Decompose(&outline, &kSinkFunctions, &sink);
    if (sink.open) cairo_close_path(cr);
  });
}

Mask Lettering::line(const Canvas& canvas, std::string_view text, const LetterStyle& style,
                     Align align, double x, double baseline) const {
  const int scale = canvas.scale();
  const Extent ink = extent(text, style, scale);
  double pen = x - ink.left;
  if (align == Align::Centre) pen = x - 0.5 * (ink.left + ink.right);
  if (align == Align::Right) pen = x - ink.right;
  if (style.fitted) {
    const double phase = m_library->stemPhase(style, scale) / (kPixel * scale);
    pen = std::floor((pen + phase) * scale + 0.5) / scale - phase;
  }
  const PixelRect box{static_cast<int>(std::floor(pen + ink.left)) - 1,
                      static_cast<int>(std::floor(baseline - style.size)) - 1,
                      static_cast<int>(std::ceil(pen + ink.right)) + 1,
                      static_cast<int>(std::ceil(baseline + 0.4 * style.size)) + 1};
  return canvas.mask(box, [&](cairo_t* cr) {
    trace(cr, text, style, scale, pen, baseline);
    cairo_fill(cr);
  });
}

} // namespace qlx::artwork
