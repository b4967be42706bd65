// SPDX-License-Identifier: ISC
#include "brezan/pictures/DiagramCanvas.h"

#include "brezan/pictures/PngFile.h"

#include <numbers>

namespace qlx::tools {

DiagramCanvas::DiagramCanvas(int width, int height)
    : m_surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height),
                cairo_surface_destroy),
      m_context(cairo_create(m_surface.get()), cairo_destroy) {
  colour(kPaper);
  cairo_paint(cr());
}

void DiagramCanvas::colour(const DiagramColour& c, double opacity) {
  cairo_set_source_rgba(cr(), c.red, c.green, c.blue, opacity);
}

void DiagramCanvas::fill(const DiagramBox& box) {
  cairo_rectangle(cr(), box.x, box.y, box.width, box.height);
  cairo_fill(cr());
}

void DiagramCanvas::line(double x0, double y0, double x1, double y1, double width) {
  cairo_set_line_width(cr(), width);
  cairo_move_to(cr(), x0, y0);
  cairo_line_to(cr(), x1, y1);
  cairo_stroke(cr());
}

void DiagramCanvas::curve(std::span<const std::pair<double, double>> points, double width) {
  cairo_new_path(cr()); // text leaves a point behind
  cairo_set_line_width(cr(), width);
  for (const auto& [x, y] : points) cairo_line_to(cr(), x, y);
  cairo_stroke(cr());
}

void DiagramCanvas::dot(double x, double y, double radius) {
  cairo_new_path(cr());
  cairo_arc(cr(), x, y, radius, 0.0, 2.0 * std::numbers::pi);
  cairo_fill(cr());
}

void DiagramCanvas::frame(const DiagramBox& box) {
  colour(kInk);
  cairo_set_line_width(cr(), 1.0);
  cairo_rectangle(cr(), box.x - 0.5, box.y - 0.5, box.width + 1, box.height + 1);
  cairo_stroke(cr());
}

double DiagramCanvas::textWidth(const std::string& words, double size) {
  cairo_set_font_size(cr(), size);
  cairo_text_extents_t extents;
  cairo_text_extents(cr(), words.c_str(), &extents);
  return extents.x_advance;
}

void DiagramCanvas::text(double x, double y, const std::string& words, double size, Align align,
                         bool bold, const DiagramColour& c) {
  cairo_select_font_face(cr(), "Liberation Sans", CAIRO_FONT_SLANT_NORMAL,
                         bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  const double width = textWidth(words, size);
  colour(c);
  cairo_move_to(cr(), align == Align::Left ? x : x - (align == Align::Right ? width : width / 2),
                y);
  cairo_show_text(cr(), words.c_str());
}

void DiagramCanvas::uprightText(double x, double y, const std::string& words) {
  cairo_save(cr());
  cairo_translate(cr(), x, y);
  cairo_rotate(cr(), -std::numbers::pi / 2.0);
  text(0, 0, words, 14, Align::Centre);
  cairo_restore(cr());
}

void DiagramCanvas::save(const std::filesystem::path& path) const {
  savePng(m_surface.get(), path);
}

} // namespace qlx::tools
