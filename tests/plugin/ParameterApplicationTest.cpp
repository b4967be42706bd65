// SPDX-License-Identifier: ISC
#include "resources/NoiseRecordings.h"
#include "tests/plugin/EffectFixture.h"
#include "tests/plugin/RecordingEngine.h"

#include <cmath>
#include <gmock/gmock.h>
#include <limits>

namespace qlx::test {
namespace {

using namespace engine;
using S = Setting;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ParameterApplicationTest : public EffectFixture {
 protected:
  ParameterApplicationTest() { engineLog().clear(); }
  EngineLog& log() { return engineLog(); }
};

struct Told {
  std::int32_t index;
  std::vector<EngineCall> sets;
  std::uint32_t requested;
};

// clang-format off
/// What the engine is told when each parameter is moved to 0.3 on a fresh effect, worked out by hand from the laws.
const std::vector<Told> kAtThreeTenths = {
    {0, {{S::Bypass, 0}}, 0},
    {3, {}, 0},
    {5, {{S::HornNoiseLevel, 0.233749002}, {S::DrumNoiseLevel, 4.33145129}}, 0},
    {6, {{S::BottomGainDb, -4.79999971}}, 0},
    {7, {{S::LoMidGainDb, -4.79999971}}, 0},
    {8, {{S::PresenceGainDb, -4.79999971}}, 0},
    {9, {{S::TopGainDb, -4.79999971}}, 0},
    {11, {{S::InputGain, 0.330963241}}, 0},
    {12, {{S::AmplifierType, 1}}, 0},
    {13, {{S::DriveGain, 0.398107192}}, 0},
    {15, {{S::ColorMidGainDb, 0.600000143}, {S::ColorLowGainDb, -3.60000014}}, 0},
    {16, {{S::RoomReturnGain, 0.014783585}, {S::NoiseSendGain, 0.0489456579}}, 0},
    {17, {{S::HornSlowSpeedHz, 3}}, 0},
    {18, {{S::HornFastSpeedHz, 3}}, 0},
    {19, {{S::HornAccelSeconds, 0.398107201}}, 0},
    {20, {{S::HornDecelSeconds, 0.398107201}}, 0},
    {22, {{S::HornHighPassHz, 94.8994984}}, 0},
    {23, {{S::HornGain, 0.467498004}}, 0},
    {24, {{S::DrumSlowSpeedHz, 3}}, 0},
    {25, {{S::DrumFastSpeedHz, 3}}, 0},
    {26, {{S::DrumAccelSeconds, 0.398107201}}, 0},
    {27, {{S::DrumDecelSeconds, 0.398107201}}, 0},
    {28, {{S::DrumMicDistance, 0.74000001}}, kPendingDrum | kPendingReducedDrum | kPendingReducedHorn | kPendingCrossDelays},
    {29, {{S::DrumLowPassHz, 796.214417}}, 0},
    {30, {{S::DrumGain, 0.467498004}}, 0},
    {31, {}, 0},
    {32, {}, 0},
    {33, {}, 0},
    {34, {}, 0},
    {35, {}, 0},
    {36, {}, 0},
    {37, {{S::HornFeedGain, 29.9198723}}, 0},
    {38, {{S::HornMic1Angle, -0.199999988}}, kPendingHornMic1 | kPendingReducedDrum | kPendingReducedHorn | kPendingCrossDelays},
    {39, {{S::HornMic1Pan, 0.300000012}}, 0},
    {40, {{S::HornMic2Angle, -0.199999988}}, kPendingHornMic2 | kPendingReducedDrum | kPendingReducedHorn | kPendingCrossDelays},
    {41, {{S::HornMic2Distance, 0.920000005}}, kPendingHornMic1 | kPendingHornMic2 | kPendingReducedDrum | kPendingReducedHorn | kPendingCrossDelays},
    {42, {{S::HornMic2Pan, 0.300000012}}, 0},
    {43, {{S::HornMic2Gain, 0.467498004}}, 0},
    {44, {{S::HornFmRadius, 0.156397745}}, kPendingCrossDelays},
    {45, {{S::HornAttenuationExponent, 0.600000024}}, kPendingHornMic1 | kPendingHornMic2 | kPendingReducedHorn | kPendingCrossDelays},
    {46, {{S::HornRayGain1, 0.300000012}}, 0},
    {47, {{S::HornRayGain2, 0.300000012}}, 0},
    {48, {{S::HornRayGain3, 0.300000012}}, 0},
    {49, {{S::HornRayGain4, 0.300000012}}, 0},
    {50, {{S::HornRayGain5, 0.300000012}}, 0},
    {51, {{S::HornRayGain6, 0.300000012}}, 0},
    {52, {{S::HornRayGain7, 0.300000012}}, 0},
    {53, {}, 0},
    {54, {}, 0},
    {55, {{S::HornReflectionCoeff, 0.117393106}}, 0},
    {56, {{S::HornZAxisGain, 0.300000012}}, 0},
    {57, {}, 0},
    {58, {{S::HornFlip, 1}}, kPendingHornMic1 | kPendingHornMic2 | kPendingReducedHorn | kPendingCrossDelays},
    {59, {}, 0},
    {60, {{S::HornReflectionLpfOctaves, 0.600000024}}, 0},
    {61, {{S::DrumFeedGain, 0.467498004}}, 0},
    {62, {{S::DrumMicAngle, -0.199999988}}, kPendingDrum | kPendingReducedDrum | kPendingReducedHorn | kPendingCrossDelays},
    {63, {{S::DrumMicPan, 0.300000012}}, 0},
    {64, {}, 0},
    {65, {}, 0},
    {66, {}, 0},
    {67, {}, 0},
    {68, {{S::DrumFmRadius, 0.156397745}}, kPendingCrossDelays},
    {69, {{S::DrumAttenuationExponent, 0.600000024}}, kPendingDrum | kPendingReducedDrum | kPendingCrossDelays},
    {70, {{S::DrumReflectionCoeff, 0.117393106}}, 0},
    {71, {}, 0},
    {72, {{S::HornOpenBackMode, 0}}, kPendingHornMic1 | kPendingHornMic2 | kPendingReducedHorn},
    {73, {}, 0},
    {74, {{S::PostDriveGain, 0.467498004}}, 0},
    {75, {{S::PortToHornGain, 0.467498004}}, 0},
    {76, {{S::PortToDrumGain, 0.467498004}}, 0},
    {77, {{S::DrumToHornGain, 0.467498004}}, kPendingCrossDelays},
    {78, {{S::HornToDrumGain, 0.467498004}}, kPendingCrossDelays},
    {79, {}, kPendingCrossDelays},
    {80, {{S::DrumFlip, 1}}, kPendingDrum | kPendingReducedDrum | kPendingCrossDelays},
    {81, {}, 0},
    {82, {}, 0},
    {83, {}, 0},
    {84, {}, 0},
    {85, {{S::DrumRayGain1, 0.300000012}}, 0},
    {86, {{S::DrumRayGain2, 0.300000012}}, 0},
    {87, {}, 0},
    {88, {}, 0},
    {89, {{S::DrumReflectionLpfOctaves, 0.600000024}}, 0},
    {90, {{S::HornAttenuationDistance, 0.398107195}}, kPendingHornMic1 | kPendingHornMic2 | kPendingReducedHorn | kPendingCrossDelays},
    {91, {{S::DrumAttenuationDistance, 0.900000036}}, kPendingDrum | kPendingReducedDrum | kPendingReducedHorn | kPendingCrossDelays},
    {92, {{S::HornStaticGain, 0.300000012}}, 0},
    {93, {{S::HornAttenuationFadeExponent, 0.757857304}}, kPendingHornMic1 | kPendingHornMic2 | kPendingReducedHorn | kPendingCrossDelays},
    {94, {{S::DrumAttenuationFadeExponent, 0.757857304}}, kPendingDrum | kPendingReducedDrum | kPendingCrossDelays},
    {95, {{S::DrumStaticGain, 0.300000012}}, 0},
    {96, {{S::HornAmRadius, 0.156397745}}, kPendingHornMic1 | kPendingHornMic2 | kPendingReducedHorn | kPendingCrossDelays},
    {97, {{S::DrumAmRadius, 0.156397745}}, kPendingDrum | kPendingReducedDrum | kPendingCrossDelays},
    {98, {{S::HornFilterSaturation, 0.00482734153}}, 0},
    {99, {{S::RoomSize, 0.693015711}}, kPendingRoomTaps},
    {100, {{S::VirtualRoomSize, 0.574349417}}, kPendingRoomTaps},
    {101, {{S::RoomLeftRightDelay, 0.299289796}}, kPendingRoomTaps},
    {102, {{S::HornSlowNoiseVolume, 2.34304032}, {S::DrumSlowNoiseVolume, 0.330963241}}, 0},
    {103, {{S::HornFastNoiseVolume, 2.94971299}, {S::DrumFastNoiseVolume, 0.467498004}}, 0},
    {104, {}, 0},
    {105, {{S::HornSwitchNoiseVolume, 0.466390575}, {S::DrumSwitchNoiseVolume, 0.0294272559}}, 0},
    {106, {{S::RoomMainCutoffHz, 796.214355}}, kPendingRoomTaps},
    {107, {}, kPendingRoomTaps},
    {108, {}, 0},
    {109, {}, 0},
    {110, {{S::DrumFilterSaturation, 0.00482734153}}, 0},
    {111, {{S::DrumStaticCutoffHz, 796.214355}}, 0},
    {112, {{S::HornStaticCutoffHz, 796.214355}}, 0},
    {113, {{S::DrumRayGain3, 0.300000012}}, 0},
    {114, {{S::DrumRayGain4, 0.300000012}}, 0},
    {115, {{S::HornNoiseLevel, 0.250092953}, {S::DrumNoiseLevel, 0.930917538}}, 0},
    {116, {{S::DrumSplitterHz, 99.7631149}}, 0},
    {117, {{S::DrumLowStaticGain, 0.467498004}}, 0},
    {118, {{S::SpeakersBypassed, 0}}, 0},
    {119, {{S::HornAmpClip, 0.117393106}}, 0},
};
// clang-format on

TEST_F(ParameterApplicationTest, EachParameterTellsTheEngineItsPhysicalValue) {
  for (const Told& expected : kAtThreeTenths) {
    SCOPED_TRACE(expected.index);
    const float before = effect->getParameter(expected.index);
    effect->setParameter(kMech, expected.index == kMech ? before : 0.5F);
    log().clear();
    effect->setParameter(expected.index, 0.3F);
    EXPECT_EQ(log().requested, expected.requested);
    ASSERT_EQ(log().sets.size(), expected.sets.size());
    for (std::size_t i = 0; i < expected.sets.size(); ++i) {
      EXPECT_EQ(log().sets[i].setting, expected.sets[i].setting);
      EXPECT_NEAR(log().sets[i].value, expected.sets[i].value,
                  1e-7 * (1.0 + std::abs(expected.sets[i].value)));
    }
    effect->setParameter(expected.index, before);
  }
}

TEST_F(ParameterApplicationTest, NothingButANumberIsTaken) {
  for (std::int32_t index = 0; index < kNumParameters; ++index) {
    const float before = effect->getParameter(index);
    log().clear();
    effect->setParameter(index, std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(effect->getParameter(index), before) << index;
    EXPECT_THAT(log().sets, IsEmpty()) << index;
  }
}

TEST_F(ParameterApplicationTest, ValuesOutsideTheRangeStayFinite) {
  for (const float v : {-0.25F, 1.5F, 1e30F, -1e30F, std::numeric_limits<float>::infinity()}) {
    for (std::int32_t index = 0; index < kNumParameters; ++index) {
      log().clear();
      effect->setParameter(index, v);
      if (!std::isfinite(v)) continue;
      for (const EngineCall& call : log().sets) {
        EXPECT_TRUE(std::isfinite(call.value)) << index << " at " << v;
      }
      EXPECT_LE(display(index, v).size(), 23U) << index << " at " << v;
    }
    log().placement->applyPlacement();
  }
}

TEST_F(ParameterApplicationTest, IndicesOfNobodyAreHarmless) {
  for (const std::int32_t index : {-1, 120, 1000, std::numeric_limits<std::int32_t>::max(),
                                   std::numeric_limits<std::int32_t>::min()}) {
    effect->setParameter(index, 0.7F);
    EXPECT_EQ(effect->getParameter(index), 0.0F);
  }
  EXPECT_THAT(log().sets, IsEmpty());
}

TEST_F(ParameterApplicationTest, ReservedParametersReadZero) {
  for (const std::int32_t index : {36, 57, 59, 64, 65, 66, 67, 71, 73, 81, 82, 83, 84, 108}) {
    effect->setParameter(index, 0.7F);
    EXPECT_EQ(effect->getParameter(index), 0.0F) << index;
  }
  for (const std::int32_t index : {3, 33, 79, 107, 109}) {
    effect->setParameter(index, 0.7F);
    EXPECT_EQ(effect->getParameter(index), 0.7F) << index;
  }
}

TEST_F(ParameterApplicationTest, TheLeverReleasesTheBrake) {
  effect->setParameter(kLever, 0.25F);
  EXPECT_EQ(log().last(S::Lever), 0.75);
  effect->setParameter(kStop, 0.49F);
  EXPECT_EQ(log().last(S::Stop), 0.0);
  effect->setParameter(kStop, 0.5F);
  EXPECT_EQ(log().last(S::Stop), 1.0);
  log().clear();

  // The same place again: nothing for the rotors, but the hand is on the lever.
  effect->setParameter(kLever, 0.25F);
  EXPECT_EQ(log().last(S::Lever), std::nullopt);
  EXPECT_EQ(log().last(S::Stop), 0.0);
  EXPECT_EQ(effect->getParameter(kStop), 0.0F);
  EXPECT_THAT(automated(), ElementsAre(HostNews{sdk::HostOpcode::Automate, kStop, 0.0F}));

  log().placement->forgetLever();
  effect->setParameter(kLever, 0.25F);
  EXPECT_EQ(log().last(S::Lever), 0.75) << "a full reset lies between";
}

TEST_F(ParameterApplicationTest, TheBrakeTakesTheLeversPlaceAlong) {
  midi::MidiLever pedal(*effect, kLever);
  engine::RotaryEngine rotors(resources::noiseRecordings(), *log().placement);
  ParameterApplication fresh(*effect, rotors, pedal);
  fresh.apply(*parameterRow(kStop), 1.0F);
  fresh.apply(*parameterRow(kLever), 0.0F); // where it starts
  EXPECT_EQ(log().last(S::Lever), std::nullopt);
}

TEST_F(ParameterApplicationTest, CpuModeActsWhenItsWordChanges) {
  effect->setParameter(kCPUmode, 0.4F);
  effect->setParameter(kCPUmode, 0.45F);
  EXPECT_EQ(log().requested, 0U);
  effect->setParameter(kCPUmode, 0.6F);
  EXPECT_EQ(log().requested, kPendingFullReset);
  EXPECT_THAT(log().modes, ElementsAre(CpuMode::Brilliant));
}

TEST_F(ParameterApplicationTest, SetupActsWhenItsPositionChanges) {
  effect->setParameter(kSetup, 0.26F);
  EXPECT_EQ(log().requested, 0U);
  effect->setParameter(kSetup, 0.6F);
  EXPECT_EQ(log().requested, kPendingSetup | kPendingCrossDelays);
}

TEST_F(ParameterApplicationTest, PlacementsAreWrittenThroughTheHostInTheirOrder) {
  effect->setParameter(kSetup, 0.6F);
  log().clear();
  log().placement->applyPlacement();
  constexpr auto kAutomate = sdk::HostOpcode::Automate;
  EXPECT_THAT(automated(),
              ElementsAre(HostNews{kAutomate, 118, 0.0F}, HostNews{kAutomate, 38, 0.02F},
                          HostNews{kAutomate, 40, 0.52F}, HostNews{kAutomate, 41, 0.74F},
                          HostNews{kAutomate, 43, 0.5F}, HostNews{kAutomate, 37, 0.5F},
                          HostNews{kAutomate, 39, 0.0F}, HostNews{kAutomate, 42, 1.0F}));
  ASSERT_GE(log().sets.size(), 2U);
  EXPECT_EQ(log().sets[log().sets.size() - 2].setting, S::HornLevel);
  EXPECT_NEAR(log().sets[log().sets.size() - 2].value, 1.2589254, 1e-6);
  EXPECT_EQ(log().sets.back().setting, S::NoisePan);
  EXPECT_EQ(log().sets.back().value, 0.8);
}

TEST_F(ParameterApplicationTest, SizeMovesTheRoom) {
  effect->setParameter(kSize, 0.5F);
  news().clear();
  effect->setParameter(kSize, 0.52F);
  EXPECT_THAT(automated(), IsEmpty());
  effect->setParameter(kSize, 0.0F);
  EXPECT_THAT(automated(), ElementsAre(HostNews{sdk::HostOpcode::Automate, 99, 0.193426F},
                                       HostNews{sdk::HostOpcode::Automate, 100, 0.371357F}));
  EXPECT_EQ(effect->getParameter(99), 0.193426F);
}

TEST_F(ParameterApplicationTest, HornDistanceMovesBothMicrophonesAndTheAmplitudeClip) {
  effect->setParameter(kHDistance, 0.5F);
  EXPECT_EQ(log().requested, 0U) << "the distance that it had";
  EXPECT_EQ(effect->getParameter(kHornAmplitudeClip), 0.795879F);

  effect->setParameter(kHDistance, 1.0F);
  EXPECT_NEAR(*log().last(S::HornMic1Distance), 1.65, 1e-6);
  EXPECT_NEAR(*log().last(S::HornMic2Distance), 1.65 * (0.8 + 0.4 * 0.2575), 1e-6);
  EXPECT_FLOAT_EQ(effect->getParameter(kHornAmplitudeClip), 0.895879F);
  EXPECT_EQ(log().last(S::HornAmpClip), log().last(S::HornDistanceAmpClip));
  EXPECT_EQ(log().requested, kPendingHornMic1 | kPendingHornMic2 | kPendingReducedDrum |
                                 kPendingReducedHorn | kPendingCrossDelays);

  effect->setParameter(kHornMic2Distance, 0.0F);
  effect->setParameter(kHDistance, 0.0F);
  EXPECT_EQ(log().last(S::HornMic2Distance), 0.3) << "no closer than the cabinet allows";
}

TEST_F(ParameterApplicationTest, FiltersAreOffAtTheEndsOfTheirControls) {
  effect->setParameter(kHHPF, 0.01F);
  EXPECT_EQ(log().last(S::HornHighPassHz), 0.0);
  effect->setParameter(kHHPF, 0.0101F);
  EXPECT_NEAR(*log().last(S::HornHighPassHz), 20.0, 0.1);
  effect->setParameter(kDLPF, 0.999F);
  EXPECT_NEAR(*log().last(S::DrumLowPassHz), 19908.1, 0.1);
  effect->setParameter(kDLPF, 1.0F);
  EXPECT_EQ(log().last(S::DrumLowPassHz), 0.0);
}

TEST_F(ParameterApplicationTest, FlipsTurnAboveTheMiddle) {
  for (const auto& [index, setting] : {std::pair{58, S::HornFlip}, std::pair{80, S::DrumFlip}}) {
    effect->setParameter(index, 0.5F);
    EXPECT_EQ(log().last(setting), 1.0);
    effect->setParameter(index, 0.51F);
    EXPECT_EQ(log().last(setting), -1.0);
  }
}

TEST_F(ParameterApplicationTest, HostSwitchesReachTheEngine) {
  effect->resume();
  EXPECT_EQ(log().switchedOn, 1);
  effect->suspend();
  EXPECT_EQ(log().switchedOff, 1);
  effect->setSampleRate(96000.0F);
  effect->setSampleRate(0.0F);
  EXPECT_THAT(log().rates, ElementsAre(96000.0, 96000.0));
}

TEST_F(ParameterApplicationTest, GlobalParametersStandInEveryPreset) {
  for (const std::int32_t index : {0, 1, 2, 3, 4, 35}) {
    effect->setParameter(index, 0.625F);
    for (std::int32_t slot = 0; slot < presets::kNumPresetSlots; ++slot) {
      EXPECT_EQ(effect->getPresetSlot(slot).values[static_cast<std::size_t>(index)], 0.625F);
    }
  }
  effect->setParameter(kDrive, 0.625F);
  EXPECT_EQ(effect->getPresetSlot(0).values[kDrive], 0.625F);
  EXPECT_NE(effect->getPresetSlot(1).values[kDrive], 0.625F);
}

TEST_F(ParameterApplicationTest, LoadingAPresetKeepsTheGlobalOnes) {
  effect->setParameter(kMIDIchl, 0.0F);
  effect->setParameter(kLever, 1.0F);
  effect->setParameter(kStop, 1.0F);
  news().clear();
  log().clear();
  effect->selectPreset(3);
  EXPECT_EQ(effect->getParameter(kMIDIchl), 0.0F);
  EXPECT_EQ(effect->getParameter(kLever), 1.0F);
  EXPECT_EQ(effect->getParameter(kHHPF), 0.624453F);
  // The brake stays on throughout, for the rotors, the host and every slot.
  for (const EngineCall& call : log().sets) {
    if (call.setting == S::Stop) {
      EXPECT_EQ(call.value, 1.0);
    }
  }
  for (const HostNews& n : automated()) EXPECT_NE(n.index, kStop);
  for (const presets::PresetSlot& slot : effect->getPresetSlots()) {
    EXPECT_EQ(slot.values[kStop], 1.0F);
  }
}

TEST_F(ParameterApplicationTest, SwiftIsSwiftAndTheBrokenMotorStandsStill) {
  effect->selectPreset(8);
  EXPECT_NEAR(*log().last(S::HornAccelSeconds), 0.1, 1e-7);
  EXPECT_NEAR(*log().last(S::DrumDecelSeconds), 0.1, 1e-7);
  effect->selectPreset(12);
  EXPECT_EQ(log().last(S::HornSlowSpeedHz), 0.0);
  EXPECT_EQ(log().last(S::HornFastSpeedHz), 0.0);
}

} // namespace
} // namespace qlx::test
