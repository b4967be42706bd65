#include "resources/images/Images.h"

#include <cstdint>

extern "C" {
// Defined in Images.S.
extern const std::byte qlxImages[];
extern const std::int32_t qlxImageTable[];
extern const std::byte qlxEditorFont[];
extern const std::byte qlxEditorFontEnd[];
}

namespace qlx::resources {

std::span<const std::byte> findImage(int number) {
  for (const std::int32_t* entry = qlxImageTable; entry[0] != 0; entry += 3) {
    if (entry[0] == number) return {qlxImages + entry[1], qlxImages + entry[2]};
  }
  return {};
}

std::span<const std::byte> editorFont() { return {qlxEditorFont, qlxEditorFontEnd}; }

} // namespace qlx::resources
