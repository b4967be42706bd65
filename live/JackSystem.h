// SPDX-License-Identifier: ISC
#pragma once

#include "live/AudioSystem.h"

#include <jack/types.h>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace qlx::live {

/// A client of a JACK server with ports in_L, in_R, out_L, out_R and midi_in.
class JackSystem final : public AudioSystem {
 public:
  struct Connection {
    std::size_t port; ///< 0 in_L, 1 in_R, 2 out_L, 3 out_R, 4 midi_in
    std::string other;
    friend bool operator==(const Connection&, const Connection&) = default;
  };
  /// What `start` connects.
  struct Wishes {
    bool physical = false; ///< the machine's captures, playbacks and MIDI
    /// Ports, or clients with all their ports. Audio goes in the order given, left then right; one
    /// source alone feeds both inputs.
    std::vector<std::string> names;
    std::vector<Connection> connections; ///< each as soon as there is such a port
    bool strict = true;                  ///< a name that is not there is an error
  };

  /// Null when no server runs; none is started. The server may change `name` to be unique. Throws
  /// std::runtime_error.
  static std::unique_ptr<JackSystem> open(const std::string& name, Wishes wishes);
  ~JackSystem() override;
  JackSystem(const JackSystem&) = delete;
  JackSystem& operator=(const JackSystem&) = delete;

  double rate() const override;
  int blockFrames() const override;
  void start(BlockProcessor& processor) override;
  void stop() noexcept override;
  int lateBlocks() const override { return m_lateBlocks.load(std::memory_order_relaxed); }
  bool isAlive() const override { return m_alive.load(std::memory_order_acquire); }
  bool isFreewheeling() const override { return m_freewheeling.load(std::memory_order_relaxed); }
  /// Keeps `connections` up to date, and connects again to ports that had gone, as those of an
  /// unplugged device.
  void idle() override;

  std::string name() const;
  /// What stands connected or is still to be, also after the server has gone.
  const std::vector<Connection>& connections() const { return m_connections; }
  /// Frame of the server's clock at the first block; 0 before it.
  unsigned firstFrame() const { return m_firstFrame.load(std::memory_order_relaxed); }

 private:
  using Clock = std::chrono::steady_clock;
  struct Missing {
    Connection connection;
    Clock::time_point since;
  };

  JackSystem(jack_client_t* client, Wishes wishes);
  int process(jack_nframes_t frames) noexcept;
  std::vector<std::string> portsOf(const std::string& name) const;
  void connect(const std::vector<std::string>& names);
  bool connect(const Connection& one);
  void connectAwaited();
  void compareConnections(Clock::time_point now);
  void noteAppeared(jack_port_id_t port); ///< on JACK's thread of notices
  bool hasAppeared(const std::string& port);

  jack_client_t* m_client;
  Wishes m_wishes;
  std::array<jack_port_t*, 5> m_ports{};
  BlockProcessor* m_processor = nullptr;
  bool m_active = false;
  std::vector<Connection> m_connections;
  std::vector<Connection> m_awaited; ///< their ports are not there
  std::vector<Missing> m_missing;    ///< by whose doing is still to be seen
  Clock::time_point m_lookUntil{};
  static constexpr std::size_t kMostAppeared = 1024;
  std::mutex m_appearedMutex;
  std::vector<std::string> m_appeared; ///< ports, as long as the cut of a connection may be theirs
  std::atomic<bool> m_connectionsChanged{true};
  std::atomic<bool> m_alive{true};
  std::atomic<bool> m_freewheeling{false};
  std::atomic<int> m_lateBlocks{0};
  std::atomic<unsigned> m_firstFrame{0};
  std::array<MidiMessage, kMostMessages> m_messages{}; ///< the audio thread's
};

} // namespace qlx::live
