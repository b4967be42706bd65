// SPDX-License-Identifier: ISC
// Packs the PNG files of images into the form of gui/drawing/PackedImage.h:
// pack_images FOLDER IMAGE.png...; each becomes FOLDER/IMAGE.img.

#include "gui/drawing/PackedImage.h"
#include "gui/drawing/PngImage.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <string>

namespace {

using namespace qlx::gui;
using Bytes = std::vector<std::uint8_t>;

// A strip's frame is packed alone or as its difference from the first one of so many.
constexpr std::size_t kGroup = 8;

constexpr std::array kFilters{ImageFilter::none, ImageFilter::left, ImageFilter::above,
                              ImageFilter::paeth};

struct Packed {
  PackedImageHead head{};
  Bytes bytes; ///< filtered
  std::size_t length = std::numeric_limits<std::size_t>::max();
};

// Choices are made by what a quicker packing leaves.
constexpr int kQuick = 4;

Bytes deflated(const Bytes& bytes, int level) {
  uLongf length = compressBound(bytes.size());
  Bytes stream(length);
  if (compress2(stream.data(), &length, bytes.data(), bytes.size(), level) != Z_OK)
    throw std::runtime_error("an image cannot be deflated");
  stream.resize(length);
  return stream;
}

Bytes channelsOf(const PixelBuffer& image, std::size_t channels) {
  Bytes bytes;
  for (const std::uint32_t pixel : image.pixels) {
    const std::uint32_t green = pixel >> 8 & 255U;
    for (const std::uint32_t value : {green, (pixel >> 16) - green, pixel - green, pixel >> 24})
      bytes.push_back(static_cast<std::uint8_t>(value));
    if (channels == 3) bytes.pop_back();
  }
  return bytes;
}

Bytes filtered(ImageFilter filter, const Bytes& bytes, std::size_t rowBytes, std::size_t channels) {
  Bytes left(bytes.size());
  const std::uint8_t* above = nullptr;
  for (std::size_t place = 0; place < bytes.size(); place += rowBytes) {
    const std::uint8_t* const row = bytes.data() + place;
    for (std::size_t x = 0; x < rowBytes; ++x)
      left[place + x] =
          static_cast<std::uint8_t>(row[x] - predictedByte(filter, row, above, x, channels));
    above = row;
  }
  return left;
}

/// Keeps the shortest one.
void tryFilters(Packed& best, const PackedImageHead& head, const Bytes& bytes) {
  const std::size_t rowBytes = std::size_t{head.width} * head.channels;
  for (const ImageFilter filter : kFilters) {
    Bytes left = filtered(filter, bytes, rowBytes, head.channels);
    const std::size_t length = deflated(left, kQuick).size();
    if (length >= best.length) continue;
    best = {head, std::move(left), length};
    best.head.filter = filter;
  }
}

Bytes difference(const Bytes& bytes, const Bytes& base) {
  Bytes left(bytes.size());
  std::ranges::transform(bytes, base, left.begin(), [](std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>(a - b);
  });
  return left;
}

std::vector<PixelBuffer> decoded(const Bytes& png) {
  std::vector<PixelBuffer> images;
  for (const auto file : partedPngFiles(png)) {
    auto image = decodePng(file);
    if (!image) throw std::runtime_error("an image cannot be read");
    images.push_back(std::move(*image));
  }
  return images;
}

Bytes packedStrip(const std::vector<PixelBuffer>& images) {
  const bool opaque = std::ranges::all_of(images, [](const PixelBuffer& image) {
    return std::ranges::all_of(image.pixels, [](std::uint32_t p) { return p >> 24 == 255U; });
  });
  const std::uint8_t channels = opaque ? 3 : 4;
  Bytes all;
  Bytes first;
  for (std::size_t i = 0; i < images.size(); ++i) {
    PackedImageHead head{kPackedImageTag,
                         static_cast<std::uint16_t>(images[i].width),
                         static_cast<std::uint16_t>(images[i].height),
                         channels,
                         ImageFilter::none,
                         0,
                         0,
                         0};
    const Bytes bytes = channelsOf(images[i], channels);
    Packed best;
    tryFilters(best, head, bytes);
    if (i % kGroup == 0) {
      first = bytes;
    } else {
      head.base = static_cast<std::uint8_t>(i % kGroup);
      tryFilters(best, head, difference(bytes, first));
    }
    const Bytes stream = deflated(best.bytes, Z_BEST_COMPRESSION);
    best.head.bytes = static_cast<std::uint32_t>(stream.size());
    const auto* packedHead = reinterpret_cast<const std::uint8_t*>(&best.head);
    all.insert(all.end(), packedHead, packedHead + sizeof best.head);
    all.insert(all.end(), stream.begin(), stream.end());
  }
  return all;
}

void pack(const std::filesystem::path& folder, const std::filesystem::path& png) {
  std::ifstream in(png, std::ios::binary);
  const Bytes file(std::istreambuf_iterator<char>(in), {});
  const Bytes packed = packedStrip(decoded(file));
  const auto name = folder / png.stem().concat(".img");
  std::ofstream out(name, std::ios::binary);
  out.write(reinterpret_cast<const char*>(packed.data()),
            static_cast<std::streamsize>(packed.size()));
  out.close();
  if (!out) throw std::runtime_error("cannot write " + name.string());
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: pack_images FOLDER IMAGE.png...\n";
    return 2;
  }
  try {
    for (int i = 2; i < argc; ++i) pack(argv[1], argv[i]);
  } catch (const std::exception& fault) {
    std::cerr << "pack_images: " << fault.what() << '\n';
    return 1;
  }
  return 0;
}
