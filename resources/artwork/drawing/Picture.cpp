// SPDX-License-Identifier: ISC
#include "resources/artwork/drawing/Picture.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace qlx::artwork {
namespace {

using Bytes = std::vector<png_byte>;

void append(png_structp writer, png_bytep data, png_size_t length) {
  Bytes& file = *static_cast<Bytes*>(png_get_io_ptr(writer));
  file.insert(file.end(), data, data + length);
}

struct Writer {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);

  Writer() = default;
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() { png_destroy_write_struct(&png, &info); }
};

/// False when the library gives up, which it does by a jump: nothing here has a destructor.
bool write(const Writer& writer, const Picture& picture, int filter) {
  png_structp png = writer.png;
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  png_set_IHDR(png, writer.info, static_cast<png_uint_32>(picture.width()),
               static_cast<png_uint_32>(picture.height()), 8, PNG_COLOR_TYPE_RGBA,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_sRGB(png, writer.info, PNG_sRGB_INTENT_PERCEPTUAL);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, filter);
  png_set_compression_level(png, 9);
  png_write_info(png, writer.info);
  for (int y = 0; y < picture.height(); ++y) png_write_row(png, picture.at(0, y).data());
  png_write_end(png, nullptr);
  return true;
}

/// The PNG file with one filter for all rows.
Bytes encode(const Picture& picture, int filter) {
  const Writer writer;
  Bytes file;
  png_set_write_fn(writer.png, &file, append, nullptr);
  if (!write(writer, picture, filter)) throw std::runtime_error("a picture cannot be encoded");
  return file;
}

/// One filter for the whole picture, of those that are undone quickly, is read in half the time of
/// filters mixed row by row, and makes no larger files of these pictures.
Bytes encodePng(const Picture& picture) {
  Bytes smallest;
  for (const int filter : {PNG_FILTER_NONE, PNG_FILTER_SUB, PNG_FILTER_UP}) {
    Bytes encoded = encode(picture, filter);
    if (smallest.empty() || encoded.size() < smallest.size()) smallest = std::move(encoded);
  }
  return smallest;
}

/// File header, information header and rows of blue, green, red from the bottom, each filled up to
/// a multiple of four bytes.
Bytes encodeBitmap(const Picture& picture) {
  constexpr std::uint32_t kFileHeader = 14;
  constexpr std::uint32_t kInformation = 40;
  constexpr std::uint32_t kHeaders = kFileHeader + kInformation;
  const auto width = static_cast<std::uint32_t>(picture.width());
  const auto height = static_cast<std::uint32_t>(picture.height());
  const std::uint32_t stride = (3 * width + 3) / 4 * 4;
  Bytes file{'B', 'M'};
  const auto put = [&file](std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) file.push_back(static_cast<png_byte>(value >> (8 * i)));
  };
  put(kHeaders + stride * height, 4);
  put(0, 4);
  put(kHeaders, 4);
  put(kInformation, 4);
  put(width, 4);
  put(height, 4);
  put(1, 2);  // plane
  put(24, 2); // bits
  put(0, 4);  // uncompressed
  put(stride * height, 4);
  for (int i = 0; i < 4; ++i) put(0, 4); // resolution unknown, no palette
  for (int y = picture.height() - 1; y >= 0; --y) {
    const std::size_t start = file.size();
    for (int x = 0; x < picture.width(); ++x) {
      const auto& [red, green, blue, alpha] = picture.at(x, y);
      if (alpha != 255) throw std::runtime_error("a bitmap has no alpha");
      file.insert(file.end(), {blue, green, red});
    }
    file.resize(start + stride);
  }
  return file;
}

void write(const std::filesystem::path& file, const Bytes& encoded) {
  std::ofstream out(file, std::ios::binary);
  out.write(reinterpret_cast<const char*>(encoded.data()),
            static_cast<std::streamsize>(encoded.size()));
  if (!out.flush()) throw std::runtime_error("cannot write " + file.string());
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
  write(file, file.extension() == ".bmp" ? encodeBitmap(*this) : encodePng(*this));
}

void Picture::saveParted(const std::filesystem::path& file, int parts) const {
  Bytes all;
  const int height = m_height / parts;
  for (int i = 0; i < parts; ++i) {
    Picture part(m_width, height);
    std::copy_n(&at(0, i * height), part.m_pixels.size(), part.m_pixels.begin());
    const Bytes encoded = encodePng(part);
    all.insert(all.end(), encoded.begin(), encoded.end());
  }
  write(file, all);
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
