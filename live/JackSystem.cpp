// SPDX-License-Identifier: ISC
#include "live/JackSystem.h"

#include <jack/jack.h>
#include <jack/midiport.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

namespace qlx::live {

namespace {

constexpr std::size_t kIn = 0;
constexpr std::size_t kOut = 2;
constexpr std::size_t kMidi = 4;

// How long connections are looked at after JACK has told of a change: it tells before they are
// seen.
constexpr std::chrono::seconds kLookTime{1};
// A connection that is missing for longer, beside some blocks, while its port is there was taken
// apart by somebody. A port that goes is cut off first, and a new connection is not seen at once.
constexpr std::chrono::milliseconds kGraceTime{200};

bool contains(const std::vector<JackSystem::Connection>& list,
              const JackSystem::Connection& wanted) {
  return std::ranges::find(list, wanted) != list.end();
}

std::vector<std::string> taken(const char** names) {
  struct Free {
    void operator()(const char** memory) const { jack_free(memory); }
  };
  const std::unique_ptr<const char*, Free> owner(names);
  std::vector<std::string> list;
  if (names != nullptr)
    for (; *names != nullptr; ++names) list.emplace_back(*names);
  return list;
}

void silent(const char* /*words*/) {}

} // namespace

std::unique_ptr<JackSystem> JackSystem::open(const std::string& name, Wishes wishes) {
  // The library says on standard error what the caller says itself.
  jack_set_error_function(silent);
  jack_set_info_function(silent);
  jack_status_t status{};
  jack_client_t* client = jack_client_open(name.c_str(), JackNoStartServer, &status);
  if (client == nullptr) return nullptr;
  return std::unique_ptr<JackSystem>(new JackSystem(client, std::move(wishes)));
}

JackSystem::JackSystem(jack_client_t* client, Wishes wishes)
    : m_client(client), m_wishes(std::move(wishes)), m_connections(m_wishes.connections),
      m_awaited(m_wishes.connections) {
  constexpr std::array kNames{"in_L", "in_R", "out_L", "out_R", "midi_in"};
  for (std::size_t i = 0; i < m_ports.size(); ++i) {
    m_ports[i] = jack_port_register(client, kNames[i],
                                    i == kMidi ? JACK_DEFAULT_MIDI_TYPE : JACK_DEFAULT_AUDIO_TYPE,
                                    i >= kOut && i < kMidi ? JackPortIsOutput : JackPortIsInput, 0);
    if (m_ports[i] != nullptr) continue;
    jack_client_close(client);
    throw std::runtime_error("the JACK server has no ports left");
  }
  jack_set_process_callback(
      client,
      [](jack_nframes_t frames, void* self) {
        return static_cast<JackSystem*>(self)->process(frames);
      },
      this);
  jack_set_xrun_callback(
      client,
      [](void* self) {
        static_cast<JackSystem*>(self)->m_lateBlocks.fetch_add(1, std::memory_order_relaxed);
        return 0;
      },
      this);
  jack_set_freewheel_callback(
      client,
      [](int on, void* self) {
        static_cast<JackSystem*>(self)->m_freewheeling.store(on != 0, std::memory_order_relaxed);
      },
      this);
  jack_set_port_connect_callback(
      client,
      [](jack_port_id_t, jack_port_id_t, int, void* self) {
        static_cast<JackSystem*>(self)->m_connectionsChanged.store(true, std::memory_order_relaxed);
      },
      this);
  jack_set_port_registration_callback(
      client,
      [](jack_port_id_t port, int isThere, void* self) {
        if (isThere != 0) static_cast<JackSystem*>(self)->noteAppeared(port);
      },
      this);
  jack_on_shutdown(
      client,
      [](void* self) {
        static_cast<JackSystem*>(self)->m_alive.store(false, std::memory_order_release);
      },
      this);
}

JackSystem::~JackSystem() {
  stop();
  jack_client_close(m_client);
}

double JackSystem::rate() const { return jack_get_sample_rate(m_client); }

int JackSystem::blockFrames() const { return static_cast<int>(jack_get_buffer_size(m_client)); }

std::string JackSystem::name() const { return jack_get_client_name(m_client); }

void JackSystem::start(BlockProcessor& processor) {
  m_processor = &processor;
  if (jack_activate(m_client) != 0)
    throw std::runtime_error("the JACK server did not start the client");
  m_active = true;
  connectAwaited();
  for (const Connection& one : m_connections) connect(one);
  std::vector<std::string> names;
  if (m_wishes.physical)
    names = taken(jack_get_ports(m_client, nullptr, nullptr, JackPortIsPhysical));
  for (const std::string& name : m_wishes.names)
    for (std::string& port : portsOf(name)) names.push_back(std::move(port));
  connect(names);
  m_wishes = {};
}

void JackSystem::stop() noexcept {
  if (m_active) jack_deactivate(m_client);
  m_active = false;
}

int JackSystem::process(jack_nframes_t frames) noexcept {
  if (m_firstFrame.load(std::memory_order_relaxed) == 0)
    m_firstFrame.store(jack_last_frame_time(m_client), std::memory_order_relaxed);
  const auto buffer = [frames](jack_port_t* port) {
    return static_cast<float*>(jack_port_get_buffer(port, frames));
  };
  void* midi = jack_port_get_buffer(m_ports[kMidi], frames);
  std::size_t count = 0;
  const jack_nframes_t events = jack_midi_get_event_count(midi);
  for (jack_nframes_t i = 0; i < events && count < m_messages.size(); ++i) {
    jack_midi_event_t event{};
    if (jack_midi_event_get(&event, midi, i) == 0 &&
        toChannelMessage({event.buffer, event.size}, static_cast<int>(event.time),
                         m_messages[count]))
      ++count;
  }
  m_processor->process({{buffer(m_ports[kIn]), buffer(m_ports[kIn + 1])},
                        {buffer(m_ports[kOut]), buffer(m_ports[kOut + 1])},
                        static_cast<int>(frames),
                        std::span(m_messages).first(count)});
  return 0;
}

void JackSystem::noteAppeared(jack_port_id_t port) {
  const jack_port_t* found = jack_port_by_id(m_client, port);
  const char* name = found == nullptr ? nullptr : jack_port_name(found);
  if (name == nullptr) return;
  const std::lock_guard lock(m_appearedMutex);
  if (m_appeared.size() < kMostAppeared) m_appeared.emplace_back(name);
}

bool JackSystem::hasAppeared(const std::string& port) {
  const std::lock_guard lock(m_appearedMutex);
  return std::ranges::find(m_appeared, port) != m_appeared.end();
}

void JackSystem::idle() {
  if (!isAlive()) return;
  std::size_t appeared = 0;
  {
    const std::lock_guard lock(m_appearedMutex);
    appeared = m_appeared.size();
  }
  connectAwaited();
  const auto now = Clock::now();
  if (m_connectionsChanged.exchange(false, std::memory_order_relaxed))
    m_lookUntil = now + kLookTime;
  if (now < m_lookUntil || !m_missing.empty()) compareConnections(now);
  if (!m_missing.empty()) return;
  // Ports that came meanwhile may belong to connections that are still to be missed.
  const std::lock_guard lock(m_appearedMutex);
  m_appeared.erase(m_appeared.begin(), m_appeared.begin() + static_cast<std::ptrdiff_t>(appeared));
}

void JackSystem::compareConnections(Clock::time_point now) {
  std::vector<Connection> standing;
  for (std::size_t i = 0; i < m_ports.size(); ++i)
    for (std::string& other : taken(jack_port_get_all_connections(m_client, m_ports[i])))
      standing.push_back({i, std::move(other)});
  if (!isAlive()) return;
  const std::vector<Missing> before = std::exchange(m_missing, {});
  const auto grace = kGraceTime + std::chrono::duration<double>(4.0 * blockFrames() / rate());
  std::vector<Connection> kept;
  for (const Connection& one : m_connections) {
    if (!contains(standing, one) && !contains(m_awaited, one)) {
      if (jack_port_by_name(m_client, one.other.c_str()) == nullptr || hasAppeared(one.other)) {
        m_awaited.push_back(one);
      } else {
        const auto known = std::ranges::find(before, one, &Missing::connection);
        const auto since = known == before.end() ? now : known->since;
        if (now - since > grace) continue;
        m_missing.push_back({one, since});
      }
    }
    kept.push_back(one);
  }
  for (const Connection& one : standing)
    if (!contains(kept, one)) kept.push_back(one);
  m_connections = std::move(kept);
}

void JackSystem::connectAwaited() {
  std::erase_if(m_awaited, [this](const Connection& one) {
    if (jack_port_by_name(m_client, one.other.c_str()) == nullptr || !connect(one)) return false;
    const std::lock_guard lock(m_appearedMutex);
    std::ranges::replace(m_appeared, one.other, std::string()); // a later cut is not due to it
    return true;
  });
}

// Fails when the other port has gone or its client has not begun, which is no fault.
bool JackSystem::connect(const Connection& one) {
  const char* own = jack_port_name(m_ports[one.port]);
  const bool isOutput = one.port >= kOut && one.port < kMidi;
  const int failure = isOutput ? jack_connect(m_client, own, one.other.c_str())
                               : jack_connect(m_client, one.other.c_str(), own);
  if (failure != 0 && failure != EEXIST) return false;
  // Also known when it is cut before the next look.
  if (!contains(m_connections, one)) m_connections.push_back(one);
  return true;
}

std::vector<std::string> JackSystem::portsOf(const std::string& name) const {
  if (jack_port_by_name(m_client, name.c_str()) != nullptr) return {name};
  std::vector<std::string> all = taken(jack_get_ports(m_client, nullptr, nullptr, 0));
  std::erase_if(all, [&name](const std::string& port) {
    return std::string_view(port).substr(0, port.find(':')) != name;
  });
  if (all.empty() && m_wishes.strict)
    throw std::runtime_error("JACK has no port or client '" + name + "'");
  return all;
}

void JackSystem::connect(const std::vector<std::string>& names) {
  std::vector<std::string> sources;
  std::vector<std::string> sinks;
  for (const std::string& name : names) {
    const jack_port_t* port = jack_port_by_name(m_client, name.c_str());
    if (port == nullptr || jack_port_is_mine(m_client, port) != 0) continue;
    const bool isOutput = (jack_port_flags(port) & JackPortIsOutput) != 0;
    if (std::string_view(jack_port_type(port)) == JACK_DEFAULT_AUDIO_TYPE)
      (isOutput ? sources : sinks).push_back(name);
    else if (isOutput)
      connect(Connection{kMidi, name});
  }
  if (sources.size() == 1) sources.push_back(sources[0]);
  for (std::size_t i = 0; i < 2; ++i) {
    if (i < sources.size()) connect(Connection{kIn + i, sources[i]});
    if (i < sinks.size()) connect(Connection{kOut + i, sinks[i]});
  }
}

} // namespace qlx::live
