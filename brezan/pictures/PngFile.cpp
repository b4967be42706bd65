// SPDX-License-Identifier: ISC
#include "brezan/pictures/PngFile.h"

#include "brezan/Words.h"
#include "brezan/sound/PendingFile.h"

#include <cstdlib>
#include <limits>
#include <memory>
#include <stdexcept>
#include <vector>
#include <zlib.h>

namespace {

// zlib packs tighter than what the writer would use otherwise.
[[maybe_unused]] unsigned char* packed(unsigned char* data, int length, int* packedLength,
                                       int quality) {
  uLongf size = compressBound(static_cast<uLong>(length));
  auto* const result = static_cast<unsigned char*>(std::malloc(size));
  if (result == nullptr ||
      compress2(result, &size, data, static_cast<uLong>(length), quality) != Z_OK) {
    std::free(result);
    return nullptr;
  }
  *packedLength = static_cast<int>(size);
  return result;
}

} // namespace

#define STBIW_ZLIB_COMPRESS packed
#ifndef __clang_analyzer__ // it finds fault with the header's own code
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#else
extern "C" unsigned char* stbi_write_png_to_mem(const unsigned char* pixels, int stride, int width,
                                                int height, int channels, int* length);
#endif
#define STBI_WRITE_NO_STDIO
#include <stb_image_write.h>

namespace qlx::tools {

namespace {

constexpr int kChannels = 3;

/// The writer counts bytes in int, the rows' filter marks and what cannot be packed among them.
void checkSize(int width, int height) {
  constexpr long long kMostBytes = std::numeric_limits<int>::max() / 2;
  if (static_cast<long long>(width) * height * kChannels > kMostBytes)
    throw std::runtime_error("the picture is too large");
}

} // namespace

void checkPictureName(const std::filesystem::path& path) {
  if (folded(path.extension().string()) != ".png")
    throw std::runtime_error("'" + path.string() +
                             "' must end in .png: pictures are written as PNG");
}

void savePng(const gui::PixelBuffer& pixels, const std::filesystem::path& path) {
  checkSize(pixels.width, pixels.height);
  std::vector<std::uint8_t> bytes;
  bytes.reserve(pixels.pixels.size() * kChannels);
  for (const std::uint32_t pixel : pixels.pixels)
    for (const int shift : {16, 8, 0}) bytes.push_back(static_cast<std::uint8_t>(pixel >> shift));
  int size = 0;
  const std::unique_ptr<unsigned char, decltype(&std::free)> file(
      stbi_write_png_to_mem(bytes.data(), pixels.width * kChannels, pixels.width, pixels.height,
                            kChannels, &size),
      std::free);
  if (file == nullptr) throw std::runtime_error("no memory for the picture");
  writeFile(path, {reinterpret_cast<const char*>(file.get()), static_cast<std::size_t>(size)});
}

void savePng(const platform::WindowRobot::Picture& picture, int scale,
             const std::filesystem::path& path) {
  checkSize(picture.width * scale, picture.height * scale);
  gui::PixelBuffer pixels(picture.width * scale, picture.height * scale);
  for (int y = 0; y < pixels.height; ++y) {
    const std::uint32_t* from =
        picture.pixels.data() + static_cast<std::ptrdiff_t>(y / scale) * picture.width;
    for (int x = 0; x < pixels.width; ++x) pixels.row(y)[x] = from[x / scale];
  }
  savePng(pixels, path);
}

} // namespace qlx::tools
