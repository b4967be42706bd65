// SPDX-License-Identifier: ISC
#include "engine/settings/SettingTable.h"

#include "engine/SignalPath.h"
#include "engine/settings/PendingWork.h"

#include <type_traits>

namespace qlx::engine {

namespace {

using S = Setting;
using Sm = Smoothed;
using Tone = Amplifier::Tone;
using P = SignalPath;

// Limits that several rows share.
constexpr double g = 5.0;   ///< gains; controls reach 4
constexpr double r = 1.5;   ///< gains of rays; controls reach 1
constexpr double db = 15.0; ///< tone controls; they reach 12
constexpr double kHighestHz = 100000.0;

// Work that several rows ask for.
constexpr std::uint32_t kHornMicrophones = kPendingHornMic1 | kPendingHornMic2;
/// What a moved microphone changes beside its own rays: the reduced models and the cross-talk.
constexpr std::uint32_t kCrossTalkWork =
    kPendingReducedHorn | kPendingReducedDrum | kPendingCrossDelays;
/// The horn's and the drum's level law or source, and what is heard of them by cross-talk.
constexpr std::uint32_t kHornGeometryWork = kHornMicrophones | kPendingReducedHorn;
constexpr std::uint32_t kHornWork = kHornGeometryWork | kPendingCrossDelays;
constexpr std::uint32_t kDrumWork = kPendingDrum | kPendingReducedDrum | kPendingCrossDelays;

// Where a value goes, by the name of a smoothed setting, of a field or of a function.

template <auto member, class Object>
void give(Object& object, double v) {
  if constexpr (std::is_member_function_pointer_v<decltype(member)>)
    (object.*member)(v);
  else
    object.*member = static_cast<std::remove_reference_t<decltype(object.*member)>>(v);
}

template <Smoothed setting>
void smooth(P& p, double v) {
  p.settings().setTarget(setting, v);
}
template <Smoothed left, Smoothed right>
void pan(P& p, double v) {
  p.setPan(left, right, v);
}
template <Tone tone_>
void tone(P& p, double v) {
  p.setTone(tone_, v);
}
void amplifierType(P& p, double v) {
  p.amplifier().setType(static_cast<Amplifier::Type>(static_cast<int>(v)));
}
template <auto m>
void path(P& p, double v) {
  give<m>(p, v);
}
template <auto m>
void cabinet(P& p, double v) {
  give<m>(p.cabinet(), v);
}
template <auto m>
void mix(P& p, double v) {
  give<m>(p.cabinet().microphoneMix(), v);
}
template <auto m>
void room(P& p, double v) {
  give<m>(p.cabinet().roomSettings, v);
}
template <auto m>
void horn(P& p, double v) {
  give<m>(p.cabinet().hornSettings, v);
}
template <auto m>
void hornCabinet(P& p, double v) {
  give<m>(p.cabinet().hornSettings.cabinet, v);
}
template <std::size_t ray>
void hornRay(P& p, double v) {
  p.cabinet().hornSettings.rayGain[ray] = v;
}
template <auto m>
void hornMotor(P& p, double v) {
  give<m>(p.cabinet().hornHistory().motion, v);
}
template <std::size_t number, auto m>
void hornMicrophone(P& p, double v) {
  give<m>(p.cabinet().horn().microphone(number), v);
}
template <auto m>
void hornNoise(P& p, double v) {
  for (const std::size_t number : {0U, 1U})
    give<m, RotorNoisePlayer>(p.cabinet().horn().microphone(number).noisePlayer(), v);
}
template <auto m>
void drum(P& p, double v) {
  give<m>(p.cabinet().drumSettings, v);
}
template <auto m>
void drumCabinet(P& p, double v) {
  give<m>(p.cabinet().drumSettings.cabinet, v);
}
template <std::size_t ray>
void drumRay(P& p, double v) {
  p.cabinet().drumSettings.rayGain[ray] = v;
}
template <auto m>
void drumMotor(P& p, double v) {
  give<m>(p.cabinet().drumHistory().motion, v);
}
template <auto m>
void drumModel(P& p, double v) {
  give<m>(p.cabinet().drum(), v);
}
template <auto m>
void drumNoise(P& p, double v) {
  give<m, RotorNoisePlayer>(p.cabinet().drum().noisePlayer(), v);
}

// clang-format off
constexpr SettingRow kRows[] = {
    // setting, lowest, highest, where it goes, what it makes stale
    {S::Bypass, 0, 1, path<&SignalPath::setBypass>},
    {S::SpeakersBypassed, 0, 1, path<&SignalPath::setSpeakersBypassed>},
    {S::InputGain, -1, g, smooth<Sm::InputGain>},
    {S::AmplifierType, 0, 2, amplifierType},
    {S::DriveGain, 0.05, 20, smooth<Sm::DriveGain>},
    {S::PostDriveGain, -1, g, smooth<Sm::PostDriveGain>},
    {S::BottomGainDb, -db, db, tone<Tone::Bottom>},
    {S::LoMidGainDb, -db, db, tone<Tone::LoMid>},
    {S::PresenceGainDb, -db, db, tone<Tone::Presence>},
    {S::TopGainDb, -db, db, tone<Tone::Top>},

    {S::Lever, -1, 2, cabinet<&Cabinet::setLever>},
    {S::Stop, 0, 1, cabinet<&Cabinet::setStop>},
    {S::HornSlowSpeedHz, 0, 40, hornMotor<&RotorMotion::setSlowSpeed>},
    {S::HornFastSpeedHz, 0, 40, hornMotor<&RotorMotion::setFastSpeed>},
    {S::HornAccelSeconds, 0.001, 100, hornMotor<&RotorMotion::setAccelTime>},
    {S::HornDecelSeconds, 0.001, 100, hornMotor<&RotorMotion::setDecelTime>},
    {S::DrumSlowSpeedHz, 0, 40, drumMotor<&RotorMotion::setSlowSpeed>},
    {S::DrumFastSpeedHz, 0, 40, drumMotor<&RotorMotion::setFastSpeed>},
    {S::DrumAccelSeconds, 0.001, 100, drumMotor<&RotorMotion::setAccelTime>},
    {S::DrumDecelSeconds, 0.001, 100, drumMotor<&RotorMotion::setDecelTime>},

    {S::HornMic1Angle, -1, 1, hornMicrophone<0, &HornMicrophone::setAngle>, kPendingHornMic1 | kCrossTalkWork},
    {S::HornMic1Distance, 0.3, 8, hornMicrophone<0, &HornMicrophone::setDistance>, kPendingHornMic1 | kCrossTalkWork},
    {S::HornMic1Pan, -1, 2, pan<Sm::Mic1PanLeft, Sm::Mic1PanRight>},
    {S::HornMic2Angle, -1, 1, hornMicrophone<1, &HornMicrophone::setAngle>, kPendingHornMic2 | kCrossTalkWork},
    {S::HornMic2Distance, 0.3, 8, hornMicrophone<1, &HornMicrophone::setDistance>, kHornMicrophones | kCrossTalkWork},
    {S::HornMic2Pan, -1, 2, pan<Sm::Mic2PanLeft, Sm::Mic2PanRight>},
    {S::HornMic2Gain, -1, g, smooth<Sm::HornMic2Gain>},
    {S::HornGain, -1, g, smooth<Sm::HornGain>},
    {S::HornFeedGain, -64, 64 * g, smooth<Sm::HornFeedGain>},
    {S::HornLevel, 0, 3, mix<&MicrophoneMix::hornLevel>},
    {S::HornHighPassHz, 0, kHighestHz, path<&SignalPath::setHornHighPass>},

    {S::HornFmRadius, 0, 0.3, hornCabinet<&CabinetSettings::fmRadius>, kPendingCrossDelays},
    {S::HornAmRadius, 0.05, 0.29, hornCabinet<&CabinetSettings::amRadius>, kHornWork},
    {S::HornAttenuationExponent, 0, 3, hornCabinet<&CabinetSettings::attenuationExponent>, kHornWork},
    {S::HornAttenuationDistance, 0.01, 20, hornCabinet<&CabinetSettings::attenuationDistance>, kHornWork},
    {S::HornAttenuationFadeExponent, 0.2, 4, hornCabinet<&CabinetSettings::attenuationFadeExponent>, kHornWork},
    {S::HornReflectionCoeff, -0.2, 1.1, hornCabinet<&CabinetSettings::reflectionCoeff>},
    {S::HornReflectionLpfOctaves, -1, 8, cabinet<&Cabinet::setHornReflectionLpf>},
    {S::HornStaticCutoffHz, 1, kHighestHz, cabinet<&Cabinet::setHornStaticCutoff>},
    {S::HornFlip, -1, 1, cabinet<&Cabinet::setHornFlip>, kHornWork},
    {S::HornOpenBackMode, 0, 2, horn<&HornSettings::openBackMode>, kHornGeometryWork},
    {S::HornRayGain1, -r, r, hornRay<0>},
    {S::HornRayGain2, -r, r, hornRay<1>},
    {S::HornRayGain3, -r, r, hornRay<2>},
    {S::HornRayGain4, -r, r, hornRay<3>},
    {S::HornRayGain5, -r, r, hornRay<4>},
    {S::HornRayGain6, -r, r, hornRay<5>},
    {S::HornRayGain7, -r, r, hornRay<6>},
    {S::HornZAxisGain, -r, r, horn<&HornSettings::zAxisGain>},
    {S::HornStaticGain, -r, r, horn<&HornSettings::staticGain>},
    {S::HornAmpClip, -1, 2, horn<&HornSettings::ampClip>},
    {S::HornDistanceAmpClip, -1, 2, cabinet<&Cabinet::distanceAmpClip>},
    {S::HornFilterSaturation, 0, 1, cabinet<&Cabinet::setHornSaturation>},

    {S::DrumMicAngle, -1, 1, drumModel<&DrumModel::setMicAngle>, kPendingDrum | kCrossTalkWork},
    {S::DrumMicDistance, 0.3, 8, drumModel<&DrumModel::setMicDistance>, kPendingDrum | kCrossTalkWork},
    {S::DrumMicPan, -1, 2, pan<Sm::DrumPanLeft, Sm::DrumPanRight>},
    {S::DrumGain, -1, g, smooth<Sm::DrumGain>},
    {S::DrumFeedGain, -1, g, smooth<Sm::DrumFeedGain>},
    {S::DrumLowPassHz, 0, kHighestHz, path<&SignalPath::setDrumLowPass>},
    {S::DrumFmRadius, 0, 0.3, drumCabinet<&CabinetSettings::fmRadius>, kPendingCrossDelays},
    {S::DrumAmRadius, 0.05, 0.29, drumCabinet<&CabinetSettings::amRadius>, kDrumWork},
    {S::DrumAttenuationExponent, 0, 3, drumCabinet<&CabinetSettings::attenuationExponent>, kDrumWork},
    {S::DrumAttenuationDistance, 0.01, 20, drumCabinet<&CabinetSettings::attenuationDistance>, kPendingDrum | kCrossTalkWork},
    {S::DrumAttenuationFadeExponent, 0.2, 4, drumCabinet<&CabinetSettings::attenuationFadeExponent>, kDrumWork},
    {S::DrumReflectionCoeff, -0.2, 1.1, drumCabinet<&CabinetSettings::reflectionCoeff>},
    {S::DrumReflectionLpfOctaves, -1, 8, cabinet<&Cabinet::setDrumReflectionLpf>},
    {S::DrumStaticCutoffHz, 1, kHighestHz, cabinet<&Cabinet::setDrumStaticCutoff>},
    {S::DrumSplitterHz, 1, kHighestHz, cabinet<&Cabinet::setDrumSplitter>},
    {S::DrumLowStaticGain, -1, g, drum<&DrumSettings::lowStaticGain>},
    {S::DrumFlip, -1, 1, cabinet<&Cabinet::setDrumFlip>, kDrumWork},
    {S::DrumRayGain1, -r, r, drumRay<0>},
    {S::DrumRayGain2, -r, r, drumRay<1>},
    {S::DrumRayGain3, -r, r, drumRay<2>},
    {S::DrumRayGain4, -r, r, drumRay<3>},
    {S::DrumStaticGain, -r, r, drum<&DrumSettings::staticGain>},
    {S::DrumFilterSaturation, 0, 1, cabinet<&Cabinet::setDrumSaturation>},

    {S::PortToHornGain, -1, g, smooth<Sm::PortToHornGain>},
    {S::PortToDrumGain, -1, g, smooth<Sm::PortToDrumGain>},
    {S::DrumToHornGain, -1, g, smooth<Sm::DrumToHornGain>, kPendingCrossDelays},
    {S::HornToDrumGain, -1, g, smooth<Sm::HornToDrumGain>, kPendingCrossDelays},

    {S::RoomReturnGain, -0.03, 0.03 * g, smooth<Sm::RoomReturnGain>},
    {S::NoiseSendGain, -0.2, 1, mix<&MicrophoneMix::noiseSendGain>},
    {S::RoomSize, 0.1, kLargestRoom, room<&RoomSettings::size>, kPendingRoomTaps},
    {S::VirtualRoomSize, 0.1, 8, room<&RoomSettings::virtualSize>, kPendingRoomTaps},
    {S::RoomLeftRightDelay, 0, 5, room<&RoomSettings::leftRightDelay>, kPendingRoomTaps},
    {S::RoomMainCutoffHz, 20, kHighestHz, room<&RoomSettings::mainCutoffHz>, kPendingRoomTaps},
    {S::ColorMidGainDb, -db, db, path<&SignalPath::setColorMidDb>},
    {S::ColorLowGainDb, -db, db, path<&SignalPath::setColorLowDb>},

    {S::HornNoiseLevel, -1, 4, horn<&HornSettings::noiseLevel>},
    {S::DrumNoiseLevel, -1, 128, drum<&DrumSettings::noiseLevel>},
    {S::HornSlowNoiseVolume, -3, 5 * g, hornNoise<&RotorNoisePlayer::setSlowVolume>},
    {S::HornFastNoiseVolume, -4, 6.5 * g, hornNoise<&RotorNoisePlayer::setFastVolume>},
    {S::HornSwitchNoiseVolume, -1, g, hornNoise<&RotorNoisePlayer::setSwitchVolume>},
    {S::DrumSlowNoiseVolume, -1, g, drumNoise<&RotorNoisePlayer::setSlowVolume>},
    {S::DrumFastNoiseVolume, -1, g, drumNoise<&RotorNoisePlayer::setFastVolume>},
    {S::DrumSwitchNoiseVolume, -1, g, drumNoise<&RotorNoisePlayer::setSwitchVolume>},
    {S::NoisePan, 0, 1, pan<Sm::NoisePanA, Sm::NoisePanB>},
};
// clang-format on

static_assert(std::size(kRows) == kSettingCount);
static_assert([] {
  for (std::size_t i = 0; i < kSettingCount; ++i)
    if (kRows[i].setting != static_cast<Setting>(i)) return false;
  return true;
}());

} // namespace

const SettingRow& settingRow(Setting setting) noexcept {
  return kRows[static_cast<std::size_t>(setting)];
}

} // namespace qlx::engine
