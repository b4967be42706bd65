// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace qlx::artwork {

/// A finished image: 8-bit sRGB with straight alpha, rows from the top.
class Picture {
 public:
  using Pixel = std::array<std::uint8_t, 4>;

  Picture() = default;
  Picture(int width, int height);

  int width() const { return m_width; }
  int height() const { return m_height; }
  Pixel& at(int x, int y) { return m_pixels[index(x, y)]; }
  const Pixel& at(int x, int y) const { return m_pixels[index(x, y)]; }

  /// Copies `source`'s pixels to (x, y); all of it must lie inside.
  void place(const Picture& source, int x, int y);

  /// Puts the part (0, sourceTop, width, height) of `source` over this at (x, y), by its alpha.
  /// What falls outside either picture is left out.
  void composite(const Picture& source, int sourceTop, int width, int height, int x, int y);

  /// Writes an 8-bit RGBA PNG or, where the name ends in ".bmp", a device-independent bitmap of 24
  /// bits. Throws std::runtime_error when the file cannot be written, or a bitmap would lose alpha.
  void save(const std::filesystem::path& file) const;

  /// Writes `parts` PNG files of equal height behind each other into one file, the upper parts
  /// first: who shows one part need not decode the others.
  void saveParted(const std::filesystem::path& file, int parts) const;

  /// Reads any PNG as 8-bit RGBA. Throws std::runtime_error when it is not one.
  static Picture decode(std::span<const std::byte> png);

 private:
  std::size_t index(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
           static_cast<std::size_t>(x);
  }

  int m_width = 0;
  int m_height = 0;
  std::vector<Pixel> m_pixels;
};

} // namespace qlx::artwork
