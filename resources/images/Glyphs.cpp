// SPDX-License-Identifier: ISC
#include "resources/images/Images.h"

#include <cstdint>

namespace qlx::resources {

namespace {

constexpr std::size_t kPacks = 5;

} // namespace

extern "C" {
// Defined in Glyphs.S.
extern const std::uint32_t qlxEditorGlyphPlaces[kPacks + 1];
extern const std::byte qlxEditorGlyphs[];
}

std::span<const std::byte> editorGlyphs(std::size_t pack) {
  if (pack >= kPacks) return {};
  return {qlxEditorGlyphs + qlxEditorGlyphPlaces[pack],
          qlxEditorGlyphs + qlxEditorGlyphPlaces[pack + 1]};
}

} // namespace qlx::resources
