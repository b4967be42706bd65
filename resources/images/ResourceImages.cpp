// SPDX-License-Identifier: ISC
#include "platform/ModuleResources.h"
#include "resources/images/Images.h"

namespace qlx::resources {
namespace {

constexpr int kLargeNumbers = 20000; // as in CMakeLists.txt; a resource's number has 16 bits

} // namespace

std::span<const std::byte> findImage(int number, int factor) {
  if (factor == 2) return platform::pngResource(number + kLargeNumbers);
  if (factor != 1) return {};
  const auto png = platform::pngResource(number);
  return png.empty() ? platform::bitmapResource(number) : png;
}

} // namespace qlx::resources
