// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qlx::platform {

/// Named values that outlive the process, per user, shared by all processes of that user without
/// locks: who reads while somebody writes gets the whole old or the whole new value. Every failure
/// is silent: a value that can't be read is not there, one that can't be written stays as it was.
/// Names are plain file-name texts. For the user-interface thread.
class SettingsStore {
 public:
  /// Longer values are not read.
  static constexpr std::size_t kMaxValueBytes = std::size_t{1} << 20;

  virtual ~SettingsStore() = default;

  virtual std::optional<std::vector<std::uint8_t>> readBinary(std::string_view name) const = 0;
  virtual bool writeBinary(std::string_view name, std::span<const std::uint8_t> value) = 0;

  /// UTF-8; empty when there is none.
  virtual std::string readText(std::string_view name) const = 0;
  virtual bool writeText(std::string_view name, std::string_view value) = 0;

  /// True when the value is gone, also when there was none.
  virtual bool remove(std::string_view name) = 0;

 protected:
  SettingsStore() = default;
  SettingsStore(const SettingsStore&) = default;
  SettingsStore& operator=(const SettingsStore&) = default;
};

/// The store of this user and program on this system. Touches nothing until a value is asked for; a
/// user without a place for settings gets a store in which nothing is found and nothing can be
/// written.
std::unique_ptr<SettingsStore> openUserSettings(std::string_view vendor, std::string_view product);

} // namespace qlx::platform
