// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <span>

/// The editor's images and its glyphs, inside this library: read-only, valid as long as the library
/// is loaded, any thread.
namespace qlx::resources {

/// The file of an image by its resource number, for example 4000, at its plain size (factor 1) or
/// twice as large (factor 2); empty when there is no such image, as for every other factor.
/// 19899 and 19990 at factor 1 are device-independent bitmaps, with or without a file header, all
/// others PNG where libraries have resources, and else of the form of gui/drawing/PackedImage.h.
/// The strip 2005 and, at factor 2, 2002 are one such file a frame, behind each other.
std::span<const std::byte> findImage(int number, int factor = 1);

/// The glyphs of the editor's text, a sans serif with the metrics of Arial, in the form that
/// gui/drawing/GlyphPack.h describes, for a window of the scale of this index in
/// gui/drawing/WindowScale.h, and behind the last scale the further characters. Empty behind these.
std::span<const std::byte> editorGlyphs(std::size_t pack = 0);

} // namespace qlx::resources
