// SPDX-License-Identifier: ISC
#pragma once

#include <functional>
#include <map>

#include "platform/SettingsStore.h"

namespace qlx::test {
using namespace platform;

/// Settings that live as long as this object.
class MemorySettingsStore final : public SettingsStore {
 public:
  std::optional<std::vector<std::uint8_t>> readBinary(std::string_view name) const override {
    const auto found = m_values.find(name);
    if (found == m_values.end()) return std::nullopt;
    return found->second;
  }

  bool writeBinary(std::string_view name, std::span<const std::uint8_t> value) override {
    if (!m_writable) return false;
    m_values[std::string(name)].assign(value.begin(), value.end());
    return true;
  }

  std::string readText(std::string_view name) const override {
    const auto bytes = readBinary(name);
    return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
  }

  bool writeText(std::string_view name, std::string_view value) override {
    const std::vector<std::uint8_t> bytes(value.begin(), value.end());
    return writeBinary(name, bytes);
  }

  bool remove(std::string_view name) override {
    if (!m_writable) return false;
    const auto found = m_values.find(name);
    if (found != m_values.end()) m_values.erase(found);
    return true;
  }

  /// A store that can't be written refuses writes and removals.
  void setWritable(bool writable) { m_writable = writable; }

 private:
  std::map<std::string, std::vector<std::uint8_t>, std::less<>> m_values;
  bool m_writable = true;
};

} // namespace qlx::test
