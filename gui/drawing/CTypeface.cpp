// SPDX-License-Identifier: ISC
#include "gui/drawing/CTypeface.h"

#include "gui/drawing/PngImage.h"
#include "gui/drawing/Utf8.h"

#include <atomic>
#include <cmath>
#include <cstring>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

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

/// The glyphs for one scale.
class CTypeface::Pack {
 public:
  explicit Pack(Bytes kept) : m_kept(kept) {}

  /// Null where the bytes are of another form.
  const PackHead* head() const {
    // Not std::call_once: with the thread library for Windows its thread-local memory costs two
    // handles of the system, which stay when the library is unloaded.
    if (!m_isOpen.load(std::memory_order_acquire)) {
      const std::lock_guard opening(m_opening);
      if (!m_isOpen.load(std::memory_order_relaxed)) open();
      m_isOpen.store(true, std::memory_order_release);
    }
    return m_head ? &*m_head : nullptr;
  }

  /// Nothing where the character isn't in it.
  std::optional<Glyph> glyph(char32_t character, const CFontDesc& font) const;

 private:
  void open() const;

  Bytes m_kept;
  mutable std::mutex m_opening;
  mutable std::atomic<bool> m_isOpen{false};
  mutable std::vector<std::uint8_t> m_inflated;
  mutable Bytes m_bytes; ///< kept or inflated
  mutable std::optional<PackHead> m_head;
};

void CTypeface::Pack::open() const {
  m_bytes = m_kept;
  if (m_kept.size() >= sizeof(DeflatedHead)) {
    const auto deflated = readAt<DeflatedHead>(m_kept, 0);
    if (deflated.tag == kDeflatedTag) {
      auto content = inflated(m_kept.subspan(sizeof deflated), deflated.bytes);
      if (content) m_inflated = std::move(*content);
      m_bytes = m_inflated;
    }
  }
  if (m_bytes.size() < sizeof(PackHead)) return;
  const auto head = readAt<PackHead>(m_bytes, 0);
  if (isOfThisForm(head, m_bytes.size() - sizeof head)) m_head = head;
}

std::shared_ptr<CTypeface> CTypeface::create(std::span<const Bytes> packs) {
  std::shared_ptr<CTypeface> typeface(new CTypeface);
  for (std::size_t i = 0; i < std::min(packs.size(), kGlyphPacks); ++i)
    typeface->m_packs[i] = std::make_shared<const Pack>(packs[i]);
  const auto& first = typeface->m_packs.front();
  return first != nullptr && first->head() != nullptr ? typeface : nullptr;
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
  if (head() == nullptr) return std::nullopt;
  const auto characterAt = [this](std::size_t index) {
    return readAt<std::uint32_t>(m_bytes, sizeof(PackHead) + index * kCharacterBytes);
  };
  std::size_t low = 0;
  std::size_t high = m_head->glyphs;
  while (low < high) {
    const std::size_t middle = (low + high) / 2;
    if (characterAt(middle) < character)
      low = middle + 1;
    else
      high = middle;
  }
  if (low >= m_head->glyphs || characterAt(low) != character) return std::nullopt;
  const std::size_t row = sizeIndex(font) * m_head->glyphs + low;
  const auto packed = readAt<PackedGlyph>(
      m_bytes, sizeof(PackHead) + m_head->glyphs * kCharacterBytes + row * sizeof(PackedGlyph));
  Glyph glyph{packed.left,      packed.top,        0, 0, packed.advance,
              packed.leftShift, packed.rightShift, {}};
  const std::size_t length = std::size_t{packed.width} * packed.height;
  if (packed.coverage <= m_bytes.size() && length <= m_bytes.size() - packed.coverage) {
    glyph.width = packed.width;
    glyph.height = packed.height;
    glyph.coverage = m_bytes.subspan(packed.coverage, length);
  }
  return glyph;
}

std::optional<CTypeface::Glyph> CTypeface::packedGlyph(std::size_t pack, char32_t character,
                                                       const CFontDesc& font) const {
  return m_packs[pack] == nullptr ? std::nullopt : m_packs[pack]->glyph(character, font);
}

CTypeface::Glyph CTypeface::glyph(char32_t character, const CFontDesc& font) const {
  if (const auto own = packedGlyph(m_index, character, font)) return *own;
  auto found = packedGlyph(0, character, font);
  if (!found) found = packedGlyph(kWindowScales.size(), character, font);
  if (!found) return character == 0 ? Glyph{} : glyph(0, font);
  if (m_index > 0) enlarge(*found, m_scale);
  return *found;
}

CTypeface::Metrics CTypeface::metrics(const CFontDesc& font) const {
  const auto& own = m_packs[m_index];
  const PackHead* const drawn = own == nullptr ? nullptr : own->head();
  const PackedSize& size =
      (drawn == nullptr ? m_packs.front()->head() : drawn)->sizes[sizeIndex(font)];
  if (drawn != nullptr) return {size.ascent, size.descent};
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
