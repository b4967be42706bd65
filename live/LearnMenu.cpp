// SPDX-License-Identifier: ISC
#include "live/LearnMenu.h"

#include <algorithm>
#include <string>
#include <utility>

namespace qlx::live {

namespace {

constexpr std::int32_t kLearn = 0;
constexpr std::int32_t kForget = 1;

void add(sdk::EditorMenu& menu, std::string_view words) {
  auto& title = menu.titles[static_cast<std::size_t>(menu.itemCount++)];
  title.fill('\0');
  std::copy_n(words.begin(), std::min(words.size(), title.size() - 1), title.begin());
}

} // namespace

LearnMenu::LearnMenu(Player& player, MidiMap::Name name)
    : m_player(player), m_name(std::move(name)) {}

bool LearnMenu::answer(sdk::EditorMenu& menu) {
  using Menu = sdk::EditorMenu;
  switch (menu.event) {
  case Menu::kOpening: m_signShown = false; return open(menu);
  case Menu::kChosen: return choose(menu);
  case Menu::kIdle:
    return !m_signShown || m_player.effect().learning() != EffectPlayer::kNoParameter;
  case Menu::kClosed:
    if (m_signShown) m_player.learn(EffectPlayer::kNoParameter);
    return false;
  }
  return false;
}

bool LearnMenu::open(sdk::EditorMenu& menu) const {
  menu.itemCount = 0;
  if (menu.parameter < 0) return false;
  add(menu, "Learn: " + m_name(menu.parameter));
  if (const auto controller = m_player.map().controllerOf(menu.parameter))
    add(menu, "Forget controller " + std::to_string(controller->number) + " of channel " +
                  std::to_string(controller->channel));
  return true;
}

bool LearnMenu::choose(sdk::EditorMenu& menu) {
  menu.itemCount = 0;
  if (std::exchange(m_signShown, false) || menu.parameter < 0) return false;
  if (menu.chosen == kForget) m_player.forget(menu.parameter);
  if (menu.chosen != kLearn) return false;
  m_player.learn(menu.parameter);
  m_signShown = true;
  add(menu, "Move a MIDI controller for " + m_name(menu.parameter));
  return true;
}

} // namespace qlx::live
