// SPDX-License-Identifier: ISC
#include "brezan/plugin/PluginLocation.h"

#include "brezan/System.h"

#include <stdexcept>

namespace qlx::tools {

namespace fs = std::filesystem;

fs::path locatePlugin(const std::string& given) {
  std::error_code error;
  if (!given.empty()) {
    if (fs::is_regular_file(given, error)) return given;
    throw std::runtime_error("no plug-in file '" + given + "'");
  }
  std::vector<fs::path> folders = pluginFolders();
  if (const fs::path self = executablePath(); !self.empty())
    folders.insert(folders.begin(),
                   {self.parent_path(), self.parent_path().parent_path() / "lib/vst"});
  std::string looked;
  for (const fs::path& folder : folders) {
    if (fs::is_regular_file(folder / pluginFileName(), error)) return folder / pluginFileName();
    looked += (looked.empty() ? "" : ", ") + folder.string();
  }
  throw std::runtime_error("no " + pluginFileName() + " in " + looked +
                           "; name one with --plugin FILE");
}

} // namespace qlx::tools
