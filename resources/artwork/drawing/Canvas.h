// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/drawing/Colour.h"
#include "resources/artwork/drawing/Geometry.h"
#include "resources/artwork/drawing/Mask.h"
#include "resources/artwork/drawing/Picture.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace qlx::artwork {

/// A picture in the making: linear light, premultiplied alpha, several samples a pixel.
/// All coordinates are layout pixels, whatever the scale of the finished picture.
class Canvas {
 public:
  /// Samples per finished pixel along each axis.
  static constexpr int kOversampling = 4;

  Canvas(int width, int height, int scale);

  int width() const { return m_width; }
  int height() const { return m_height; }
  int scale() const { return m_scale; }
  /// Width of a bevel's edge: a pixel at the plain size, finer than the layout's in larger
  /// pictures.
  double hairline() const { return 0.5 + 0.5 / m_scale; }
  /// Samples per layout pixel along each axis; the density of masks for this canvas.
  int density() const { return m_scale * kOversampling; }
  PixelRect box() const { return {0, 0, m_width, m_height}; }

  /// The coverage of a drawing that may touch `box`, or the whole canvas.
  template <class Draw>
  Mask mask(PixelRect box, Draw&& draw) const {
    return Mask::drawn(density(), box, draw);
  }
  template <class Draw>
  Mask mask(Draw&& draw) const {
    return mask(box(), draw);
  }

  /// Lays a colour that depends on the place over what is there: `colour` is asked at the layout
  /// point of each covered sample.
  template <class ColourAt>
  void paint(const Mask& shape, const ColourAt& colour, double opacity = 1.0) {
    forEach(shape.box(), [&](Point p, Sample& under, int x, int y) {
      const double cover = opacity * static_cast<double>(shape.sample(x, y));
      if (cover > 0.0) under.cover(colour(p), cover);
    });
  }

  void fill(const Mask& shape, const Colour& colour, double opacity = 1.0) {
    paint(
        shape, [&](Point) { return colour; }, opacity);
  }

  /// Adds light to what is there without covering it.
  void glow(const Mask& shape, const Colour& colour, double strength);

  /// Asks `draw` for the colour and coverage of every sample of `box`: (Point, Colour& colour,
  /// double& cover); cover starts at 0, which leaves the sample as it is.
  template <class Draw>
  void shade(PixelRect box, const Draw& draw) {
    forEach(box, [&](Point p, Sample& under, int, int) {
      Colour colour;
      double cover = 0.0;
      draw(p, colour, cover);
      if (cover > 0.0) under.cover(colour, cover);
    });
  }

  /// Lays another canvas of the same scale over this one with its corner at (x, y).
  void overlay(const Canvas& other, int x, int y);

  /// The finished picture: samples averaged in linear light, rounded to 8 bits with a fixed
  /// fine-grained dither in the colours so that soft gradients show no bands.
  Picture finished() const;

 private:
  struct Sample {
    float r = 0;
    float g = 0;
    float b = 0;
    float a = 0;

    void cover(const Colour& c, double cover) {
      const double keep = 1.0 - cover;
      r = static_cast<float>(c.r * cover + r * keep);
      g = static_cast<float>(c.g * cover + g * keep);
      b = static_cast<float>(c.b * cover + b * keep);
      a = static_cast<float>(cover + a * keep);
    }
  };

  template <class Visit>
  void forEach(PixelRect box, const Visit& visit) {
    const int n = density();
    const int left = std::max(0, box.left * n);
    const int right = std::min(m_columns, box.right * n);
    const int top = std::max(0, box.top * n);
    const int bottom = std::min(m_rows, box.bottom * n);
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) {
        visit(Point{(x + 0.5) / n, (y + 0.5) / n}, at(x, y), x, y);
      }
    }
  }

  Sample& at(int x, int y) {
    return m_samples[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_columns) +
                     static_cast<std::size_t>(x)];
  }
  const Sample& at(int x, int y) const {
    return m_samples[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_columns) +
                     static_cast<std::size_t>(x)];
  }

  int m_width;
  int m_height;
  int m_scale;
  int m_columns;
  int m_rows;
  std::vector<Sample> m_samples;
};

} // namespace qlx::artwork
