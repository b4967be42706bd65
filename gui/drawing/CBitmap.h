// SPDX-License-Identifier: ISC
#pragma once

#include "gui/drawing/PixelBuffer.h"

#include <memory>
#include <span>

namespace qlx::gui {

/// A picture that several controls share; it never changes. A strip is a bitmap of frames of equal
/// height, frame 0 at the top.
class CBitmap {
 public:
  explicit CBitmap(PixelBuffer pixels) : m_pixels(std::move(pixels)) {}

  /// Decodes a PNG file held in memory, or a device-independent bitmap of 24 or 32 uncompressed
  /// bits with or without its file header. Null when the bytes are neither.
  static std::shared_ptr<const CBitmap> decode(std::span<const std::uint8_t> bytes);

  int width() const { return m_pixels.width; }
  int height() const { return m_pixels.height; }
  const PixelBuffer& pixels() const { return m_pixels; }

 private:
  PixelBuffer m_pixels;
};

using CBitmapRef = std::shared_ptr<const CBitmap>;

} // namespace qlx::gui
