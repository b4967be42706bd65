// SPDX-License-Identifier: ISC
#include "gui/drawing/CTypeface.h"

#include "gui/drawing/Utf8.h"

#include <cstring>
#include <optional>

namespace qlx::gui {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kCharacterBytes = sizeof(std::uint32_t);

// Half a pixel in 64ths.
constexpr int kHalf = 32;

/// The caller has checked that it lies within the pack.
template <typename Value>
Value readAt(Bytes pack, std::size_t place) {
  Value value;
  std::memcpy(&value, pack.data() + place, sizeof value);
  return value;
}

std::size_t sizeIndex(const CFontDesc& font) {
  const auto found = std::ranges::find(kGlyphSizes, font.size);
  return static_cast<std::size_t>(found - kGlyphSizes.begin());
}

bool isOfThisForm(const PackHead& head, std::size_t bytesBehind) {
  constexpr std::size_t kBytesOfOne = kCharacterBytes + kGlyphSizes.size() * sizeof(PackedGlyph);
  return head.tag == kPackTag && head.glyphs > 0 && head.glyphs <= bytesBehind / kBytesOfOne &&
         std::ranges::equal(head.sizes, kGlyphSizes, {}, &PackedSize::pixels);
}

} // namespace

CTypeface::CTypeface(Bytes pack, const PackHead& head) : m_pack(pack), m_head(head) {}

std::shared_ptr<CTypeface> CTypeface::create(Bytes pack) {
  if (pack.size() < sizeof(PackHead)) return nullptr;
  const auto head = readAt<PackHead>(pack, 0);
  if (!isOfThisForm(head, pack.size() - sizeof head)) return nullptr;
  return std::shared_ptr<CTypeface>(new CTypeface(pack, head));
}

CTypeface::Glyph CTypeface::glyph(char32_t character, const CFontDesc& font) const {
  const auto characterAt = [&](std::size_t index) {
    return readAt<std::uint32_t>(m_pack, sizeof(PackHead) + index * kCharacterBytes);
  };
  std::size_t low = 0;
  std::size_t high = m_head.glyphs;
  while (low < high) {
    const std::size_t middle = (low + high) / 2;
    if (characterAt(middle) < character)
      low = middle + 1;
    else
      high = middle;
  }
  const std::size_t index = low < m_head.glyphs && characterAt(low) == character ? low : 0;
  const std::size_t row = sizeIndex(font) * m_head.glyphs + index;
  const auto packed = readAt<PackedGlyph>(
      m_pack, sizeof(PackHead) + m_head.glyphs * kCharacterBytes + row * sizeof(PackedGlyph));
  Glyph glyph{packed.left,      packed.top,        0, 0, packed.advance,
              packed.leftShift, packed.rightShift, {}};
  const std::size_t length = std::size_t{packed.width} * packed.height;
  if (packed.coverage <= m_pack.size() && length <= m_pack.size() - packed.coverage) {
    glyph.width = packed.width;
    glyph.height = packed.height;
    glyph.coverage = m_pack.subspan(packed.coverage, length);
  }
  return glyph;
}

CTypeface::Metrics CTypeface::metrics(const CFontDesc& font) const {
  const PackedSize& size = m_head.sizes[sizeIndex(font)];
  return {size.ascent, size.descent};
}

int CTypeface::width(std::string_view text, const CFontDesc& font) const {
  TextPen pen(*this, font, 0);
  while (!text.empty()) pen.set(takeUtf8(text));
  return pen.end();
}

CTypeface::Glyph TextPen::set(char32_t character) {
  const CTypeface::Glyph glyph = m_typeface.glyph(character, m_font);
  const int widened = m_rightShift - glyph.leftShift;
  m_start = m_end;
  const bool touching = m_end - 1 + glyph.left <= m_inkEnd;
  if (widened > kHalf && !touching) --m_start;
  if (widened < -kHalf) ++m_start;
  m_end = m_start + glyph.advance;
  m_inkEnd = m_start + glyph.left + glyph.width;
  m_rightShift = glyph.rightShift;
  return glyph;
}

} // namespace qlx::gui
