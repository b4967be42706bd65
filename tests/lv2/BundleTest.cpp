// SPDX-License-Identifier: ISC
// The bundle through lilv, as hosts load it.
#include "plugin/FactoryPresets.h"
#include "tests/lv2/LilvHost.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <lv2/options/options.h>
#include <lv2/parameters/parameters.h>
#include <lv2/port-props/port-props.h>
#include <lv2/presets/presets.h>
#include <lv2/units/units.h>

#include <cstdlib>
#include <set>

namespace qlx::test {
namespace {

using plugin::PortKind;

constexpr std::int32_t kShared[] = {plugin::kBypass, plugin::kCPUmode, plugin::kLever,
                                    plugin::kSpeed,  plugin::kStop,    plugin::kMIDIchl};

class Bundle : public testing::Test {
 protected:
  Bundle() { setenv("XDG_CONFIG_HOME", m_home.path().c_str(), 1); }
  void SetUp() override { ASSERT_NE(world.plugin, nullptr); }

  bool has(const LilvPort* port, const char* property) {
    LilvNode* node = lilv_new_uri(world.world, property);
    const bool answer = lilv_port_has_property(world.plugin, port, node);
    lilv_node_free(node);
    return answer;
  }

  /// The effect under the hosts of its other interface.
  std::unique_ptr<plugin::RotaryEffect> otherHosts() {
    auto effect = std::make_unique<plugin::RotaryEffect>(nullptr);
    effect->setSampleRate(static_cast<float>(Instance::kRate));
    effect->resume();
    return effect;
  }
  static void play(plugin::RotaryEffect& effect, Sound& sound, std::uint32_t frames) {
    const std::size_t from = sound[0].size();
    Sound input;
    for (std::size_t c = 0; c < 2; ++c) {
      for (std::size_t k = 0; k < frames; ++k) input[c].push_back(noise(from + k, c));
      sound[c].resize(from + frames);
    }
    float* in[] = {input[0].data(), input[1].data()};
    float* out[] = {sound[0].data() + from, sound[1].data() + from};
    effect.processReplacing(in, out, static_cast<std::int32_t>(frames));
  }
  static void send(plugin::RotaryEffect& effect, const std::array<std::uint8_t, 3>& bytes) {
    sdk::MidiEvent event{};
    event.type = sdk::kMidiEventType;
    std::memcpy(event.midiData, bytes.data(), bytes.size());
    sdk::EventList list{1, 0, {reinterpret_cast<sdk::Event*>(&event), nullptr}};
    effect.processEvents(&list);
  }
  static Request asked(std::int32_t parameter, float value) {
    return {kFirstControl + static_cast<std::uint32_t>(controlOf(parameter)), value};
  }

  World world;

