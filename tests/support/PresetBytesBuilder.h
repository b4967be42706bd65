// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <string_view>
#include <vector>

#include "presets/format/PresetSlot.h"

namespace qlx::test {

inline constexpr std::uint32_t kFileId = 0x5162725A; // QbrZ

/// Puts preset data together field by field, as the machine of either byte order wrote it.
class PresetBytesBuilder {
 public:
  enum class Order { Little, Big };

  explicit PresetBytesBuilder(Order order = Order::Little) : m_order(order) {}

  PresetBytesBuilder& u8(std::uint8_t value) {
    m_bytes.push_back(value);
    return *this;
  }
  PresetBytesBuilder& u32(std::uint32_t value) {
    for (int i = 0; i < 4; ++i) {
      const int shift = m_order == Order::Little ? 8 * i : 24 - 8 * i;
      u8(static_cast<std::uint8_t>(value >> shift));
    }
    return *this;
  }
  PresetBytesBuilder& f32(float value) { return u32(std::bit_cast<std::uint32_t>(value)); }
  PresetBytesBuilder& zeros(int count) {
    m_bytes.insert(m_bytes.end(), static_cast<std::size_t>(count), 0);
    return *this;
  }
  PresetBytesBuilder& name(const std::array<char, 24>& text) {
    m_bytes.insert(m_bytes.end(), text.begin(), text.end());
    return *this;
  }
  PresetBytesBuilder& append(const PresetBytesBuilder& other) {
    m_bytes.insert(m_bytes.end(), other.m_bytes.begin(), other.m_bytes.end());
    return *this;
  }

  PresetBytesBuilder& nameRecord(int slot, const std::array<char, 24>& text) {
    return u32(0).u32(156).u32(static_cast<std::uint32_t>(slot)).name(text).zeros(132);
  }
  PresetBytesBuilder& valueRecord(int slot, int parameter, float value) {
    u32(1).u32(20).u32(static_cast<std::uint32_t>(slot));
    return u32(static_cast<std::uint32_t>(parameter)).zeros(8).f32(value).zeros(4);
  }
  PresetBytesBuilder& slotRecords(int slot, const presets::PresetSlot& preset) {
    nameRecord(slot, preset.name);
    for (int p = 0; p < 36; ++p) valueRecord(slot, p, preset.values[static_cast<std::size_t>(p)]);
    return *this;
  }
  /// The header, and behind it the records in `records`.
  PresetBytesBuilder& image(std::uint8_t kind, int recordCount, int current,
                            const PresetBytesBuilder& records) {
    u32(kFileId).u8(kind).u32(0x01000000).u32(36);
    u32(static_cast<std::uint32_t>(recordCount)).u32(static_cast<std::uint32_t>(current));
    u32(static_cast<std::uint32_t>(records.m_bytes.size())).zeros(16);
    return append(records);
  }
  PresetBytesBuilder& presetImage(const presets::PresetSlot& preset) {
    return image(0x22, 37, 0, PresetBytesBuilder(m_order).slotRecords(0, preset));
  }
  PresetBytesBuilder& bankImage(const std::array<presets::PresetSlot, 32>& slots, int current) {
    PresetBytesBuilder records(m_order);
    for (int i = 0; i < 32; ++i) records.slotRecords(i, slots[static_cast<std::size_t>(i)]);
    return image(0x38, 32 * 37, current, records);
  }
  /// A name and the first `values` values; those beyond 36 are 7, which no reader may take.
  PresetBytesBuilder& legacyRecord(const presets::PresetSlot& preset, int values) {
    name(preset.name);
    for (int p = 0; p < values; ++p) {
      f32(p < 36 ? preset.values[static_cast<std::size_t>(p)] : 7.0F);
    }
    return *this;
  }
  PresetBytesBuilder& legacyFile(std::uint8_t kind, const std::vector<presets::PresetSlot>& slots,
                                 int values) {
    u32(kFileId).u8(kind);
    for (const auto& slot : slots) legacyRecord(slot, values);
    return *this;
  }
  PresetBytesBuilder& legacyChunk(const std::vector<presets::PresetSlot>& slots, int current,
                                  int values) {
    u32(0x01000000).u32(kFileId).u32(static_cast<std::uint32_t>(slots.size()));
    u32(static_cast<std::uint32_t>(current)).zeros(16);
    for (const auto& slot : slots) legacyRecord(slot, values);
    return *this;
  }
  PresetBytesBuilder& chunk(const PresetBytesBuilder& image) {
    return u32(0x02000000).u32(kFileId).append(image);
  }

  const std::vector<std::uint8_t>& bytes() const { return m_bytes; }

 private:
  Order m_order;
  std::vector<std::uint8_t> m_bytes;
};

/// A slot whose name fills `nameLength` bytes and whose values differ everywhere and reach to the
/// ends of the range.
inline presets::PresetSlot makeSlot(int seed, std::size_t nameLength = 9) {
  presets::PresetSlot slot;
  for (std::size_t i = 0; i < nameLength; ++i) {
    slot.name[i] = static_cast<char>('A' + (static_cast<std::size_t>(seed) + i) % 26);
  }
  for (std::size_t p = 0; p < 36; ++p) {
    slot.values[p] =
        static_cast<float>((static_cast<std::size_t>(seed) * 37 + p * 11) % 101) / 100.0F;
  }
  slot.values[30] = -0.0F;
  slot.values[31] = 1.0F;
  slot.values[32] =
      std::bit_cast<float>(std::uint32_t{1} + static_cast<std::uint32_t>(seed)); // denormal
  return slot;
}

inline std::array<presets::PresetSlot, 32> makeBank(int seed) {
  std::array<presets::PresetSlot, 32> slots;
  for (int i = 0; i < 32; ++i) {
    slots[static_cast<std::size_t>(i)] = makeSlot(seed + i, static_cast<std::size_t>(i % 25));
  }
  return slots;
}

} // namespace qlx::test
