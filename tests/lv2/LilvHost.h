// SPDX-License-Identifier: ISC
#pragma once

#include "lv2/ChangeRequest.h"
#include "lv2/Identity.h"
#include "lv2/Ports.h"
#include "plugin/RotaryEffect.h"
#include "presets/store/CPresetSystemEffect.h"

#include <gtest/gtest.h>
#include <lilv/lilv.h>
#include <lv2/atom/atom.h>
#include <lv2/atom/forge.h>
#include <lv2/atom/util.h>
#include <lv2/midi/midi.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace qlx::test {
using namespace lv2;

/// The bundle as a host reads it, and the numbers that it gives to names.
class World {
 public:
  World() : world(lilv_world_new()) {
    LilvNode* folder = lilv_new_file_uri(world, nullptr, BUNDLE "/");
    lilv_world_load_bundle(world, folder);
    lilv_node_free(folder);
    LilvNode* uri = lilv_new_uri(world, kPluginUri);
    plugin = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world), uri);
    lilv_node_free(uri);
  }
  ~World() { lilv_world_free(world); }
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  LV2_URID number(const std::string& uri) {
    const auto found = std::ranges::find(m_names, uri);
    if (found != m_names.end()) return static_cast<LV2_URID>(found - m_names.begin()) + 1;
    m_names.push_back(uri);
    return static_cast<LV2_URID>(m_names.size());
  }

  LilvWorld* world;
  const LilvPlugin* plugin = nullptr;
  LV2_URID_Map map{
      this, [](void* self, const char* uri) { return static_cast<World*>(self)->number(uri); }};
  LV2_URID_Unmap unmap{this, [](void* self, LV2_URID urid) {
                         return static_cast<World*>(self)->m_names[urid - 1].c_str();
                       }};

 private:
  std::vector<std::string> m_names;
};

struct Request {
  std::uint32_t port;
  float value;
  friend bool operator==(const Request&, const Request&) = default;
};

struct Midi {
  std::uint32_t frame;
  std::array<std::uint8_t, 3> bytes;
};
inline constexpr std::array<std::uint8_t, 3> kPedalDown = {0xB0, 64, 127};
inline constexpr std::array<std::uint8_t, 3> kPedalUp = {0xB0, 64, 0};

using Sound = std::array<std::vector<float>, 2>;

/// Two different noises that never rest, of a frame's number only.
inline float noise(std::size_t frame, std::size_t channel) {
  const auto x = static_cast<double>(frame + 1);
  return static_cast<float>(0.3 * std::sin(x * (0.031 + 0.017 * static_cast<double>(channel))) +
                            0.1 * std::sin(x * x * 0.0007));
}

/// One instance with its ports, switched on. `canBeAsked`: the host offers change requests.
class Instance {
 public:
  explicit Instance(World& world, bool canBeAsked = true) : m_world(world) {
    m_features = {&m_mapFeature};
    if (canBeAsked) m_features.push_back(&m_requestFeature);
    m_features.push_back(nullptr);
    lilv = lilv_plugin_instantiate(world.plugin, kRate, m_features.data());
    if (lilv == nullptr) return;
    std::array<float, kFirstControl + kNumControlPorts> defaults{};
    lilv_plugin_get_port_ranges_float(world.plugin, nullptr, nullptr, defaults.data());
    for (std::size_t i = 0; i < kNumControlPorts; ++i) {
      ports[i] = defaults[kFirstControl + i];
      lilv_instance_connect_port(lilv, kFirstControl + static_cast<std::uint32_t>(i), &ports[i]);
    }
    lilv_instance_connect_port(lilv, kEvents, m_events.data());
    lilv_instance_activate(lilv);
  }
  ~Instance() {
    if (lilv == nullptr) return;
    lilv_instance_deactivate(lilv);
    lilv_instance_free(lilv);
  }
  Instance(const Instance&) = delete;
  Instance& operator=(const Instance&) = delete;

  float& port(std::int32_t parameter) { return ports[controlOf(parameter)]; }

  /// Appends a block of sound, made in the buffers of the input, as most hosts do.
  void run(std::uint32_t frames, const std::vector<Midi>& midi = {}) {
    writeEvents(midi);
    const std::size_t from = sound[0].size();
    for (std::uint32_t c = 0; c < 2; ++c) {
      for (std::size_t k = 0; k < frames; ++k) sound[c].push_back(noise(from + k, c));
      lilv_instance_connect_port(lilv, kLeftInput + c, sound[c].data() + from);
      lilv_instance_connect_port(lilv, kLeftOutput + c, sound[c].data() + from);
    }
    lilv_instance_run(lilv, frames);
  }

  /// The instance's state and, for a preset of the host's own, its ports; freed by the caller.
  LilvState* save() {
    return lilv_state_new_from_instance(m_world.plugin, lilv, &m_world.map, nullptr, nullptr,
                                        nullptr, nullptr, getPort, this, 0, m_features.data());
  }
  void restore(const LilvState* state, bool withPorts = true) {
    lilv_state_restore(state, lilv, withPorts ? setPort : nullptr, this, 0, m_features.data());
  }

