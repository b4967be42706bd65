// SPDX-License-Identifier: ISC
#include "gui/drawing/CTypeface.h"

#include "gui/drawing/Utf8.h"

#include <cmath>
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

int enlarged(int pixels, double factor) { return static_cast<int>(std::lround(pixels * factor)); }

void enlarge(CTypeface::Glyph& glyph, double factor) {
  glyph.left = enlarged(glyph.left, factor);
  glyph.top = enlarged(glyph.top, factor);
  glyph.advance = enlarged(glyph.advance, factor);
  // So that its last pixel is still one of the small picture.
  glyph.width = static_cast<int>(glyph.width * factor);
  glyph.height = static_cast<int>(glyph.height * factor);
  glyph.enlarged = factor;
}

} // namespace

std::optional<CTypeface::Pack> CTypeface::opened(Bytes bytes) {
  if (bytes.size() < sizeof(PackHead)) return std::nullopt;
  const auto head = readAt<PackHead>(bytes, 0);
  if (!isOfThisForm(head, bytes.size() - sizeof head)) return std::nullopt;
  return Pack{bytes, head};
}

std::shared_ptr<CTypeface> CTypeface::create(std::span<const Bytes> packs) {
  std::shared_ptr<CTypeface> typeface(new CTypeface);
  for (std::size_t i = 0; i < std::min(packs.size(), kWindowScales.size()); ++i)
    typeface->m_packs[i] = opened(packs[i]);
  return typeface->m_packs.front() ? typeface : nullptr;
}

std::shared_ptr<CTypeface> CTypeface::atScale(double scale) const {
  std::shared_ptr<CTypeface> typeface(new CTypeface(*this));
  typeface->m_scale = scale;
  typeface->m_index =
      static_cast<std::size_t>(std::ranges::find(kWindowScales, scale) - kWindowScales.begin());
  return typeface;
}

std::optional<CTypeface::Glyph> CTypeface::Pack::glyph(char32_t character,
                                                       const CFontDesc& font) const {
  const auto characterAt = [&](std::size_t index) {
    return readAt<std::uint32_t>(bytes, sizeof(PackHead) + index * kCharacterBytes);
  };
  std::size_t low = 0;
  std::size_t high = head.glyphs;
  while (low < high) {
    const std::size_t middle = (low + high) / 2;
    if (characterAt(middle) < character)
      low = middle + 1;
    else
      high = middle;
  }
  if (low >= head.glyphs || characterAt(low) != character) return std::nullopt;
  const std::size_t row = sizeIndex(font) * head.glyphs + low;
  const auto packed = readAt<PackedGlyph>(bytes, sizeof(PackHead) + head.glyphs * kCharacterBytes +
                                                     row * sizeof(PackedGlyph));
  Glyph glyph{packed.left,      packed.top,        0, 0, packed.advance,
              packed.leftShift, packed.rightShift, {}};
  const std::size_t length = std::size_t{packed.width} * packed.height;
  if (packed.coverage <= bytes.size() && length <= bytes.size() - packed.coverage) {
    glyph.width = packed.width;
    glyph.height = packed.height;
    glyph.coverage = bytes.subspan(packed.coverage, length);
  }
  return glyph;
}

CTypeface::Glyph CTypeface::glyph(char32_t character, const CFontDesc& font) const {
  if (m_packs[m_index]) {
    if (const auto found = m_packs[m_index]->glyph(character, font)) return *found;
  }
  const Pack& plain = *m_packs.front();
  auto found = plain.glyph(character, font);
  if (!found && m_index > 0 && character != 0) return glyph(0, font);
  Glyph glyph = found ? *found : plain.glyph(0, font).value_or(Glyph{});
  if (m_index > 0) enlarge(glyph, m_scale);
  return glyph;
}

CTypeface::Metrics CTypeface::metrics(const CFontDesc& font) const {
  const bool drawn = m_packs[m_index].has_value();
  const PackedSize& size =
      (drawn ? *m_packs[m_index] : *m_packs.front()).head.sizes[sizeIndex(font)];
  if (drawn) return {size.ascent, size.descent};
  return {enlarged(size.ascent, m_scale), enlarged(size.descent, m_scale)};
}

CCoord CTypeface::width(std::string_view text, const CFontDesc& font) const {
  TextPen pen(*this, font, 0);
  while (!text.empty()) pen.set(takeUtf8(text));
  return pen.end() / m_scale;
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
