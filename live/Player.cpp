// SPDX-License-Identifier: ISC
#include "live/Player.h"

#include <stdexcept>
#include <utility>

namespace qlx::live {

namespace {

// Between two looks for an audio system that has gone.
constexpr std::chrono::milliseconds kRetryTime{500};

} // namespace

Player::Player(EffectHost& host, MidiMap map, Events events)
    : m_host(host), m_player(host.record(), kLongestBlock), m_map(std::move(map)),
      m_events(std::move(events)) {
  m_map.apply(m_player);
  m_system = m_events.open();
  if (!m_system) throw std::runtime_error("there is no audio system to play with");
  start();
}

Player::~Player() {
  if (m_system) m_system->stop();
  m_host.stop();
}

void Player::start() {
  m_rate = m_system->rate();
  m_host.start(m_rate, kLongestBlock);
  m_player.setRate(m_rate);
  m_system->start(m_player);
}

int Player::lateBlocks() const { return m_lateBefore + (m_system ? m_system->lateBlocks() : 0); }

void Player::forget(int parameter) {
  m_map.forget(parameter);
  m_map.apply(m_player);
  m_events.mapChanged();
}

void Player::follow(const Notice& notice) {
  if (notice.kind == Notice::Kind::Learned) {
    m_map.assign(notice.controller, notice.value);
    m_map.apply(m_player);
    m_events.mapChanged();
    m_events.learned(notice.value, notice.controller);
  } else if (notice.value < m_host.presetCount()) {
    m_host.selectPreset(notice.value);
  }
}

void Player::reopen() {
  m_nextTry = std::chrono::steady_clock::now() + kRetryTime;
  try {
    m_system = m_events.open();
    if (!m_system) return;
    start();
    m_trouble.clear();
    m_events.say("the audio system is back");
  } catch (const std::runtime_error& error) {
    if (m_system) dropSystem();
    if (m_trouble != error.what()) m_events.say(m_trouble = error.what());
  }
}

void Player::dropSystem() {
  m_lateBefore += m_system->lateBlocks();
  m_events.ended(*m_system);
  m_system.reset();
  m_nextTry = std::chrono::steady_clock::now() + kRetryTime;
}

void Player::idle() {
  // Of several program changes at once only the last is heard.
  std::optional<Notice> program;
  while (const auto notice = m_player.notice()) {
    if (notice->kind == Notice::Kind::Program)
      program = notice;
    else
      follow(*notice);
  }
  if (program) follow(*program);
  if (m_system && !m_system->isAlive()) {
    dropSystem();
    m_events.say("the audio system has ended; waiting for it to come back");
  }
  if (!m_system) {
    if (std::chrono::steady_clock::now() < m_nextTry) return;
    reopen();
    if (!m_system) return;
  }
  m_system->idle();
  if (m_system->rate() == m_rate) return;
  try {
    m_system->stop();
    start();
    m_events.say("the rate is " + std::to_string(static_cast<int>(m_rate)) + " Hz now");
  } catch (const std::runtime_error& error) {
    dropSystem();
    m_events.say(error.what());
  }
}

} // namespace qlx::live
