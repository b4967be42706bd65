// SPDX-License-Identifier: ISC
#include "resources/images/Images.h"

namespace qlx::resources {

extern "C" {
// Defined in Glyphs.S.
extern const std::byte qlxEditorGlyphs[];
extern const std::byte qlxEditorGlyphsEnd[];
}

std::span<const std::byte> editorGlyphs() { return {qlxEditorGlyphs, qlxEditorGlyphsEnd}; }

} // namespace qlx::resources
