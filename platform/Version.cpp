// SPDX-License-Identifier: ISC
#include "platform/Version.h"

namespace qlx::platform {

std::string_view version() { return QLX_VERSION; }

std::int32_t versionNumber() {
  return 1000 * QLX_VERSION_MAJOR + 100 * QLX_VERSION_MINOR + QLX_VERSION_PATCH;
}

} // namespace qlx::platform
