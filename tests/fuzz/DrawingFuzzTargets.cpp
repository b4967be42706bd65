// SPDX-License-Identifier: ISC
#include "gui/drawing/CBitmap.h"
#include "gui/drawing/CDrawContext.h"
#include "resources/images/Images.h"
#include "tests/fuzz/FuzzTargets.h"
#include "tests/support/DrawingBytes.h"

#include <array>
#include <numeric>

namespace qlx::test {
namespace {

using Input = std::span<const std::uint8_t>;
using Seeds = std::vector<ByteVector>;

ByteVector copyOf(std::span<const std::byte> file) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(file.data());
  return {bytes, bytes + file.size()};
}

void runImage(Input bytes) {
  const gui::CBitmapRef strip =
      gui::CBitmap::load([bytes](int scale) { return scale == 1 ? bytes : Input{}; });
  if (strip != nullptr && strip->width() * strip->height() < 1 << 16) strip->pixels();
  const gui::CBitmapRef bitmap = gui::CBitmap::decode(bytes);
  if (bitmap == nullptr) return;
  const auto& pixels = bitmap->pixels().pixels;
  require(bitmap->width() > 0 && bitmap->height() > 0);
  require(pixels.size() ==
          static_cast<std::size_t>(bitmap->width()) * static_cast<std::size_t>(bitmap->height()));
  for (const std::uint32_t pixel : pixels)
    for (int shift = 0; shift < 24; shift += 8) require(((pixel >> shift) & 255U) <= pixel >> 24);
}

void runGlyphPack(Input bytes) {
  const auto typeface = gui::CTypeface::create(bytes);
  if (typeface == nullptr) return;
  gui::PixelBuffer target(60, 20);
  gui::CDrawContext context(target, typeface.get());
  for (const gui::CFontDesc& font : {gui::CFontDesc{9.0}, gui::CFontDesc{13.0}}) {
    for (const char32_t character : {U'\0', U'a', U'b', U'Z', U'\u20AC', U'\U0010FFFF'}) {
      const auto glyph = typeface->glyph(character, font);
      require(glyph.width * glyph.height == static_cast<int>(glyph.coverage.size()));
      require(std::accumulate(glyph.coverage.begin(), glyph.coverage.end(), 0) >= 0);
    }
    context.setFont(font);
    context.drawString("ab \u20ACZba", {0, 0, 60, 20});
  }
}

Seeds imageSeeds() {
  return {smallPng(), smallPackedStrip(), copyOf(resources::findImage(989)),
          copyOf(resources::findImage(19994)), copyOf(resources::findImage(19990))};
}

Seeds glyphPackSeeds() { return {smallGlyphPack(), deflatedGlyphPack(smallGlyphPack())}; }

constexpr std::array<FuzzTarget, 2> kTargets{{
    {"image", &runImage, &imageSeeds},
    {"glyph_pack", &runGlyphPack, &glyphPackSeeds},
}};

} // namespace

std::span<const FuzzTarget> drawingFuzzTargets() { return kTargets; }

} // namespace qlx::test
