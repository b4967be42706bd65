// SPDX-License-Identifier: ISC
#include "resources/images/Images.h"

#include <cstdint>

namespace qlx::resources {

namespace {

constexpr std::size_t kScales = 4;

} // namespace

extern "C" {
// Defined in Glyphs.S.
extern const std::uint32_t qlxEditorGlyphPlaces[kScales + 1];
extern const std::byte qlxEditorGlyphs[];
}

std::span<const std::byte> editorGlyphs(std::size_t scale) {
  if (scale >= kScales) return {};
  return {qlxEditorGlyphs + qlxEditorGlyphPlaces[scale],
          qlxEditorGlyphs + qlxEditorGlyphPlaces[scale + 1]};
}

} // namespace qlx::resources
