// SPDX-License-Identifier: ISC
#include "platform/InstalledDocument.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <dlfcn.h>

#include "platform/Files.h"

namespace qlx::platform {
namespace {

namespace fs = std::filesystem;

// PREFIX/lib/ARCHITECTURE/vst is the deepest folder that plug-ins are put into.
constexpr int kLevelsBelowPrefix = 3;

/// The file that holds this code: the plug-in or a program.
fs::path ownFile() {
  static const char inThisFile = 0;
  Dl_info info{};
  if (::dladdr(&inThisFile, &info) == 0 || info.dli_fname == nullptr) return {};
  const std::string name = info.dli_fname;
  std::error_code error;
  // A program that was found on PATH knows its bare name only.
  return fs::canonical(name.find('/') == std::string::npos ? "/proc/self/exe" : name, error);
}

std::string variable(const char* name, const std::string& otherwise) {
  const char* const value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : otherwise;
}

/// Data folders, the most particular first.
std::vector<fs::path> dataFolders() {
  std::vector<fs::path> folders;
  fs::path above = ownFile().parent_path();
  for (int level = 0; level < kLevelsBelowPrefix && above.has_relative_path(); ++level) {
    above = above.parent_path();
    folders.push_back(above / "share");
  }
  const std::string listed = variable("XDG_DATA_HOME", homeDirectory() + ".local/share") + ':' +
                             variable("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
  for (std::size_t at = 0; at <= listed.size();) {
    const std::size_t end = std::min(listed.find(':', at), listed.size());
    // The XDG base directory rule: relative paths don't count.
    if (listed[at] == '/') folders.emplace_back(listed.substr(at, end - at));
    at = end + 1;
  }
  return folders;
}

} // namespace

std::string findInstalledDocument(std::string_view name) {
  std::error_code error;
  for (const fs::path& folder : dataFolders()) {
    const fs::path document = folder / "doc" / name;
    if (fs::is_regular_file(document, error)) return document.string();
  }
  return {};
}

} // namespace qlx::platform
