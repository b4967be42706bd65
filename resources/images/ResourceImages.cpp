// SPDX-License-Identifier: ISC
#include "platform/ModuleResources.h"
#include "resources/images/Images.h"

namespace qlx::resources {

std::span<const std::byte> findImage(int number) {
  const auto png = platform::pngResource(number);
  return png.empty() ? platform::bitmapResource(number) : png;
}

} // namespace qlx::resources
