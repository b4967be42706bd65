// SPDX-License-Identifier: ISC
#include "resources/NoiseRecordings.h"
#include "tests/plugin/RecordingEngine.h"
#include "tests/support/EffectFixture.h"

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

TEST_F(ParameterApplicationTest, HostSwitchesReachTheEngine) {
  effect->resume();
  EXPECT_EQ(log().switchedOn, 1);
  effect->suspend();
  EXPECT_EQ(log().switchedOff, 1);
  effect->setSampleRate(96000.0F);
  effect->setSampleRate(0.0F);
  EXPECT_THAT(log().rates, ElementsAre(96000.0, 96000.0));
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

} // namespace
} // namespace qlx::test
