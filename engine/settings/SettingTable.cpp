// SPDX-License-Identifier: ISC
#include "engine/EngineFrame.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qlx::engine {

/// One row per setting: its limits and what the audio thread does with a new value. The limits
/// leave room around all that controls reach within their range and are so narrow that the engine
/// stays finite and that gains and filters are back within 100 ms after a value out of range.
struct SettingTable {
  using Frame = RotaryEngine::Frame;

  struct Row {
    Setting setting;
    double lowest, highest;
    void (*apply)(Frame& f, double v);
  };

  static const Row& row(Setting setting) noexcept;
};

namespace {

constexpr double kHighestGain = 5.0;    ///< controls reach 4
constexpr double kHighestRayGain = 1.5; ///< controls reach 1
constexpr double kHighestDb = 15.0;     ///< controls reach 12
constexpr double kHighestHz = 100000.0;

double panGain(double share) { return std::sin(share * 0.5 * std::numbers::pi); }

} // namespace

// The table reads as one page; its functions are one step each.
const SettingTable::Row& SettingTable::row(Setting setting) noexcept {
  using F = Frame;
  using S = Setting;
  using Sm = Smoothed;
  using Tone = Amplifier::Tone;
  constexpr double g = kHighestGain, r = kHighestRayGain, db = kHighestDb;
  static constexpr Row kRows[] = {
      {S::Bypass, 0, 1, [](F& f, double v) { f.m_bypassTarget = v; }},
      {S::SpeakersBypassed, 0, 1, [](F& f, double v) { f.m_speakersBypassed = v >= 0.5; }},
      {S::InputGain, -1, g, [](F& f, double v) { f.m_settings.setTarget(Sm::InputGain, v); }},
      {S::AmplifierType, 0, 2,
       [](F& f, double v) { f.m_amplifier.setType(static_cast<Amplifier::Type>(static_cast<int>(v))); }},
      {S::DriveGain, 0.05, 20, [](F& f, double v) { f.m_settings.setTarget(Sm::DriveGain, v); }},
      {S::PostDriveGain, -1, g, [](F& f, double v) { f.m_settings.setTarget(Sm::PostDriveGain, v); }},
      {S::BottomGainDb, -db, db, [](F& f, double v) { f.setTone(Tone::Bottom, v); }},
      {S::LoMidGainDb, -db, db, [](F& f, double v) { f.setTone(Tone::LoMid, v); }},
      {S::PresenceGainDb, -db, db, [](F& f, double v) { f.setTone(Tone::Presence, v); }},
      {S::TopGainDb, -db, db, [](F& f, double v) { f.setTone(Tone::Top, v); }},

      {S::Lever, -1, 2, [](F& f, double v) { f.m_cabinet.setLever(v); }},
      {S::Stop, 0, 1, [](F& f, double v) { f.applyStop(v); }},
      {S::HornSlowSpeedHz, 0, 40, [](F& f, double v) { f.m_cabinet.hornHistory().motion.setSlowSpeed(v); }},
      {S::HornFastSpeedHz, 0, 40, [](F& f, double v) { f.m_cabinet.hornHistory().motion.setFastSpeed(v); }},
      {S::HornAccelSeconds, 0.001, 100,
       [](F& f, double v) { f.m_cabinet.hornHistory().motion.setAccelTime(v); }},
      {S::HornDecelSeconds, 0.001, 100,
       [](F& f, double v) { f.m_cabinet.hornHistory().motion.setDecelTime(v); }},
      {S::DrumSlowSpeedHz, 0, 40, [](F& f, double v) { f.m_cabinet.drumHistory().motion.setSlowSpeed(v); }},
      {S::DrumFastSpeedHz, 0, 40, [](F& f, double v) { f.m_cabinet.drumHistory().motion.setFastSpeed(v); }},
      {S::DrumAccelSeconds, 0.001, 100,
       [](F& f, double v) { f.m_cabinet.drumHistory().motion.setAccelTime(v); }},
      {S::DrumDecelSeconds, 0.001, 100,
       [](F& f, double v) { f.m_cabinet.drumHistory().motion.setDecelTime(v); }},

      {S::HornMic1Angle, -1, 1, [](F& f, double v) { f.m_cabinet.horn().microphone(0).setAngle(v); }},
      {S::HornMic1Distance, 0.3, 8, [](F& f, double v) { f.m_cabinet.horn().microphone(0).setDistance(v); }},
      {S::HornMic1Pan, -1, 2, [](F& f, double v) { f.setPan(Sm::Mic1PanLeft, Sm::Mic1PanRight, v); }},
      {S::HornMic2Angle, -1, 1, [](F& f, double v) { f.m_cabinet.horn().microphone(1).setAngle(v); }},
      {S::HornMic2Distance, 0.3, 8, [](F& f, double v) { f.m_cabinet.horn().microphone(1).setDistance(v); }},
      {S::HornMic2Pan, -1, 2, [](F& f, double v) { f.setPan(Sm::Mic2PanLeft, Sm::Mic2PanRight, v); }},
      {S::HornMic2Gain, -1, g, [](F& f, double v) { f.m_settings.setTarget(Sm::HornMic2Gain, v); }},
      {S::HornGain, -1, g, [](F& f, double v) { f.m_settings.setTarget(Sm::HornGain, v); }},
      {S::HornFeedGain, -64, 64 * g, [](F& f, double v) { f.m_settings.setTarget(Sm::HornFeedGain, v); }},
      {S::HornLevel, 0, 3, [](F& f, double v) { f.m_cabinet.hornLevel = v; }},
      {S::HornHighPassHz, 0, kHighestHz, [](F& f, double v) { f.setHornHighPass(v); }},

      {S::HornFmRadius, 0, 0.3, [](F& f, double v) { f.m_cabinet.hornSettings.cabinet.fmRadius = v; }},
      {S::HornAmRadius, 0.05, 0.29, [](F& f, double v) { f.m_cabinet.hornSettings.cabinet.amRadius = v; }},
      {S::HornAttenuationExponent, 0, 3,
       [](F& f, double v) { f.m_cabinet.hornSettings.cabinet.attenuationExponent = v; }},
      {S::HornAttenuationDistance, 0.01, 20,
       [](F& f, double v) { f.m_cabinet.hornSettings.cabinet.attenuationDistance = v; }},
      {S::HornAttenuationFadeExponent, 0.2, 4,
       [](F& f, double v) { f.m_cabinet.hornSettings.cabinet.attenuationFadeExponent = v; }},
      {S::HornReflectionCoeff, -0.2, 1.1,
       [](F& f, double v) { f.m_cabinet.hornSettings.cabinet.reflectionCoeff = v; }},
      {S::HornReflectionLpfOctaves, -1, 8,
       [](F& f, double v) {
         f.m_cabinet.hornSettings.cabinet.reflectionLpfOctaves = v;
         f.m_cabinet.applyHornReflectionLpf();
       }},
      {S::HornStaticCutoffHz, 1, kHighestHz,
       [](F& f, double v) {
         f.m_cabinet.hornSettings.cabinet.staticCutoffHz = v;
         f.m_cabinet.applyHornStaticCutoff();
       }},
      {S::HornFlip, -1, 1, [](F& f, double v) { f.m_cabinet.setHornFlip(v); }},
      {S::HornOpenBackMode, 0, 2,
       [](F& f, double v) { f.m_cabinet.hornSettings.openBackMode = static_cast<int>(v); }},
      {S::HornRayGain1, -r, r, [](F& f, double v) { f.m_cabinet.hornSettings.rayGain[0] = v; }},
      {S::HornRayGain2, -r, r, [](F& f, double v) { f.m_cabinet.hornSettings.rayGain[1] = v; }},
      {S::HornRayGain3, -r, r, [](F& f, double v) { f.m_cabinet.hornSettings.rayGain[2] = v; }},
      {S::HornRayGain4, -r, r, [](F& f, double v) { f.m_cabinet.hornSettings.rayGain[3] = v; }},
      {S::HornRayGain5, -r, r, [](F& f, double v) { f.m_cabinet.hornSettings.rayGain[4] = v; }},
      {S::HornRayGain6, -r, r, [](F& f, double v) { f.m_cabinet.hornSettings.rayGain[5] = v; }},
      {S::HornRayGain7, -r, r, [](F& f, double v) { f.m_cabinet.hornSettings.rayGain[6] = v; }},
      {S::HornZAxisGain, -r, r, [](F& f, double v) { f.m_cabinet.hornSettings.zAxisGain = v; }},
      {S::HornStaticGain, -r, r, [](F& f, double v) { f.m_cabinet.hornSettings.staticGain = v; }},
      {S::HornAmpClip, -1, 2, [](F& f, double v) { f.m_cabinet.hornSettings.ampClip = v; }},
      {S::HornDistanceAmpClip, -1, 2, [](F& f, double v) { f.m_cabinet.distanceAmpClip = v; }},
      {S::HornFilterSaturation, 0, 1, [](F& f, double v) { f.m_cabinet.setHornSaturation(v); }},

      {S::DrumMicAngle, -1, 1, [](F& f, double v) { f.m_cabinet.drum().setMicAngle(v); }},
      {S::DrumMicDistance, 0.3, 8, [](F& f, double v) { f.m_cabinet.drum().setMicDistance(v); }},
      {S::DrumMicPan, -1, 2, [](F& f, double v) { f.setPan(Sm::DrumPanLeft, Sm::DrumPanRight, v); }},
      {S::DrumGain, -1, g, [](F& f, double v) { f.m_settings.setTarget(Sm::DrumGain, v); }},
      {S::DrumFeedGain, -1, g, [](F& f, double v) { f.m_settings.setTarget(Sm::DrumFeedGain, v); }},
      {S::DrumLowPassHz, 0, kHighestHz, [](F& f, double v) { f.setDrumLowPass(v); }},
      {S::DrumFmRadius, 0, 0.3, [](F& f, double v) { f.m_cabinet.drumSettings.cabinet.fmRadius = v; }},
      {S::DrumAmRadius, 0.05, 0.29, [](F& f, double v) { f.m_cabinet.drumSettings.cabinet.amRadius = v; }},
      {S::DrumAttenuationExponent, 0, 3,
       [](F& f, double v) { f.m_cabinet.drumSettings.cabinet.attenuationExponent = v; }},
      {S::DrumAttenuationDistance, 0.01, 20,
       [](F& f, double v) { f.m_cabinet.drumSettings.cabinet.attenuationDistance = v; }},
      {S::DrumAttenuationFadeExponent, 0.2, 4,
       [](F& f, double v) { f.m_cabinet.drumSettings.cabinet.attenuationFadeExponent = v; }},
      {S::DrumReflectionCoeff, -0.2, 1.1,
       [](F& f, double v) { f.m_cabinet.drumSettings.cabinet.reflectionCoeff = v; }},
      {S::DrumReflectionLpfOctaves, -1, 8,
       [](F& f, double v) {
         f.m_cabinet.drumSettings.cabinet.reflectionLpfOctaves = v;
         f.m_cabinet.applyDrumReflectionLpf();
       }},
      {S::DrumStaticCutoffHz, 1, kHighestHz,
       [](F& f, double v) {
         f.m_cabinet.drumSettings.cabinet.staticCutoffHz = v;
         f.m_cabinet.applyDrumStaticCutoff();
       }},
      {S::DrumSplitterHz, 1, kHighestHz,
       [](F& f, double v) {
         f.m_cabinet.drumSettings.splitterHz = v;
         f.m_cabinet.drum().updateSplitter();
       }},
      {S::DrumLowStaticGain, -1, g, [](F& f, double v) { f.m_cabinet.drumSettings.lowStaticGain = v; }},
      {S::DrumFlip, -1, 1, [](F& f, double v) { f.m_cabinet.setDrumFlip(v); }},
      {S::DrumRayGain1, -r, r, [](F& f, double v) { f.m_cabinet.drumSettings.rayGain[0] = v; }},
      {S::DrumRayGain2, -r, r, [](F& f, double v) { f.m_cabinet.drumSettings.rayGain[1] = v; }},
      {S::DrumRayGain3, -r, r, [](F& f, double v) { f.m_cabinet.drumSettings.rayGain[2] = v; }},
      {S::DrumRayGain4, -r, r, [](F& f, double v) { f.m_cabinet.drumSettings.rayGain[3] = v; }},
      {S::DrumStaticGain, -r, r, [](F& f, double v) { f.m_cabinet.drumSettings.staticGain = v; }},
      {S::DrumFilterSaturation, 0, 1, [](F& f, double v) { f.m_cabinet.setDrumSaturation(v); }},

      {S::PortToHornGain, -1, g, [](F& f, double v) { f.m_settings.setTarget(Sm::PortToHornGain, v); }},
      {S::PortToDrumGain, -1, g, [](F& f, double v) { f.m_settings.setTarget(Sm::PortToDrumGain, v); }},
      {S::DrumToHornGain, -1, g, [](F& f, double v) { f.m_settings.setTarget(Sm::DrumToHornGain, v); }},
      {S::HornToDrumGain, -1, g, [](F& f, double v) { f.m_settings.setTarget(Sm::HornToDrumGain, v); }},

      {S::RoomReturnGain, -0.03, 0.03 * g, [](F& f, double v) { f.m_settings.setTarget(Sm::RoomReturnGain, v); }},
      {S::NoiseSendGain, -0.2, 1, [](F& f, double v) { f.m_cabinet.noiseSendGain = v; }},
      {S::RoomSize, 0.1, 8, [](F& f, double v) { f.m_cabinet.roomSettings.size = v; }},
      {S::VirtualRoomSize, 0.1, 8, [](F& f, double v) { f.m_cabinet.roomSettings.virtualSize = v; }},
      {S::RoomLeftRightDelay, 0, 5,
       [](F& f, double v) { f.m_cabinet.roomSettings.leftRightDelay = v; }},
      {S::RoomMainCutoffHz, 20, kHighestHz,
       [](F& f, double v) { f.m_cabinet.roomSettings.mainCutoffHz = v; }},
      {S::ColorMidGainDb, -db, db, [](F& f, double v) { f.setColor(&Frame::m_colorMidDb, v); }},
      {S::ColorLowGainDb, -db, db, [](F& f, double v) { f.setColor(&Frame::m_colorLowDb, v); }},

      {S::HornNoiseLevel, -1, 4, [](F& f, double v) { f.m_cabinet.hornSettings.noiseLevel = v; }},
      {S::DrumNoiseLevel, -1, 128, [](F& f, double v) { f.m_cabinet.drumSettings.noiseLevel = v; }},
      {S::HornSlowNoiseVolume, -3, 5 * g,
       [](F& f, double v) { f.m_cabinet.forHornPlayers([v](auto& p) { p.setSlowVolume(v); }); }},
      {S::HornFastNoiseVolume, -4, 6.5 * g,
       [](F& f, double v) { f.m_cabinet.forHornPlayers([v](auto& p) { p.setFastVolume(v); }); }},
      {S::HornSwitchNoiseVolume, -1, g,
       [](F& f, double v) { f.m_cabinet.forHornPlayers([v](auto& p) { p.setSwitchVolume(v); }); }},
      {S::DrumSlowNoiseVolume, -1, g,
       [](F& f, double v) { f.m_cabinet.drum().noisePlayer().setSlowVolume(v); }},
      {S::DrumFastNoiseVolume, -1, g,
       [](F& f, double v) { f.m_cabinet.drum().noisePlayer().setFastVolume(v); }},
      {S::DrumSwitchNoiseVolume, -1, g,
       [](F& f, double v) { f.m_cabinet.drum().noisePlayer().setSwitchVolume(v); }},
      {S::NoisePan, 0, 1, [](F& f, double v) { f.setPan(Sm::NoisePanA, Sm::NoisePanB, v); }},
  };
  static_assert(std::size(kRows) == kSettingCount);
  static_assert([] {
    for (std::size_t i = 0; i < kSettingCount; ++i)
      if (kRows[i].setting != static_cast<Setting>(i)) return false;
    return true;
  }());
  return kRows[static_cast<std::size_t>(setting)];
}

