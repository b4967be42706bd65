// SPDX-License-Identifier: ISC
#pragma once

#include "platform/SettingsStore.h"

namespace qlx::platform {

/// Settings as files of one folder under the user's configuration home: one file a value, named as
/// the value, holding its bytes. A value is replaced by renaming a finished file over it.
class XdgSettingsStore final : public SettingsStore {
 public:
  /// `folder` is absolute and is made when the first value is written; empty for a user without a
  /// home.
  explicit XdgSettingsStore(std::string folder) : m_folder(std::move(folder)) {}

  std::optional<std::vector<std::uint8_t>> readBinary(std::string_view name) const override;
  bool writeBinary(std::string_view name, std::span<const std::uint8_t> value) override;
  std::string readText(std::string_view name) const override;
  bool writeText(std::string_view name, std::string_view value) override;
  bool remove(std::string_view name) override;

 private:
  /// Empty for a name that is none.
  std::string pathOf(std::string_view name) const;

  std::string m_folder;
};

} // namespace qlx::platform
