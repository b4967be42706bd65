// SPDX-License-Identifier: ISC
#include "gui/drawing/PackedImage.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace qlx::gui {

namespace {

using Bytes = std::span<const std::uint8_t>;
using Image = std::vector<std::uint8_t>;

constexpr std::size_t kHeadBytes = sizeof(PackedImageHead);

/// Nothing where the file is of another form.
std::optional<PackedImageHead> headOf(Bytes file) {
  if (file.size() < kHeadBytes) return std::nullopt;
  PackedImageHead head;
  std::memcpy(&head, file.data(), sizeof head);
  const bool known = head.tag == kPackedImageTag && head.width > 0 && head.height > 0 &&
                     (head.channels == 3 || head.channels == 4) &&
                     head.filter <= ImageFilter::paeth && head.bytes <= file.size() - kHeadBytes;
  if (!known) return std::nullopt;
  return head;
}

/// The filter is a constant in each copy of it, so that the compiler takes the choice out of the
/// loop.
template <ImageFilter filter>
void undoFilter(Image& bytes, std::size_t rowBytes, std::size_t channels) {
  const std::uint8_t* above = nullptr;
  for (std::size_t place = 0; place < bytes.size(); place += rowBytes) {
    std::uint8_t* const row = bytes.data() + place;
    for (std::size_t x = 0; x < rowBytes; ++x)
      row[x] = static_cast<std::uint8_t>(row[x] + predictedByte(filter, row, above, x, channels));
    above = row;
  }
}

void undoFilter(ImageFilter filter, Image& bytes, std::size_t rowBytes, std::size_t channels) {
  switch (filter) {
  case ImageFilter::none: return;
  case ImageFilter::left: return undoFilter<ImageFilter::left>(bytes, rowBytes, channels);
  case ImageFilter::above: return undoFilter<ImageFilter::above>(bytes, rowBytes, channels);
  case ImageFilter::paeth: return undoFilter<ImageFilter::paeth>(bytes, rowBytes, channels);
  }
}

/// The bytes of an image before its base is added.
std::optional<Image> unfiltered(const PackedImageHead& head, Bytes file) {
  const std::size_t rowBytes = std::size_t{head.width} * head.channels;
  auto bytes = inflated(file.subspan(kHeadBytes, head.bytes), rowBytes * head.height);
  if (bytes) undoFilter(head.filter, *bytes, rowBytes, head.channels);
  return bytes;
}

bool addBase(const PackedImageHead& head, Bytes baseFile, Image& bytes) {
  const auto baseHead = headOf(baseFile);
  if (!baseHead || baseHead->base != 0 || baseHead->width != head.width ||
      baseHead->height != head.height || baseHead->channels != head.channels)
    return false;
  const auto base = unfiltered(*baseHead, baseFile);
  if (!base) return false;
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<std::uint8_t>(bytes[i] + (*base)[i]);
  return true;
}

PixelBuffer pixelsOf(const PackedImageHead& head, const Image& bytes) {
  PixelBuffer pixels(head.width, head.height);
  const std::uint8_t* from = bytes.data();
  for (std::uint32_t& pixel : pixels.pixels) {
    const std::uint32_t alpha = head.channels == 4 ? from[3] : 255U;
    const std::uint32_t green = from[0];
    const std::uint32_t red = (green + from[1]) & 255U;
    const std::uint32_t blue = (green + from[2]) & 255U;
    pixel = alpha << 24 | std::min(red, alpha) << 16 | std::min(green, alpha) << 8 |
            std::min(blue, alpha);
    from += head.channels;
  }
  return pixels;
}

} // namespace

bool isPackedImage(Bytes file) {
  return file.size() >= kPackedImageTag.size() &&
         std::memcmp(file.data(), kPackedImageTag.data(), kPackedImageTag.size()) == 0;
}

std::vector<Bytes> partedPackedImages(Bytes bytes) {
  std::vector<Bytes> files;
  while (!bytes.empty()) {
    const auto head = headOf(bytes);
    const std::size_t length = head ? kHeadBytes + head->bytes : bytes.size();
    files.push_back(bytes.first(length));
    bytes = bytes.subspan(length);
  }
  return files;
}

std::optional<ImageSize> packedImageSize(Bytes file) {
  const auto head = headOf(file);
  if (!head) return std::nullopt;
  return ImageSize{head->width, head->height};
}

std::optional<PixelBuffer> decodePackedImage(std::span<const Bytes> files, std::size_t index) {
  if (index >= files.size()) return std::nullopt;
  const auto head = headOf(files[index]);
  if (!head || head->base > index) return std::nullopt;
  auto bytes = unfiltered(*head, files[index]);
  if (!bytes) return std::nullopt;
  if (head->base > 0 && !addBase(*head, files[index - head->base], *bytes)) return std::nullopt;
  return pixelsOf(*head, *bytes);
}

} // namespace qlx::gui
