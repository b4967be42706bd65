#include "gui/CBitmap.h"

#include <cairo.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace qlx::gui {

namespace {

using Bytes = std::span<const std::uint8_t>;
using SurfaceOwner = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

constexpr int kLargestSide = 32767;
constexpr std::array<std::uint8_t, 8> kPngSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t kDibFileHeaderSize = 14;
constexpr std::size_t kDibHeaderSize = 40;

cairo_status_t readBytes(void* closure, unsigned char* data, unsigned int length) {
  Bytes& rest = *static_cast<Bytes*>(closure);
  if (rest.size() < length) return CAIRO_STATUS_READ_ERROR;
  std::memcpy(data, rest.data(), length);
  rest = rest.subspan(length);
  return CAIRO_STATUS_SUCCESS;
}

CBitmapRef decodePng(Bytes bytes) {
  const SurfaceOwner surface(cairo_image_surface_create_from_png_stream(readBytes, &bytes),
                             &cairo_surface_destroy);
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  const cairo_format_t format = cairo_image_surface_get_format(surface.get());
  if (format != CAIRO_FORMAT_ARGB32 && format != CAIRO_FORMAT_RGB24) return nullptr;
  const std::uint32_t opaque = format == CAIRO_FORMAT_RGB24 ? 0xFF000000U : 0U;
  PixelBuffer pixels(cairo_image_surface_get_width(surface.get()),
                     cairo_image_surface_get_height(surface.get()));
  const unsigned char* data = cairo_image_surface_get_data(surface.get());
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
  for (int y = 0; y < pixels.height; ++y) {
    std::uint32_t* row = pixels.row(y);
    std::memcpy(row, data + static_cast<std::size_t>(y) * stride,
                static_cast<std::size_t>(pixels.width) * sizeof(std::uint32_t));
    for (int x = 0; x < pixels.width; ++x) row[x] |= opaque;
  }
  return std::make_shared<const CBitmap>(std::move(pixels));
}

std::uint32_t littleEndian(Bytes bytes, std::size_t offset, std::size_t count) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < count; ++i)
    value |= static_cast<std::uint32_t>(bytes[offset + i]) << (8 * i);
  return value;
}

CBitmapRef decodeDib(Bytes bytes) {
  if (bytes.size() >= kDibFileHeaderSize && bytes[0] == 'B' && bytes[1] == 'M')
    bytes = bytes.subspan(kDibFileHeaderSize);
  if (bytes.size() < kDibHeaderSize || littleEndian(bytes, 0, 4) != kDibHeaderSize) return nullptr;
  const auto width = static_cast<std::int32_t>(littleEndian(bytes, 4, 4));
  const auto signedHeight = static_cast<std::int32_t>(littleEndian(bytes, 8, 4));
  const std::uint32_t depth = littleEndian(bytes, 14, 2);
  const bool uncompressed = littleEndian(bytes, 16, 4) == 0;
  if (!uncompressed || (depth != 24 && depth != 32) || width <= 0 || width > kLargestSide ||
      signedHeight == 0 || signedHeight < -kLargestSide || signedHeight > kLargestSide)
    return nullptr;
  const bool fromTop = signedHeight < 0;
  const int height = fromTop ? -signedHeight : signedHeight;
  const std::size_t pixelBytes = depth / 8;
  const std::size_t stride = (static_cast<std::size_t>(width) * pixelBytes + 3) / 4 * 4;
  if (bytes.size() - kDibHeaderSize < stride * static_cast<std::size_t>(height)) return nullptr;
  PixelBuffer pixels(width, height);
  for (int y = 0; y < height; ++y) {
    const auto line = static_cast<std::size_t>(fromTop ? y : height - 1 - y);
    for (int x = 0; x < width; ++x)
      pixels.row(y)[x] =
          0xFF000000U |
          littleEndian(
              bytes, kDibHeaderSize + line * stride + static_cast<std::size_t>(x) * pixelBytes, 3);
  }
  return std::make_shared<const CBitmap>(std::move(pixels));
}

} // namespace

CBitmapRef CBitmap::decode(std::span<const std::uint8_t> bytes) {
  const bool png = bytes.size() >= kPngSignature.size() &&
                   std::equal(kPngSignature.begin(), kPngSignature.end(), bytes.begin());
  return png ? decodePng(bytes) : decodeDib(bytes);
}

} // namespace qlx::gui
