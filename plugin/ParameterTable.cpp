// SPDX-License-Identifier: ISC
#include "plugin/ParameterTable.h"

#include "engine/settings/PendingWork.h"
#include "engine/settings/Setting.h"
#include "plugin/ParameterApplication.h"
#include "plugin/parameters/ParameterLaws.h"

#include <algorithm>

namespace qlx::plugin {

namespace {

using A = ParameterApplication;
using S = engine::Setting;

/// One setting of the engine through one law.
template <S setting, auto law>
void setsEngine(A& application, float v) {
  application.set(setting, law(v));
}

/// Work without a setting: the parameter changes no sound, but a stored value of it has always come
/// with the mute.
template <std::uint32_t work>
void requests(A& application, float /*v*/) {
  application.request(work);
}

/// What takes more than a setting and a law.
template <void (A::*operation)(float)>
void calls(A& application, float v) {
  (application.*operation)(v);
}

double plain(float v) noexcept { return v; }
double twice(float v) noexcept { return 2.0 * v; }
double switchPosition(float v) noexcept { return steppedPosition(v, 1.0F); }
double ampTypePosition(float v) noexcept { return steppedPosition(v, 2.0F); }

/// One control for two filters of the room's return: mids up from -3 dB to 9 dB, lows down to -12
/// dB.
void applyColor(A& a, float v) {
  a.set(S::ColorMidGainDb, 12.0 * v - 3.0);
  a.set(S::ColorLowGainDb, -12.0 * v);
}

void applyAmount(A& a, float v) {
  a.set(S::RoomReturnGain, roomReturnLaw(v));
  a.set(S::NoiseSendGain, noiseSendLaw(v));
}

// The recordings' levels against each other.
constexpr double kHornSlowLevel = 5.01187233627;   // +14 dB
constexpr double kDrumSlowLevel = 0.70794578438;   // -3 dB
constexpr double kHornFastLevel = 6.3095734448;    // +16 dB
constexpr double kHornSwitchLevel = 0.99763115748; // -0.02 dB
constexpr double kDrumSwitchLevel = 0.06294627058; // -24.02 dB

void applySlowVolume(A& a, float v) {
  a.set(S::HornSlowNoiseVolume, gainLaw(v) * kHornSlowLevel);
  a.set(S::DrumSlowNoiseVolume, gainLaw(v) * kDrumSlowLevel);
}

void applyFastVolume(A& a, float v) {
  a.set(S::HornFastNoiseVolume, gainLaw(v) * kHornFastLevel);
  a.set(S::DrumFastNoiseVolume, gainLaw(v));
}

void applySwitchVolume(A& a, float v) {
  a.set(S::HornSwitchNoiseVolume, gainLaw(v) * kHornSwitchLevel);
  a.set(S::DrumSwitchNoiseVolume, gainLaw(v) * kDrumSwitchLevel);
}

// clang-format off
constexpr std::array<ParameterRow, kNumParameters> kRows = {{
    // index, name, display, default, what is done with it, kept (unless Kept), steps (unless fine)
    // Modes and levers
    {kBypass, "Bypass", kOnOff, 0.0F, setsEngine<S::Bypass, switchPosition>, kInAllPresets, kSwitchSteps},
    {kCPUmode, "CPUmode", kCpuModeWord, 1.0F, calls<&A::applyCpuMode>, kInAllPresets, kSwitchSteps},
    {kLever, "Lever", kLeverPosition, 0.0F, calls<&A::applyLever>, kInAllPresets},
    {kSpeed, "Speed", kSilent, 0.0F, nothing, kInAllPresets, kSwitchSteps},
    {kStop, "Stop", kStopWord, 0.0F, calls<&A::applyStop>, kInAllPresets, kSwitchSteps},

    // Amplifier, tone, placement and room
    {kMech, "Mech", kGain, 0.5F, calls<&A::applyMech>},
    {kBottom, "Bottom", kTone, 0.5F, setsEngine<S::BottomGainDb, toneDb>},
    {kLoMid, "LoMid", kTone, 0.5F, setsEngine<S::LoMidGainDb, toneDb>},
    {kPresence, "Presence", kTone, 0.501063F, setsEngine<S::PresenceGainDb, toneDb>},
    {kTop, "Top", kTone, 0.5F, setsEngine<S::TopGainDb, toneDb>},
    {kSetup, "Setup", kMicSetup, 0.25F, calls<&A::applySetup>, kKept, kSetupSteps},
    {kInput, "Input", kInputGain, 0.500008F, setsEngine<S::InputGain, inputGainLaw>},
    {kType, "Type", kAmpType, 0.5F, setsEngine<S::AmplifierType, ampTypePosition>, kKept, kTypeSteps},
    {kDrive, "Drive", kDriveGain, 0.5F, setsEngine<S::DriveGain, driveLaw>},
    {kSize, "Size", kRoomNumber, 0.0F, calls<&A::applySize>, kKept, kSizeSteps},
    {kColor, "Color", kPercent, 0.508422F, applyColor},
    {kAmount, "Amount", kRoomAmount, 0.0F, applyAmount},

    // Horn
    {kHSlowSpd, "HSlowSpd", kRotorSpeed, 0.0673F, setsEngine<S::HornSlowSpeedHz, rotorSpeedLaw>},
    {kHFastSpd, "HFastSpd", kRotorSpeed, 0.677088F, setsEngine<S::HornFastSpeedHz, rotorSpeedLaw>},
    {kHAccel, "HAccel", kRampTime, 0.375887F, setsEngine<S::HornAccelSeconds, timeLaw>},
    {kHDecel, "HDecel", kRampTime, 0.455859F, setsEngine<S::HornDecelSeconds, timeLaw>},
    {kHDistance, "HDistance", kDistance, 0.5F, calls<&A::applyHornDistance>},
    {kHHPF, "HHPF", kHighPass, 0.0F, setsEngine<S::HornHighPassHz, hornHighPassLaw>},
    {kHGain, "HGain", kGain, 0.5F, setsEngine<S::HornGain, gainLaw>},

    // Drum
    {kDSlowSpd, "DSlowSpd", kRotorSpeed, 0.0931F, setsEngine<S::DrumSlowSpeedHz, rotorSpeedLaw>},
    {kDFastSpd, "DFastSpd", kRotorSpeed, 0.65282F, setsEngine<S::DrumFastSpeedHz, rotorSpeedLaw>},
    {kDAccel, "DAccel", kRampTime, 0.630063F, setsEngine<S::DrumAccelSeconds, timeLaw>},
    {kDDecel, "DDecel", kRampTime, 0.741758F, setsEngine<S::DrumDecelSeconds, timeLaw>},
    {kDDistance, "DDistance", kDistance, 0.0F, calls<&A::applyDrumDistance>},
    {kDLPF, "DLPF", kLowPass, 1.0F, setsEngine<S::DrumLowPassHz, drumLowPassLaw>},
    {kDGain, "DGain", kGain, 0.5F, setsEngine<S::DrumGain, gainLaw>},

    // Reserved; MIDI
    {kReserved31, "", kSilent, 0.5F},
    {kReserved32, "", kSilent, 0.5F},
    {kReserved33, "", kSilent, 1.0F},
    {kReserved34, "", kSilent, 0.5F},
    {kMIDIchl, "MIDIchl", kMidiChannel, 1.0F, calls<&A::applyMidiChannel>, kInAllPresets},
    {kReserved36, "", kSilent, 0.0F, nothing, kNotKept},

    // Horn: microphones, rotor and cabinet
    {kHornGain, "Horn Gain", kGain, 0.5F, setsEngine<S::HornFeedGain, hornFeedLaw>},
    {kHornMic1Angle, "Horn Mic1 Angle", kAngle, 0.19F, setsEngine<S::HornMic1Angle, micAngleLaw>},
    {kHornMic1Panorama, "Horn Mic1 Panorama", kPanorama, 0.0F, setsEngine<S::HornMic1Pan, plain>},
    {kHornMic2Angle, "Horn Mic2 Angle", kAngle, 0.52F, setsEngine<S::HornMic2Angle, micAngleLaw>},
    {kHornMic2Distance, "Horn Mic2 Distance", kMic2Offset, 0.2575F, calls<&A::applyMic2Distance>},
    {kHornMic2Panorama, "Horn Mic2 Panorama", kPanorama, 1.0F, setsEngine<S::HornMic2Pan, plain>},
    {kHornMic2Gain, "Horn Mic2 Gain", kGain, 0.55F, setsEngine<S::HornMic2Gain, gainLaw>},
    {kHornFMRadius, "Horn FM Radius", kRadius, 0.245586F, setsEngine<S::HornFmRadius, radiusLaw>},
    {kHornAttenuation, "Horn Attenuation", kTwice, 0.497676F, setsEngine<S::HornAttenuationExponent, twice>},
    {kHornRay1, "Horn Ray 1 (front)", kPlain, 0.497715F, setsEngine<S::HornRayGain1, plain>},
    {kHornRay2, "Horn Ray 2 (back/sides)", kPlain, 0.5F, setsEngine<S::HornRayGain2, plain>},
    {kHornRay3, "Horn Ray 3 (back-right)", kPlain, 0.5F, setsEngine<S::HornRayGain3, plain>},
    {kHornRay4, "Horn Ray 4 (back-left)", kPlain, 0.5F, setsEngine<S::HornRayGain4, plain>},
    {kHornRay5, "Horn Ray 5 (LBR)", kPlain, 0.5F, setsEngine<S::HornRayGain5, plain>},
    {kHornRay6, "Horn Ray 6 (RBL)", kPlain, 0.5F, setsEngine<S::HornRayGain6, plain>},
    {kHornRays7To10, "Horn Rays 7-10 (misc)", kPlain, 0.559258F, setsEngine<S::HornRayGain7, plain>},
    {kHornLPFCutLow, "Horn LPF cut low", kFrequency, 0.0F},
    {kHornLPFCutHigh, "Horn LPF cut high", kFrequency, 1.0F},
    {kHornReflectionCoeff, "Horn Reflection coeff", kCoefficient, 0.922695F, setsEngine<S::HornReflectionCoeff, coefLaw>},
    {kHornZAxisRays, "Horn Z-axis rays", kPlain, 0.696738F, setsEngine<S::HornZAxisGain, plain>},
    {kReserved57, "", kSilent, 0.0F, nothing, kNotKept},
    {kHornFlip, "Horn Flip", kFlip, 0.0F, setsEngine<S::HornFlip, flipLaw>},
    {kReserved59, "", kSilent, 0.0F, nothing, kNotKept},
    {kHornReflectionLPF, "Horn Reflection LPF", kOctaves, 0.348672F, setsEngine<S::HornReflectionLpfOctaves, twice>},

    // Drum: microphone, rotor and cabinet
    {kDrumGain, "Drum Gain", kGain, 0.61418F, setsEngine<S::DrumFeedGain, gainLaw>},
    {kDrumMic1Angle, "Drum Mic1 Angle", kAngle, 0.5F, setsEngine<S::DrumMicAngle, micAngleLaw>},
    {kDrumMic1Pan, "Drum Mic1 Pan", kPanorama, 0.476328F, setsEngine<S::DrumMicPan, plain>},
    {kReserved64, "", kSilent, 0.0F, nothing, kNotKept},
    {kReserved65, "", kSilent, 0.0F, nothing, kNotKept},
    {kReserved66, "", kSilent, 0.0F, nothing, kNotKept},
    {kReserved67, "", kSilent, 0.0F, nothing, kNotKept},
    {kDrumFMRadius, "Drum FM Radius", kRadius, 0.658691F, setsEngine<S::DrumFmRadius, radiusLaw>},
    {kDrumAttenuation, "Drum Attenuation", kTwice, 0.492148F, setsEngine<S::DrumAttenuationExponent, twice>},
    {kDrumReflectionCoeff, "Drum Reflection coeff", kCoefficient, 0.923145F, setsEngine<S::DrumReflectionCoeff, coefLaw>},
    {kDistanceForEditor, "", kSilent, 0.0F, nothing, kNotKept},
    {kHornOpenBackMode, "Horn Open Back Mode", kOnOff, 0.0F, setsEngine<S::HornOpenBackMode, openBackModeLaw>},
    {kDrumOpenBackMode, "Drum Open Back Mode", kNotImplemented, 0.0F, nothing, kNotKept},

    // Amplifier and cross-talk levels
    {kAmpPostDriveGain, "Amp Post-drive Gain", kGain, 0.5F, setsEngine<S::PostDriveGain, gainLaw>},
    {kBRToTubeMicGain, "BR to Tube Mic Gain", kGain, 0.06F, setsEngine<S::PortToHornGain, gainLaw>},
    {kBRToDrumMicGain, "BR to Drum Mic Gain", kGain, 0.184834F, setsEngine<S::PortToDrumGain, gainLaw>},
    {kDrumToTubeFeedback, "Drum->Tube feedback", kGain, 0.4F, setsEngine<S::DrumToHornGain, gainLaw>},
    {kHornToDrumFeedback, "Horn->Drum feedback", kGain, 0.3F, setsEngine<S::HornToDrumGain, gainLaw>},
    {kReserved79, "", kSilent, 0.0F, requests<engine::kPendingCrossDelays>},
    {kDrumFlip, "Drum Flip", kFlip, 0.0F, setsEngine<S::DrumFlip, flipLaw>},
    {kReserved81, "", kSilent, 0.0F, nothing, kNotKept},
    {kReserved82, "", kSilent, 0.0F, nothing, kNotKept},
    {kReserved83, "", kSilent, 0.0F, nothing, kNotKept},
    {kReserved84, "", kSilent, 0.0F, nothing, kNotKept},

    // Drum cabinet, attenuation of both rotors
    {kDrumRay1, "Drum Ray 1 (front)", kPlain, 0.5F, setsEngine<S::DrumRayGain1, plain>},
    {kDrumRay2, "Drum Ray 2 (back/sides)", kPlain, 0.5F, setsEngine<S::DrumRayGain2, plain>},
    {kDrumLPFCutLow, "Drum LPF cut low", kFrequency, 0.849902F},
    {kDrumLPFCutHigh, "Drum LPF cut high", kFrequency, 1.0F},
    {kDrumReflectionLPF, "Drum Reflection LPF", kOctaves, 0.13F, setsEngine<S::DrumReflectionLpfOctaves, twice>},
    {kHornAttenuationDistance, "Horn Attenuation distance", kHornReach, 0.657754F, setsEngine<S::HornAttenuationDistance, hornAttenuationDistanceLaw>},
    {kDrumAttenuationDistance, "Drum Attenuation distance", kDrumReach, 0.653926F, setsEngine<S::DrumAttenuationDistance, drumAttenuationDistanceLaw>},
    {kHornStaticRay, "Horn Static Ray", kPlain, 0.353047F, setsEngine<S::HornStaticGain, plain>},
    {kHornAttDecayExp, "Horn Att Decay Exp", kDecayExponent, 0.5F, setsEngine<S::HornAttenuationFadeExponent, decayExponentLaw>},
    {kDrumAttDecayExp, "Drum Att Decay Exp", kDecayExponent, 0.500977F, setsEngine<S::DrumAttenuationFadeExponent, decayExponentLaw>},
    {kDrumStaticRay, "Drum Static Ray", kPlain, 0.0F, setsEngine<S::DrumStaticGain, plain>},
    {kHornAMRadius, "Horn AM Radius", kRadius, 0.658926F, setsEngine<S::HornAmRadius, radiusLaw>},
    {kDrumAMRadius, "Drum AM Radius", kRadius, 0.67334F, setsEngine<S::DrumAmRadius, radiusLaw>},

    // Saturation, room and motor noise
    {kHornFilterSaturation, "Horn Filter Saturation", kPlain, 0.3F, setsEngine<S::HornFilterSaturation, saturationLaw>},
    {kEarlyReflRoomSize, "Early Refl. Room Size", kRoomSize, 0.193426F, setsEngine<S::RoomSize, roomSizeLaw>},
    {kEarlyReflVirtualRoomSize, "Early Refl. Virtual Room Size", kVirtualRoomSize, 0.371357F, setsEngine<S::VirtualRoomSize, virtualRoomSizeLaw>},
    {kEarlyReflLRDelay, "Early Refl. LR Delay", kLeftRightDelay, 0.241094F, setsEngine<S::RoomLeftRightDelay, leftRightDelayLaw>},
    {kSlowSampleVolume, "Slow Sample Volume", kGain, 0.125F, applySlowVolume},
    {kFastSampleVolume, "Fast Sample Volume", kGain, 0.170079F, applyFastVolume},
    {kAccelSampleVolume, "Accel Sample Volume", kGain, 0.100002F},
    {kDecelSampleVolume, "Decel Sample Volume", kGain, 0.120002F, applySwitchVolume},
    {kEarlyReflMainCutoff, "Early Refl. Main Cutoff", kFrequency, 0.69897F, setsEngine<S::RoomMainCutoffHz, freqLaw>},
    {kEarlyReflXCutoff, "Early Refl. X Cutoff", kPlain, 0.0F, requests<engine::kPendingRoomTaps>},
    {kReserved108, "", kSilent, 0.0F, nothing, kNotKept},
    {kSlowSpeedButton, "Slow Speed Button", kOnOff, 0.0F},

    // Drum and horn, continued
    {kDrumFilterSaturation, "Drum Filter Saturation", kPlain, 0.5F, setsEngine<S::DrumFilterSaturation, saturationLaw>},
    {kDrumStaticFilterCutoff, "Drum Static Filter Cutoff", kFrequency, 1.0F, setsEngine<S::DrumStaticCutoffHz, freqLaw>},
    {kHornStaticFilterCutoff, "Horn Static Filter Cutoff", kFrequency, 0.256055F, setsEngine<S::HornStaticCutoffHz, freqLaw>},
    {kDrumRay3, "Drum Ray 3 (back-left)", kPlain, 0.5F, setsEngine<S::DrumRayGain3, plain>},
    {kDrumRay4, "Drum Ray 4 (back-right)", kPlain, 0.5F, setsEngine<S::DrumRayGain4, plain>},
    {kDrumSampleVolume, "Drum Sample Volume", kGain, 0.789297F, calls<&A::applyDrumSampleVolume>},
    {kDrumSplitterFrequency, "Drum Splitter Frequency", kSplitter, 0.30103F, setsEngine<S::DrumSplitterHz, drumSplitterLaw>},
    {kDrumLPStaticGain, "Drum LP Static Gain", kGain, 0.328904F, setsEngine<S::DrumLowStaticGain, gainLaw>},
    {kBypassSpeakers, "Bypass Speakers (Amp Only)", kOnOff, 0.0F, setsEngine<S::SpeakersBypassed, switchPosition>},
    {kHornAmplitudeClip, "Horn Amplitude Clip", kCoefficient, 0.795879F, setsEngine<S::HornAmpClip, coefLaw>},
}};

constexpr std::int32_t kDefaultsOrder[] = {
    kLever, kHornGain, kHornMic1Angle, kHDistance, kHornMic1Panorama, kHGain, kHornMic2Angle, kHornMic2Distance,
    kHornMic2Panorama, kHornMic2Gain, kHSlowSpd, kHFastSpd, kHornFMRadius, kHornAttenuation, kHornRay1, kHornRay2,
    kHornRay3, kHornRay4, kHornRay5, kHornRay6, kHornRays7To10, kHornLPFCutLow, kHornLPFCutHigh, kHornReflectionCoeff,
    kHornZAxisRays, kReserved57, kHAccel, kHDecel, kHornFlip, kReserved59, kHornReflectionLPF, kDrumGain,
    kDrumMic1Angle, kDDistance, kDrumMic1Pan, kDGain, kReserved64, kReserved65, kReserved66, kReserved67, kDAccel,
    kDDecel, kDSlowSpd, kDFastSpd, kDrumFMRadius, kDrumAttenuation, kDrumReflectionCoeff, kHHPF, kDistanceForEditor,
    kHornOpenBackMode, kDrumOpenBackMode, kAmpPostDriveGain, kDrive, kBRToTubeMicGain, kBRToDrumMicGain,
    kDrumToTubeFeedback, kHornToDrumFeedback, kReserved79, kDrumFlip, kReserved81, kReserved82, kReserved83,
    kReserved84, kDrumRay1, kDrumRay2, kDrumLPFCutLow, kDrumLPFCutHigh, kDrumReflectionLPF, kHornAttenuationDistance,
    kType, kDrumAttenuationDistance, kHornStaticRay, kHornAttDecayExp, kDrumAttDecayExp, kDrumStaticRay, kHornAMRadius,
    kDrumAMRadius, kHornFilterSaturation, kAmount, kEarlyReflRoomSize, kEarlyReflVirtualRoomSize, kEarlyReflLRDelay,
    kMech, kSlowSampleVolume, kFastSampleVolume, kAccelSampleVolume, kDecelSampleVolume, kEarlyReflMainCutoff,
    kEarlyReflXCutoff, kDLPF, kReserved108, kPresence, kStop, kSlowSpeedButton, kSpeed, kLoMid, kTop,
    kDrumFilterSaturation, kInput, kDrumStaticFilterCutoff, kHornStaticFilterCutoff, kDrumRay3, kDrumRay4,
    kDrumSampleVolume, kDrumSplitterFrequency, kDrumLPStaticGain, kBypassSpeakers, kSetup, kHornAmplitudeClip, kBottom,
    kColor, kSize, kCPUmode, kMIDIchl, kBypass};
// clang-format on

constexpr bool rowsStandAtTheirIndex() {
  return std::ranges::all_of(kRows, [](const ParameterRow& row) {
    return &row == &kRows[static_cast<std::size_t>(row.index)];
  });
}
static_assert(rowsStandAtTheirIndex());

} // namespace

const ParameterRow* parameterRow(std::int32_t index) noexcept {
  if (index < 0 || index >= kNumParameters) return nullptr;
  return &kRows[static_cast<std::size_t>(index)];
}

std::span<const std::int32_t> parameterDefaultsOrder() noexcept { return kDefaultsOrder; }

} // namespace qlx::plugin
