// SPDX-License-Identifier: ISC
#pragma once

#include "live/MidiMap.h"
#include "live/Player.h"
#include "sdk/EditorMenu.h"

#include <string_view>

namespace qlx::live {

/// The player's part of the menu that a right click opens in the editor: Learn and Forget for the
/// control under the pointer, then a sign while a controller is awaited. The sign goes when one has
/// moved; when the user closes it, none is awaited any more. Control thread.
class LearnMenu {
 public:
  /// The player outlives this.
  LearnMenu(Player& player, MidiMap::Name name);

  /// See sdk::EditorMenu.
  bool answer(sdk::EditorMenu& menu);

 private:
  bool open(sdk::EditorMenu& menu) const;
  bool choose(sdk::EditorMenu& menu);

  Player& m_player;
  MidiMap::Name m_name;
  bool m_signShown = false; ///< instead of the items
};

} // namespace qlx::live
