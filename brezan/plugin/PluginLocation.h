// SPDX-License-Identifier: ISC
#pragma once

#include <filesystem>
#include <string>

namespace qlx::tools {

/// The plug-in file to load: `given` when it is not empty, else the first that exists beside the
/// program, in the lib/vst of its installation and in the places where hosts look. Throws
/// std::runtime_error that names the places when there is none.
std::filesystem::path locatePlugin(const std::string& given);

} // namespace qlx::tools
