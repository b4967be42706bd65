#include "tools/artwork/Picture.h"

#include <png.h>

#include <algorithm>
#include <stdexcept>

namespace qlx::artwork {
namespace {

png_image header(const Picture& picture) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(picture.width());
  image.height = static_cast<png_uint_32>(picture.height());
  image.format = PNG_FORMAT_RGBA;
  return image;
}

} // namespace

Picture::Picture(int width, int height)
    : m_width(width), m_height(height),
      m_pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

void Picture::place(const Picture& source, int x, int y) {
  for (int row = 0; row < source.m_height; ++row) {
    const Pixel* from = &source.at(0, row);
    std::copy(from, from + source.m_width, &at(x, y + row));
  }
}

void Picture::composite(const Picture& source, int sourceTop, int width, int height, int x, int y) {
  for (int row = 0; row < height; ++row) {
    const int from = sourceTop + row;
    const int to = y + row;
    if (from < 0 || from >= source.m_height || to < 0 || to >= m_height) continue;
    for (int column = 0; column < std::min(width, source.m_width); ++column) {
      if (x + column < 0 || x + column >= m_width) continue;
      const Pixel& over = source.at(column, from);
      Pixel& under = at(x + column, to);
      for (std::size_t c = 0; c < 3; ++c) {
        under[c] =
            static_cast<std::uint8_t>((over[c] * over[3] + under[c] * (255 - over[3]) + 127) / 255);
      }
    }
  }
}

void Picture::save(const std::filesystem::path& file) const {
  png_image image = header(*this);
  if (png_image_write_to_file(&image, file.c_str(), 0, m_pixels.data(), 0, nullptr) == 0) {
    throw std::runtime_error(file.string() + ": " + image.message);
  }
}

Picture Picture::decode(std::span<const std::byte> png) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_memory(&image, png.data(), png.size()) == 0) {
    throw std::runtime_error(image.message);
  }
  image.format = PNG_FORMAT_RGBA;
  Picture picture(static_cast<int>(image.width), static_cast<int>(image.height));
  if (png_image_finish_read(&image, nullptr, picture.m_pixels.data(), 0, nullptr) == 0) {
    throw std::runtime_error(image.message);
  }
  return picture;
}

} // namespace qlx::artwork
