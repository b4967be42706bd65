// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <string_view>

namespace qlx::platform {

/// The project's version as CMake states it, "1.0.0".
std::string_view version();
/// The same as one number, 1000 for 1.0.0 and 1234 for 1.2.34, as plug-in hosts are told it.
std::int32_t versionNumber();

} // namespace qlx::platform
