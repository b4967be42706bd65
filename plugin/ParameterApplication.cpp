// SPDX-License-Identifier: ISC
#include "plugin/ParameterApplication.h"

#include "plugin/parameters/ParameterLaws.h"
#include "plugin/parameters/Placements.h"

#include <algorithm>

namespace qlx::plugin {

using engine::Setting;

static_assert(std::atomic<float>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

namespace {

/// The two room parameters of each position of Size.
struct RoomPreset {
  float roomSize;
  float virtualRoomSize;
};
constexpr std::array<RoomPreset, 5> kRoomPresets = {{
    {0.193426F, 0.371357F},
    {0.306573F, 0.441384F},
    {0.386852F, 0.5F},
    {0.449122F, 0.462F},
    {0.5F, 0.419518F},
}};

/// Motor noise against the sound, and the drum's recordings against the horn's.
constexpr double kMechScale = 0.25;               // -12 dB
constexpr double kDrumNoiseScale = 7.96214341106; // +18 dB
/// A new value of Mech counts double until Drum Sample Volume is set, which sends the plain level
/// again.
constexpr double kMechFactor = 2.0;

/// No closer to the horn than its cabinet allows, metres.
constexpr double kClosestMic = 0.3;

bool isEngaged(float v) noexcept { return steppedPosition(v, 1.0F) != 0; }

} // namespace

float ParameterApplication::value(std::int32_t index) const noexcept {
  if (index < 0 || index >= kNumParameters) return 0.0F;
  return m_values[static_cast<std::size_t>(index)].load(std::memory_order_relaxed);
}

void ParameterApplication::store(std::int32_t index, float value) noexcept {
  m_values[static_cast<std::size_t>(index)].store(value, std::memory_order_relaxed);
}

void ParameterApplication::apply(const ParameterRow& row, float value) {
  if (row.keeping != kNotKept) store(row.index, value);
  row.apply(*this, value);
}

void ParameterApplication::applyPlacement() noexcept {
  const auto last = static_cast<int>(kPlacements.size()) - 1;
  const int position = std::clamp(placementPosition(value(kSetup)), 0, last);
  const Placement& placement = kPlacements[static_cast<std::size_t>(position)];

  m_effect.setParameterAutomated(kBypassSpeakers, placement.speakersBypassed);
  m_effect.setParameterAutomated(kHornMic1Angle, placement.mic1Angle);
  m_effect.setParameterAutomated(kHornMic2Angle, placement.mic2Angle);
  m_effect.setParameterAutomated(kHornMic2Distance, placement.mic2Distance);
  m_effect.setParameterAutomated(kHornMic2Gain, placement.mic2Gain);
  m_effect.setParameterAutomated(kHornGain, placement.hornGain);
  m_effect.setParameterAutomated(kHornMic1Panorama, placement.mic1Pan);
  m_effect.setParameterAutomated(kHornMic2Panorama, placement.mic2Pan);
  set(Setting::HornLevel, placement.hornLevel);
  set(Setting::NoisePan, kPlacementNoisePan);
}

void ParameterApplication::applyCpuMode(float v) {
  const int mode = steppedPosition(v, 1.0F);
  if (m_lastCpuMode.exchange(mode, std::memory_order_relaxed) == mode) return;
  m_engine.setCpuMode(mode == 0 ? engine::CpuMode::LowCpu : engine::CpuMode::Brilliant);
  request(engine::kPendingFullReset);
}

void ParameterApplication::applyLever(float v) {
  if (m_lastLever.exchange(v, std::memory_order_relaxed) != v) {
    set(Setting::Lever, 1.0 - static_cast<double>(v));
  }
  // Moving the lever releases Stop; a preset that contains the lever's position does not.
  if (m_effect.isApplyingPreset()) return;
  if (isEngaged(value(kStop))) m_effect.setParameterAutomated(kStop, 0.0F);
}

void ParameterApplication::applyStop(float v) {
  m_lastLever.store(value(kLever), std::memory_order_relaxed);
  set(Setting::Stop, steppedPosition(v, 1.0F));
}

void ParameterApplication::applyMech(float /*v*/) { setNoiseLevels(kMechFactor); }

void ParameterApplication::applyDrumSampleVolume(float /*v*/) { setNoiseLevels(1.0); }

void ParameterApplication::setNoiseLevels(double factor) noexcept {
  const double level = factor * gainLaw(value(kMech)) * kMechScale;
  set(Setting::HornNoiseLevel, level);
  set(Setting::DrumNoiseLevel, level * gainLaw(value(kDrumSampleVolume)) * kDrumNoiseScale);
}

void ParameterApplication::applySetup(float v) {
  const int position = placementPosition(v);
  if (m_lastSetup.exchange(position, std::memory_order_relaxed) == position) return;
  request(engine::kPendingSetup | engine::kPendingCrossDelays);
}

void ParameterApplication::applySize(float v) {
  const int position = steppedPosition(v, 4.0F);
  if (m_lastRoomSize.exchange(position, std::memory_order_relaxed) == position) return;
  const auto last = static_cast<int>(kRoomPresets.size()) - 1;
  const RoomPreset& room = kRoomPresets[static_cast<std::size_t>(std::clamp(position, 0, last))];
  m_effect.setParameterAutomated(kEarlyReflRoomSize, room.roomSize);
  m_effect.setParameterAutomated(kEarlyReflVirtualRoomSize, room.virtualRoomSize);
}

void ParameterApplication::applyHornDistance(float v) {
  const float distance = micDistanceLaw(v);
  const float clip = ampClipOfDistance(v);
  set(Setting::HornDistanceAmpClip, coefLaw(clip));
  if (m_hornDistance.load(std::memory_order_relaxed) == distance) return;

  m_effect.setParameter(kHornAmplitudeClip, clip);
  m_hornDistance.store(distance, std::memory_order_relaxed);
  set(Setting::HornMic1Distance, distance);
  setMic2Distance();
  // Not a parameter of its own: the editor shows the new distance under this index.
  m_effect.setParameter(kDistanceForEditor, v);
}

void ParameterApplication::applyMic2Distance(float /*v*/) { setMic2Distance(); }

void ParameterApplication::setMic2Distance() noexcept {
  const double first = m_hornDistance.load(std::memory_order_relaxed);
  const double offset = mic2OffsetLaw(value(kHornMic2Distance));
  set(Setting::HornMic2Distance, std::max(kClosestMic, (1.0 + offset) * first));
}

void ParameterApplication::applyDrumDistance(float v) {
  const float distance = micDistanceLaw(v);
  if (m_drumDistance.exchange(distance, std::memory_order_relaxed) == distance) return;
  set(Setting::DrumMicDistance, distance);
}

void ParameterApplication::applyMidiChannel(float v) { m_midiLever.setChannel(midiChannelLaw(v)); }

} // namespace qlx::plugin