void RotaryEngine::Frame::set(Setting setting, double value) noexcept {
  if (!std::isfinite(value)) return;
  const SettingTable::Row& row = SettingTable::row(setting);
  // What is undone before the next block still brakes and starts the motors.
  if (setting == Setting::Stop)
    (value >= 0.5 ? m_stopPresses : m_stopReleases).fetch_add(1, std::memory_order_relaxed);
  const double limited = std::clamp(value, row.lowest, row.highest);
  if (setting == Setting::Bypass) m_wantedBypass.store(limited, std::memory_order_relaxed);
  m_mailbox.write(setting, limited);
}

void RotaryEngine::Frame::apply(Setting setting, double value) noexcept {
  SettingTable::row(setting).apply(*this, value);
}

void RotaryEngine::Frame::takeSettings() noexcept {
  m_mailbox.collect([this](Setting setting, double v) { apply(setting, v); });
}

void RotaryEngine::Frame::applyStop(double v) noexcept {
  const std::uint32_t presses = m_stopPresses.load(std::memory_order_relaxed);
  const std::uint32_t releases = m_stopReleases.load(std::memory_order_relaxed);
  const bool stops = v >= 0.5;
  if (stops ? releases != m_seenStopReleases : presses != m_seenStopPresses)
    m_cabinet.setStop(stops ? 0.0 : 1.0);
  m_seenStopPresses = presses;
  m_seenStopReleases = releases;
  m_cabinet.setStop(v);
}

void RotaryEngine::Frame::setPan(Smoothed left, Smoothed right, double position) noexcept {
  m_settings.setTarget(left, panGain(1.0 - position));
  m_settings.setTarget(right, panGain(position));
}

void RotaryEngine::Frame::setTone(Amplifier::Tone tone, double db) noexcept {
  m_toneDb[static_cast<std::size_t>(tone)] = db;
  m_toneChanged = true;
}

void RotaryEngine::Frame::setColor(double Frame::*gain, double db) noexcept {
  this->*gain = db;
  m_toneChanged = true;
}

void RotaryEngine::Frame::setHornHighPass(double hz) noexcept {
  m_cabinet.microphoneMix().setHornHighPass(hz);
  m_settings.setTarget(Smoothed::HornHighPassOn, hz > 0.0 ? 1.0 : 0.0);
}

void RotaryEngine::Frame::setDrumLowPass(double hz) noexcept {
  m_cabinet.microphoneMix().setDrumLowPass(hz > 0.0 ? hz : kHighestHz);
  m_settings.setTarget(Smoothed::DrumLowPassOn, hz > 0.0 ? 1.0 : 0.0);
}

} // namespace qlx::engine