 private:
  TemporaryFolder m_home;
};

TEST_F(Bundle, DescribesEveryParameterOnce) {
  ASSERT_EQ(lilv_plugin_get_num_ports(world.plugin), kFirstControl + kNumControlPorts);
  EXPECT_EQ(kNumControlPorts, 32U);
  EXPECT_TRUE(lilv_plugin_verify(world.plugin));
  std::array<float, kFirstControl + kNumControlPorts> low{};
  std::array<float, kFirstControl + kNumControlPorts> high{};
  std::array<float, kFirstControl + kNumControlPorts> start{};
  lilv_plugin_get_port_ranges_float(world.plugin, low.data(), high.data(), start.data());
  const auto first = plugin::factoryPresets().front().values;
  std::set<std::string> symbols;
  for (std::uint32_t i = kFirstControl; i < kFirstControl + kNumControlPorts; ++i) {
    const ControlPort& own = kControlPorts[i - kFirstControl];
    const plugin::PortScale& scale = scaleOf(own);
    const LilvPort* port = lilv_plugin_get_port_by_index(world.plugin, i);
    symbols.insert(lilv_node_as_string(lilv_port_get_symbol(world.plugin, port)));
    LilvNode* name = lilv_port_get_name(world.plugin, port);
    EXPECT_STREQ(lilv_node_as_string(name), own.name);
    lilv_node_free(name);
    EXPECT_EQ(low[i], scale.minimum()) << own.symbol;
    EXPECT_EQ(high[i], scale.maximum()) << own.symbol;
    EXPECT_EQ(start[i], scale.toPort(first[static_cast<std::size_t>(own.parameter)])) << own.symbol;
    EXPECT_EQ(has(port, LV2_PORT_PROPS__logarithmic), scale.kind == PortKind::kLogarithmic);
    EXPECT_EQ(has(port, LV2_CORE__toggled), scale.kind == PortKind::kToggled);
    EXPECT_EQ(has(port, LV2_CORE__enumeration), scale.kind == PortKind::kChoice);
    EXPECT_TRUE(scale.kind != PortKind::kLogarithmic || low[i] > 0.0F) << own.symbol;
    LilvScalePoints* points = lilv_port_get_scale_points(world.plugin, port);
    const auto named = static_cast<float>(lilv_scale_points_size(points));
    EXPECT_TRUE(scale.kind != PortKind::kChoice || named == high[i] - low[i] + 1.0F) << own.symbol;
    lilv_scale_points_free(points);
  }
  EXPECT_EQ(symbols.size(), kNumControlPorts);
}

TEST_F(Bundle, NeedsItsHostToMapNames) {
  EXPECT_EQ(lilv_plugin_instantiate(world.plugin, 48000.0, nullptr), nullptr);
}

TEST_F(Bundle, SoundsAsUnderOtherHostsInBlocksOfEverySize) {
  const std::uint32_t blocks[] = {1, 2, 3, 7, 64, 511, 512, 8192, 0, 1, 1024, 33, 4096};
  for (const std::size_t preset : {2U, 6U, 13U}) {
    Instance instance(world);
    const auto effect = otherHosts();
    const auto values = plugin::factoryPresets()[preset].values;
    for (const ControlPort& port : kControlPorts) {
      const float value = values[static_cast<std::size_t>(port.parameter)];
      instance.port(port.parameter) = scaleOf(port).toPort(value);
      effect->setParameter(port.parameter, value);
    }
    Sound expected;
    for (const std::uint32_t frames : blocks) {
      const float lever = frames % 2 == 0 ? 1.0F : 0.25F;
      instance.port(plugin::kLever) = 100.0F * lever;
      effect->setParameter(plugin::kLever, lever);
      instance.run(frames);
      if (frames > 0) play(*effect, expected, frames);
    }
    EXPECT_EQ(instance.sound, expected) << preset;
  }
}

TEST_F(Bundle, MidiMovesTheLeverOnItsSample) {
  constexpr std::array<std::uint8_t, 3> kNote = {0x90, 60, 100};
  Instance instance(world);
  const auto effect = otherHosts();
  Sound expected;
  instance.run(512, {{100, kNote}, {200, kPedalDown}, {201, kPedalUp}, {201, kPedalDown}});
  play(*effect, expected, 200);
  send(*effect, kPedalDown);
  play(*effect, expected, 1);
  send(*effect, kPedalUp);
  send(*effect, kPedalDown);
  play(*effect, expected, 311);
  for (int i = 0; i < 40; ++i) {
    instance.run(512);
    play(*effect, expected, 512);
  }
  EXPECT_EQ(instance.sound, expected);
  EXPECT_THAT(instance.requests, testing::ElementsAre(asked(plugin::kLever, 100.0F)));
}

TEST_F(Bundle, ManyInstancesDoNotDisturbEachOther) {
  std::vector<std::unique_ptr<Instance>> instances;
  for (int i = 0; i < 64; ++i) {
    instances.push_back(std::make_unique<Instance>(world));
    instances.back()->port(plugin::kLever) = i % 2 == 0 ? 100.0F : 0.0F;
  }
  for (int block = 0; block < 4; ++block) {
    for (const auto& instance : instances) instance->run(1024);
  }
  EXPECT_NE(instances[0]->sound, instances[1]->sound);
  for (std::size_t i = 2; i < instances.size(); ++i)
    EXPECT_EQ(instances[i]->sound, instances[i % 2]->sound) << i;
}

TEST_F(Bundle, StateComesBackWithItsPorts) {
  Instance saved(world);
  saved.port(plugin::kHSlowSpd) = 1.234F;
  saved.port(plugin::kMech) = plugin::kSilenceDb;
  saved.port(plugin::kBypass) = 0.0F;
  saved.port(plugin::kStop) = 1.0F;
  saved.run(256);
  saved.run(256, {{0, kPedalDown}}); // the ports of lever and Stop stay where they were
  LilvState* state = saved.save();
  EXPECT_EQ(lilv_state_get_num_properties(state), 1U);
  char* text = lilv_state_to_string(world.world, &world.map, &world.unmap, state,
                                    "https://meridane.example/saved", nullptr);
  LilvState* read = lilv_state_new_from_string(world.world, &world.map, text);
  EXPECT_EQ(std::string(text).find("file:"), std::string::npos);

  Instance restored(world);
  restored.restore(read);
  EXPECT_EQ(saved.chunk().size(), 42289U);
  EXPECT_EQ(restored.chunk(), saved.chunk());
  // The text has eight places.
  for (std::size_t i = 0; i < kNumControlPorts; ++i)
    EXPECT_NEAR(restored.ports[i], saved.ports[i], 1e-8F) << kControlPorts[i].symbol;
  restored.run(256);
  EXPECT_EQ(restored.chunk(), saved.chunk());
  EXPECT_EQ(restored.value(plugin::kLever), 1.0F);
  EXPECT_EQ(restored.value(plugin::kStop), 0.0F);
  EXPECT_THAT(restored.requests,
              testing::IsSupersetOf({asked(plugin::kLever, 100.0F), asked(plugin::kStop, 0.0F)}));
  lilv_free(text);
  lilv_state_free(read);
  lilv_state_free(state);
}

TEST_F(Bundle, FactoryPresetsBringTheirSoundsAndLeaveTheRest) {
  const auto bank = plugin::factoryPresets();
  LilvNode* kind = lilv_new_uri(world.world, LV2_PRESETS__Preset);
  LilvNodes* presets = lilv_plugin_get_related(world.plugin, kind);
  std::set<std::string> names;
  LILV_FOREACH(nodes, i, presets) {
    const LilvNode* node = lilv_nodes_get(presets, i);
    lilv_world_load_resource(world.world, node);
    LilvState* state = lilv_state_new_from_world(world.world, &world.map, node);
    ASSERT_NE(state, nullptr);
    const std::string name = lilv_state_get_label(state);
    names.insert(name);
    const auto slot = std::ranges::find(bank, name, &presets::PresetSlot::nameText);
    ASSERT_NE(slot, bank.end()) << name;
    for (const bool withPorts : {true, false}) {
      Instance instance(world);
      instance.port(plugin::kLever) = 40.0F;
      instance.run(64);
      instance.port(plugin::kDrive) = 3.0F; // the first slot is not its own any more
      instance.run(64);
      instance.restore(state, withPorts);
      instance.run(64);
      instance.run(64);
      const auto held = instance.values();
      for (const ControlPort& port : kControlPorts) {
        const bool isShared = std::ranges::find(kShared, port.parameter) != std::end(kShared);
        if (isShared) continue;
        const float wanted = slot->values[static_cast<std::size_t>(port.parameter)];
        const float at = scaleOf(port).toPort(wanted);
        EXPECT_EQ(held[static_cast<std::size_t>(port.parameter)], wanted) << name << port.symbol;
        const bool told = std::ranges::count(instance.requests, asked(port.parameter, at)) == 1;
        EXPECT_TRUE(told || instance.port(port.parameter) == at) << name << ' ' << port.symbol;
      }
      EXPECT_EQ(held[plugin::kLever], 0.4F) << name;
      EXPECT_TRUE(!withPorts || instance.requests.empty()) << name;
    }
    lilv_state_free(state);
  }
  EXPECT_EQ(names.size(), 17U);
  lilv_nodes_free(presets);
  lilv_node_free(kind);
}

TEST_F(Bundle, ForeignStateChangesNothing) {
  Instance instance(world);
  const std::vector<char> before = instance.chunk();
  struct Offer {
    LV2_URID key, type;
    std::vector<char> bytes;
  };
  const LV2_URID chunk = world.number(kChunkUri);
  const LV2_URID preset = world.number(kFactoryPresetUri);
  const LV2_URID bytes = world.number(LV2_ATOM__Chunk);
  const LV2_URID whole = world.number(LV2_ATOM__Int);
  const Offer offers[] = {{0, 0, {}},
                          {chunk, whole, before},
                          {chunk, bytes, {}},
                          {chunk, bytes, std::vector<char>(42289, 'x')},
                          {chunk, bytes, {before.begin(), before.begin() + 7}},
                          {preset, whole, {'\xFF', '\xFF', '\xFF', '\xFF'}},
                          {preset, whole, {99, 0, 0, 0}},
                          {preset, whole, {1}},
                          {preset, bytes, {1, 0, 0, 0}}};
  for (const Offer& offer : offers) {
    EXPECT_NE(instance.restore(offer.key, offer.type, offer.bytes), LV2_STATE_SUCCESS);
    EXPECT_EQ(instance.chunk(), before);
  }
}

TEST_F(Bundle, LeverReleasesStopAtTheHost) {
  Instance instance(world);
  instance.port(plugin::kStop) = 1.0F;
  instance.run(64);
  EXPECT_EQ(instance.value(plugin::kStop), 1.0F);
  EXPECT_TRUE(instance.requests.empty());
  instance.port(plugin::kLever) = 100.0F;
  instance.run(64);
  EXPECT_EQ(instance.value(plugin::kStop), 0.0F);
  EXPECT_THAT(instance.requests, testing::ElementsAre(asked(plugin::kStop, 0.0F)));
}

TEST_F(Bundle, HostThatMovesBothGetsBoth) {
  Instance instance(world);
  instance.port(plugin::kStop) = 1.0F;
  instance.port(plugin::kLever) = 100.0F;
  instance.run(64);
  EXPECT_EQ(instance.value(plugin::kStop), 1.0F);
  EXPECT_EQ(instance.value(plugin::kLever), 1.0F);
}

TEST_F(Bundle, WithoutAnAnswerTheOwnValueHoldsUntilThePortMoves) {
  for (const bool canBeAsked : {false, true}) {
    Instance instance(world, canBeAsked);
    instance.requestAnswer = ChangeStatus::kUnknown;
    instance.run(64, {{10, kPedalDown}});
    for (int i = 0; i < 500; ++i) instance.run(512);
    EXPECT_EQ(instance.requests.size(), canBeAsked ? 1U : 0U);
    EXPECT_EQ(instance.value(plugin::kLever), 1.0F);
    instance.port(plugin::kLever) = 75.0F;
    instance.run(64);
    EXPECT_EQ(instance.value(plugin::kLever), 0.75F);
  }
}

TEST_F(Bundle, LateEchoesOfRequestsDoNotTurnTheLeverBack) {
  constexpr std::array<std::uint8_t, 3> kWheel = {0xB0, 1, 32};
  Instance instance(world);
  instance.run(64, {{0, kWheel}});
  ASSERT_EQ(instance.requests.size(), 1U);
  instance.run(64, {{0, kPedalDown}});
  instance.port(plugin::kLever) = instance.requests[0].value; // late
  instance.run(64);
  EXPECT_EQ(instance.value(plugin::kLever), 1.0F);
  instance.port(plugin::kLever) = instance.requests[1].value;
  instance.run(64);
  EXPECT_EQ(instance.value(plugin::kLever), 1.0F);
  instance.port(plugin::kLever) = 10.0F; // the host's own
  instance.run(64);
  EXPECT_EQ(instance.value(plugin::kLever), 0.1F);
  // A host that answers with something else is right in the end.
  instance.run(64, {{0, kPedalDown}});
  instance.port(plugin::kLever) = 20.0F;
  for (int i = 0; i < 60; ++i) instance.run(512);
  EXPECT_EQ(instance.value(plugin::kLever), 0.2F);
}

TEST_F(Bundle, OddPortsDoNoHarm) {
  Instance instance(world);
  instance.port(plugin::kDrive) = NAN;
  instance.port(plugin::kMech) = INFINITY;
  instance.port(plugin::kSetup) = -1e30F;
  instance.port(plugin::kHHPF) = 0.0F;
  instance.run(64);
  EXPECT_EQ(instance.value(plugin::kDrive), 0.5F);
  EXPECT_EQ(instance.value(plugin::kMech), 1.0F);
  EXPECT_EQ(instance.value(plugin::kSetup), 0.0F);
  EXPECT_EQ(instance.value(plugin::kHHPF), 0.0F);
  for (const float sample : instance.sound[0]) EXPECT_TRUE(std::isfinite(sample));
  for (std::uint32_t port = kLeftInput; port <= kEvents; ++port)
    lilv_instance_connect_port(instance.lilv, port, nullptr);
  lilv_instance_run(instance.lilv, 64);
}

TEST_F(Bundle, RateFollowsItsOption) {
  Instance instance(world);
  const auto* options = static_cast<const LV2_Options_Interface*>(
      lilv_instance_get_extension_data(instance.lilv, LV2_OPTIONS__interface));
  const float rate = 96000.0F;
  const LV2_URID key = world.number(LV2_PARAMETERS__sampleRate);
  const LV2_Options_Option news[] = {
      {LV2_OPTIONS_INSTANCE, 0, key, sizeof rate, world.number(LV2_ATOM__Float), &rate},
      {LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr}};
  const LV2_Handle handle = lilv_instance_get_handle(instance.lilv);
  EXPECT_EQ(options->set(handle, news), LV2_OPTIONS_SUCCESS);
  LV2_Options_Option question[] = {{LV2_OPTIONS_INSTANCE, 0, key, 0, 0, nullptr},
                                   {LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr}};
  EXPECT_EQ(options->get(handle, question), LV2_OPTIONS_SUCCESS);
  EXPECT_EQ(*static_cast<const float*>(question[0].value), rate);
  const auto effect = otherHosts();
  effect->setSampleRate(rate);
  Sound expected;
  instance.run(4096);
  play(*effect, expected, 4096);
  EXPECT_EQ(instance.sound, expected);
}

} // namespace
} // namespace qlx::test
