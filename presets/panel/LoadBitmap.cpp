// SPDX-License-Identifier: ISC
#include "presets/panel/LoadBitmap.h"

#include "resources/images/Images.h"

#include <cstdint>

namespace qlx::presets {

gui::CBitmapRef loadBitmap(int number) {
  return gui::CBitmap::load([number](int scale) -> std::span<const std::uint8_t> {
    const std::span<const std::byte> file = resources::findImage(number, scale);
    return {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()};
  });
}

} // namespace qlx::presets
