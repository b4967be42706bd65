// SPDX-License-Identifier: ISC
#include "platform/linux/files/XdgSettingsStore.h"

#include <array>
#include <cerrno>
#include <cstdlib>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/Files.h"

namespace qlx::platform {
namespace {

std::string homeFromUserList() {
  passwd entry{};
  passwd* found = nullptr;
  std::array<char, 4096> texts{};
  if (::getpwuid_r(::geteuid(), &entry, texts.data(), texts.size(), &found) != 0) return {};
  return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
}

/// The XDG base directory rule: relative paths don't count.
std::string configurationHome() {
  const char* const configured = std::getenv("XDG_CONFIG_HOME");
  if (configured != nullptr && configured[0] == '/') return configured;
  const char* const variable = std::getenv("HOME");
  const std::string home = variable != nullptr ? variable : homeFromUserList();
  return home.starts_with('/') ? home + "/.config" : std::string();
}

/// Makes a folder and those above it, for this user alone where they are new.
bool makeFolders(const std::string& folder) {
  if (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST) return true;
  const std::size_t above = folder.rfind('/');
  if (errno != ENOENT || above == 0 || above == std::string::npos) return false;
  return makeFolders(folder.substr(0, above)) &&
         (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST);
}

} // namespace

std::string XdgSettingsStore::pathOf(std::string_view name) const {
  if (m_folder.empty() || name.empty() || name.front() == '.' ||
      name.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos) {
    return {};
  }
  return m_folder + '/' + std::string(name);
}

std::optional<std::vector<std::uint8_t>> XdgSettingsStore::readBinary(std::string_view name) const {
  const std::string path = pathOf(name);
  if (path.empty()) return std::nullopt;
  return readFile(path, kMaxValueBytes);
}

bool XdgSettingsStore::writeBinary(std::string_view name, std::span<const std::uint8_t> value) {
  const std::string path = pathOf(name);
  return !path.empty() && makeFolders(m_folder) && replaceFile(path, value);
}

std::string XdgSettingsStore::readText(std::string_view name) const {
  const auto bytes = readBinary(name);
  if (!bytes) return {};
  std::string text(bytes->begin(), bytes->end());
  // Somebody may have written the value with an editor or from a shell, which end it with a new
  // line.
  while (text.ends_with('\n') || text.ends_with('\r')) text.pop_back();
  return text.substr(0, text.find('\0'));
}

bool XdgSettingsStore::writeText(std::string_view name, std::string_view value) {
  return writeBinary(name, {reinterpret_cast<const std::uint8_t*>(value.data()), value.size()});
}

bool XdgSettingsStore::remove(std::string_view name) {
  const std::string path = pathOf(name);
  return !path.empty() && (::unlink(path.c_str()) == 0 || errno == ENOENT);
}

std::unique_ptr<SettingsStore> openUserSettings(std::string_view vendor, std::string_view product) {
  std::string folder = configurationHome();
  if (!folder.empty()) folder.append("/").append(vendor).append("/").append(product);
  return std::make_unique<XdgSettingsStore>(std::move(folder));
}

} // namespace qlx::platform
