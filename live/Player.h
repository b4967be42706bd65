// SPDX-License-Identifier: ISC
#pragma once

#include "live/AudioSystem.h"
#include "live/EffectPlayer.h"
#include "live/MidiMap.h"
#include "sdk/VstTypes.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace qlx::live {

/// The longest block that the effect is told of, in frames; the longest of common audio systems.
inline constexpr int kLongestBlock = 8192;

/// What the player asks of the host that holds the effect. Control thread.
class EffectHost {
 public:
  virtual ~EffectHost() = default;
  virtual sdk::EffectRecord& record() = 0;
  /// Switches the effect on with two channels each way, off first where it is on.
  virtual void start(double rate, int longestBlock) = 0;
  virtual void stop() = 0;
  virtual int presetCount() = 0;
  virtual void selectPreset(int number) = 0; ///< from 0
};

/// The stand-alone player's control thread: joins the effect with an audio system, follows program
/// changes and learned controllers, and finds the audio system again when it has gone.
class Player {
 public:
  struct Events {
    /// A new audio system, or null while there is none.
    std::function<std::unique_ptr<AudioSystem>()> open;
    /// The system has ended and is about to be closed; only then another one is opened.
    std::function<void(const AudioSystem&)> ended = [](const AudioSystem&) {};
    std::function<void(const std::string& words)> say = [](const std::string&) {};
    std::function<void()> mapChanged = [] {};
    std::function<void(int parameter, Controller)> learned = [](int, Controller) {};
  };

  /// The host outlives this. `events.open` is called at once: throws std::runtime_error when it
  /// gives none.
  Player(EffectHost& host, MidiMap map, Events events);
  ~Player();
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  /// Some 20 to 60 times a second. Whatever happens to the audio system is said and waited out.
  void idle();

  EffectPlayer& effect() { return m_player; }
  const AudioSystem* system() const { return m_system.get(); } ///< null while it is gone
  const MidiMap& map() const { return m_map; }
  void learn(int parameter) { m_player.learn(parameter); }
  void forget(int parameter);
  int lateBlocks() const; ///< of all audio systems so far

 private:
  void start();
  void reopen();
  void dropSystem();
  void follow(const Notice& notice);

  EffectHost& m_host;
  EffectPlayer m_player;
  MidiMap m_map;
  Events m_events;
  std::unique_ptr<AudioSystem> m_system;
  double m_rate = 0.0; ///< that the effect runs at
  int m_lateBefore = 0;
  std::chrono::steady_clock::time_point m_nextTry;
  std::string m_trouble; ///< said last while waiting
};

} // namespace qlx::live
