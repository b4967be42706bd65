// SPDX-License-Identifier: ISC
#include "resources/artwork/drawing/Mask.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <span>
#include <stdexcept>

namespace qlx::artwork {
namespace {

/// One pass of a moving average of 2 * radius + 1 samples; what lies outside counts as 0.
void average(std::span<const float> from, std::span<float> to, int radius) {
  const int count = static_cast<int>(from.size());
  const double scale = 1.0 / (2 * radius + 1);
  auto value = [&](int i) {
    return i >= 0 && i < count ? static_cast<double>(from[static_cast<std::size_t>(i)]) : 0.0;
  };
  double sum = 0.0;
  for (int i = -radius; i < radius; ++i) sum += value(i);
  for (int i = 0; i < count; ++i) {
    sum += value(i + radius);
    to[static_cast<std::size_t>(i)] = static_cast<float>(std::max(0.0, sum * scale));
    sum -= value(i - radius);
  }
}

/// Three averages in a row come within a few per cent of a bell curve.
void soften(std::vector<float>& line, std::vector<float>& spare, int radius) {
  average(line, spare, radius);
  average(spare, line, radius);
  average(line, spare, radius);
  line.swap(spare);
}

} // namespace

Mask::Mask(int density, PixelRect box)
    : m_density(density), m_box(box), m_columns(box.width() * density),
      m_rows(box.height() * density),
      m_coverage(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(m_rows)) {}

Mask Mask::drawn(int density, PixelRect box, const std::function<void(cairo_t*)>& draw) {
  Mask mask(density, box);
  const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
      cairo_image_surface_create(CAIRO_FORMAT_A8, mask.m_columns, mask.m_rows),
      cairo_surface_destroy);
  const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cr(cairo_create(surface.get()),
                                                              cairo_destroy);
  cairo_set_antialias(cr.get(), CAIRO_ANTIALIAS_BEST);
  cairo_scale(cr.get(), density, density);
  cairo_translate(cr.get(), -box.left, -box.top);
  draw(cr.get());
  if (cairo_status(cr.get()) != CAIRO_STATUS_SUCCESS) {
    throw std::runtime_error(cairo_status_to_string(cairo_status(cr.get())));
  }
  cairo_surface_flush(surface.get());
  const unsigned char* data = cairo_image_surface_get_data(surface.get());
  const int stride = cairo_image_surface_get_stride(surface.get());
  for (int row = 0; row < mask.m_rows; ++row) {
    for (int column = 0; column < mask.m_columns; ++column) {
      mask.at(column, row) = static_cast<float>(data[row * stride + column]) / 255.0F;
    }
  }
  return mask;
}

float Mask::sample(int x, int y) const {
  const int column = x - m_box.left * m_density;
  const int row = y - m_box.top * m_density;
  const bool inside = column >= 0 && column < m_columns && row >= 0 && row < m_rows;
  return inside ? at(column, row) : 0.0F;
}

Mask Mask::blurred(double sigma) const {
  // The variance of three averages of width w is (w^2 - 1) / 4.
  const double width = std::sqrt(4.0 * sigma * sigma * m_density * m_density + 1.0);
  const int radius = std::max(0, static_cast<int>(std::lround((width - 1.0) / 2.0)));
  const int margin = (3 * radius + m_density - 1) / m_density;
  Mask soft(m_density, m_box.grown(margin));
  for (int row = 0; row < m_rows; ++row) {
    std::copy_n(&m_coverage[index(0, row)], m_columns,
                &soft.at(margin * m_density, row + margin * m_density));
  }
  std::vector<float> line;
  std::vector<float> spare;
  line.resize(static_cast<std::size_t>(soft.m_columns));
  spare.resize(line.size());
  for (int row = 0; row < soft.m_rows; ++row) {
    float* data = &soft.at(0, row);
    std::copy_n(data, soft.m_columns, line.begin());
    soften(line, spare, radius);
    std::copy(line.begin(), line.end(), data);
  }
  line.resize(static_cast<std::size_t>(soft.m_rows));
  spare.resize(line.size());
  for (int column = 0; column < soft.m_columns; ++column) {
    for (int row = 0; row < soft.m_rows; ++row) {
      line[static_cast<std::size_t>(row)] = soft.at(column, row);
    }
    soften(line, spare, radius);
    for (int row = 0; row < soft.m_rows; ++row) {
      soft.at(column, row) = line[static_cast<std::size_t>(row)];
    }
  }
  return soft;
}

Mask Mask::moved(double dx, double dy) const {
  const int stepX = static_cast<int>(std::lround(dx * m_density));
  const int stepY = static_cast<int>(std::lround(dy * m_density));
  auto pixels = [this](int step) {
    return static_cast<int>(std::floor(static_cast<double>(step) / m_density));
  };
  auto pixelsUp = [this](int step) { return (step % m_density != 0) ? 1 : 0; };
  const PixelRect box{m_box.left + pixels(stepX), m_box.top + pixels(stepY),
                      m_box.right + pixels(stepX) + pixelsUp(stepX),
                      m_box.bottom + pixels(stepY) + pixelsUp(stepY)};
  Mask result(m_density, box);
  for (int row = 0; row < result.m_rows; ++row) {
    for (int column = 0; column < result.m_columns; ++column) {
      result.at(column, row) =
          sample(box.left * m_density + column - stepX, box.top * m_density + row - stepY);
    }
  }
  return result;
}

Mask Mask::within(const Mask& other) const {
  Mask result = *this;
  for (int row = 0; row < m_rows; ++row) {
    for (int column = 0; column < m_columns; ++column) {
      result.at(column, row) *=
          other.sample(m_box.left * m_density + column, m_box.top * m_density + row);
    }
  }
  return result;
}

Mask Mask::without(const Mask& other) const {
  Mask result = *this;
  for (int row = 0; row < m_rows; ++row) {
    for (int column = 0; column < m_columns; ++column) {
      result.at(column, row) *=
          1.0F - other.sample(m_box.left * m_density + column, m_box.top * m_density + row);
    }
  }
  return result;
}

void roundedRectangle(cairo_t* cr, double left, double top, double right, double bottom,
                      double radius) {
  constexpr double kQuarter = std::numbers::pi / 2.0;
  cairo_new_sub_path(cr);
  cairo_arc(cr, right - radius, top + radius, radius, -kQuarter, 0.0);
  cairo_arc(cr, right - radius, bottom - radius, radius, 0.0, kQuarter);
  cairo_arc(cr, left + radius, bottom - radius, radius, kQuarter, 2.0 * kQuarter);
  cairo_arc(cr, left + radius, top + radius, radius, 2.0 * kQuarter, 3.0 * kQuarter);
  cairo_close_path(cr);
}

} // namespace qlx::artwork