  /// The normalised values that the instance holds, out of its state.
  std::array<float, plugin::kNumHostParameters> values() {
    plugin::RotaryEffect reader(nullptr);
    const std::vector<char> bytes = chunk();
    EXPECT_EQ(reader.setChunk(bytes.data(), static_cast<std::int32_t>(bytes.size()), false), 0);
    std::array<float, plugin::kNumHostParameters> all{};
    for (std::int32_t i = 0; i < plugin::kNumHostParameters; ++i)
      all[static_cast<std::size_t>(i)] = reader.getParameter(i);
    return all;
  }
  float value(std::int32_t parameter) { return values()[static_cast<std::size_t>(parameter)]; }

  /// Restores from a state of one property.
  LV2_State_Status restore(LV2_URID key, LV2_URID type, std::vector<char> bytes) {
    struct Property {
      LV2_URID key, type;
      std::vector<char> bytes;
    } property{key, type, std::move(bytes)};
    property.bytes.reserve(1); // never a null pointer
    const auto retrieve = [](LV2_State_Handle from, std::uint32_t asked, std::size_t* size,
                             std::uint32_t* typeOf, std::uint32_t* flags) -> const void* {
      const auto& own = *static_cast<Property*>(from);
      if (asked != own.key) return nullptr;
      *size = own.bytes.size();
      *typeOf = own.type;
      *flags = 0;
      return own.bytes.data();
    };
    return stateInterface()->restore(lilv_instance_get_handle(lilv), retrieve, &property, 0,
                                     nullptr);
  }

  std::vector<char> chunk() {
    const auto store = [](LV2_State_Handle to, std::uint32_t, const void* data, std::size_t size,
                          std::uint32_t, std::uint32_t) {
      const char* bytes = static_cast<const char*>(data);
      static_cast<std::vector<char>*>(to)->assign(bytes, bytes + size);
      return LV2_STATE_SUCCESS;
    };
    std::vector<char> bytes;
    stateInterface()->save(lilv_instance_get_handle(lilv), store, &bytes, 0, m_features.data());
    return bytes;
  }

  static constexpr double kRate = 48000.0;
  LilvInstance* lilv = nullptr;
  std::array<float, kNumControlPorts> ports{};
  std::vector<Request> requests;
  ChangeStatus requestAnswer = ChangeStatus::kSuccess;
  Sound sound;

 private:
  const LV2_State_Interface* stateInterface() const {
    return static_cast<const LV2_State_Interface*>(
        lilv_instance_get_extension_data(lilv, LV2_STATE__interface));
  }
  void writeEvents(const std::vector<Midi>& midi) {
    auto* sequence = reinterpret_cast<LV2_Atom_Sequence*>(m_events.data());
    lv2_atom_sequence_clear(sequence);
    sequence->atom.type = m_world.number(LV2_ATOM__Sequence);
    sequence->body = {};
    for (const Midi& event : midi) {
      struct {
        LV2_Atom_Event head;
        std::array<std::uint8_t, 8> bytes;
      } atom{};
      atom.head.time.frames = event.frame;
      atom.head.body = {3, m_world.number(LV2_MIDI__MidiEvent)};
      std::ranges::copy(event.bytes, atom.bytes.begin());
      const auto capacity = static_cast<std::uint32_t>(sizeof m_events - sizeof *sequence);
      ASSERT_NE(lv2_atom_sequence_append_event(sequence, capacity, &atom.head), nullptr);
    }
  }

  static const void* getPort(const char* symbol, void* self, std::uint32_t* size,
                             std::uint32_t* type) {
    auto& own = *static_cast<Instance*>(self);
    *size = sizeof(float);
    *type = own.m_world.number(LV2_ATOM__Float);
    return &own.ports[own.place(symbol)];
  }
  static void setPort(const char* symbol, void* self, const void* value, std::uint32_t size,
                      std::uint32_t type) {
    auto& own = *static_cast<Instance*>(self);
    const auto read = [&]<typename T>(T number) {
      ASSERT_EQ(size, sizeof number);
      std::memcpy(&number, value, sizeof number);
      own.ports[own.place(symbol)] = static_cast<float>(number);
    };
    if (type == own.m_world.number(LV2_ATOM__Float)) return read(0.0F);
    if (type == own.m_world.number(LV2_ATOM__Double)) return read(0.0);
    if (type == own.m_world.number(LV2_ATOM__Int)) return read(std::int32_t{0});
    FAIL() << "a port value of another kind for " << symbol;
  }
  std::size_t place(const char* symbol) const {
    for (std::size_t i = 0; i < kNumControlPorts; ++i) {
      if (std::string_view(kControlPorts[i].symbol) == symbol) return i;
    }
    ADD_FAILURE() << "no port " << symbol;
    return 0;
  }

  World& m_world;
  LV2_Feature m_mapFeature{LV2_URID__map, &m_world.map};
  ChangeRequest m_request{this, [](void* self, std::uint32_t port, float value) {
                            auto& own = *static_cast<Instance*>(self);
                            own.requests.push_back({port, value});
                            return own.requestAnswer;
                          }};
  LV2_Feature m_requestFeature{kChangeRequestUri, &m_request};
  std::vector<const LV2_Feature*> m_features;
  alignas(8) std::array<std::uint8_t, 4096> m_events{};
};

} // namespace qlx::test
