// SPDX-License-Identifier: ISC
#include "brezan/pictures/PngFile.h"

#include "brezan/Words.h"
#include "brezan/sound/PendingFile.h"

#include <memory>
#include <stdexcept>

namespace qlx::tools {

void checkPictureName(const std::filesystem::path& path) {
  if (folded(path.extension().string()) != ".png")
    throw std::runtime_error("'" + path.string() +
                             "' must end in .png: pictures are written as PNG");
}

void savePng(cairo_surface_t* surface, const std::filesystem::path& path) {
  PendingFile pending(path);
  if (cairo_surface_write_to_png(surface, pending.path().string().c_str()) != CAIRO_STATUS_SUCCESS)
    throw std::runtime_error("cannot write '" + path.string() + "'");
  pending.commit();
}

void savePng(const platform::WindowRobot::Picture& picture, int scale,
             const std::filesystem::path& path) {
  const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, picture.width * scale, picture.height * scale),
      cairo_surface_destroy);
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
    throw std::runtime_error("the picture is too large");
  unsigned char* const data = cairo_image_surface_get_data(surface.get());
  const int stride = cairo_image_surface_get_stride(surface.get());
  for (int y = 0; y < picture.height * scale; ++y) {
    const std::uint32_t* from =
        picture.pixels.data() + static_cast<std::ptrdiff_t>(y / scale) * picture.width;
    auto* to = reinterpret_cast<std::uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride);
    for (int x = 0; x < picture.width * scale; ++x) to[x] = from[x / scale];
  }
  cairo_surface_mark_dirty(surface.get());
  savePng(surface.get(), path);
}

} // namespace qlx::tools
