// SPDX-License-Identifier: ISC
#pragma once

#include "platform/WindowEvent.h"

#include <cstdint>
#include <string_view>

namespace qlx::gui {

using platform::VirtualKey;

/// One key press or release.
struct CKeyCode {
  VirtualKey virtualKey = VirtualKey::kNone;
  char32_t character = 0;      ///< 0 when the key has none
  std::uint32_t modifiers = 0; ///< platform::Modifier bits
  std::string_view text;       ///< what the key types (UTF-8), valid during the call only
};

} // namespace qlx::gui
