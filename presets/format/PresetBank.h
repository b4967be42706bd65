// SPDX-License-Identifier: ISC
#pragma once

#include "presets/format/PresetSlot.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>

namespace qlx::presets {

/// The 32 slots of one instance. Any thread may read and write single values and names at any time:
/// each value and each eight bytes of a name are whole, nothing waits. A slot read while another
/// thread writes it may mix old and new values.
class PresetBank {
 public:
  float value(int slot, int parameter) const {
    return cell(slot, parameter).load(std::memory_order_relaxed);
  }

  void setValue(int slot, int parameter, float value) {
    cell(slot, parameter).store(value, std::memory_order_relaxed);
  }

  PresetSlot slot(int index) const {
    PresetSlot copy;
    const Entry& entry = m_entries[static_cast<std::size_t>(index)];
    NameWords words;
    for (std::size_t i = 0; i < words.size(); ++i) {
      words[i] = entry.name[i].load(std::memory_order_relaxed);
    }
    copy.name = std::bit_cast<decltype(copy.name)>(words);
    for (int p = 0; p < kNumPresetParameters; ++p) {
      copy.values[static_cast<std::size_t>(p)] = value(index, p);
    }
    return copy;
  }

  void setName(int index, const decltype(PresetSlot::name)& name) {
    Entry& entry = m_entries[static_cast<std::size_t>(index)];
    const auto words = std::bit_cast<NameWords>(name);
    for (std::size_t i = 0; i < words.size(); ++i) {
      entry.name[i].store(words[i], std::memory_order_relaxed);
    }
  }

  void setSlot(int index, const PresetSlot& slot) {
    setName(index, slot.name);
    for (int p = 0; p < kNumPresetParameters; ++p) {
      setValue(index, p, slot.values[static_cast<std::size_t>(p)]);
    }
  }

 private:
  using NameWords = std::array<std::uint64_t, kPresetNameBytes / sizeof(std::uint64_t)>;
  static_assert(std::atomic<float>::is_always_lock_free);
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

  struct Entry {
    std::array<std::atomic<std::uint64_t>, std::tuple_size_v<NameWords>> name{};
    std::array<std::atomic<float>, kNumPresetParameters> values{};
  };

  const std::atomic<float>& cell(int slot, int parameter) const {
    return m_entries[static_cast<std::size_t>(slot)].values[static_cast<std::size_t>(parameter)];
  }
  std::atomic<float>& cell(int slot, int parameter) {
    return m_entries[static_cast<std::size_t>(slot)].values[static_cast<std::size_t>(parameter)];
  }

  std::array<Entry, kNumPresetSlots> m_entries{};
};

} // namespace qlx::presets
