// SPDX-License-Identifier: ISC
#pragma once

#include <string>
#include <string_view>

namespace qlx::platform {

/// Full path of a document that an installation has put into share/doc: of the tree in which the
/// program or plug-in that asks lies (PREFIX/bin, PREFIX/lib/vst), else of the user's data folder,
/// else of the system's ($XDG_DATA_HOME, $XDG_DATA_DIRS). On Windows: in the folder doc beside the
/// program or plug-in. Empty when there is none.
/// @param name relative to share/doc
std::string findInstalledDocument(std::string_view name);

} // namespace qlx::platform
