// SPDX-License-Identifier: ISC
#pragma once

#include "sdk/VstTypes.h"

#include <array>
#include <cstdint>

namespace qlx::sdk {

/// Index of the vendor's own request to the host (HostOpcode::VendorSpecific) for what the host has
/// to say in the menu that a right click opens in the editor; ptr is an EditorMenu. On the editor's
/// thread.
inline constexpr std::int32_t kEditorMenuRequest = fourCharacters("EdMe");

struct EditorMenu {
  /// All but Idle: the answer is 1 when the host has filled in items for a menu to be shown now.
  enum Event : std::int32_t {
    kOpening, ///< a right click
    kChosen,  ///< the item `chosen` of the menu, which has closed
    kIdle,    ///< some 20 to 60 times a second; the answer is 1 while the menu is to stay
    kClosed,  ///< by the user or otherwise; before kChosen, too. Nothing is shown for the answer
  };
  static constexpr std::int32_t kMostItems = 4;
  static constexpr std::size_t kTitleBytes = 64;

  std::int32_t byteSize;  ///< of this
  Event event;            ///< what has happened
  std::int32_t parameter; ///< of the control under the pointer at the right click; -1: none
  std::int32_t chosen;    ///< from 0
  std::int32_t itemCount; ///< 0 to kMostItems, the host's
  /// The host's: UTF-8, terminated.
  std::array<std::array<char, kTitleBytes>, kMostItems> titles;
};

} // namespace qlx::sdk
