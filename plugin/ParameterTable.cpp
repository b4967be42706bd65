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
using engine::kPendingCrossDelays;
using engine::kPendingDrum;
using engine::kPendingHornMic1;
using engine::kPendingHornMic2;
using engine::kPendingRoomTaps;

/// What a moved microphone or source changes beside its own rays: everything that is heard around
/// the corner.
constexpr std::uint32_t kCrossTalkWork = A::kCrossTalkWork;
/// The horn's, the drum's rays and what depends on them.
constexpr std::uint32_t kHornGeometryWork =
    kPendingHornMic1 | kPendingHornMic2 | engine::kPendingReducedHorn;
constexpr std::uint32_t kHornWork = kHornGeometryWork | kPendingCrossDelays;
constexpr std::uint32_t kDrumWork =
    kPendingDrum | engine::kPendingReducedDrum | kPendingCrossDelays;

/// One setting of the engine through one law; geometry is rebuilt by the work that it asks for.
template <S setting, auto law, std::uint32_t work = 0>
void to(A& application, float v) {
  application.set(setting, law(v));
  if constexpr (work != 0) application.request(work);
}

/// Work without a setting: the parameter is heard nowhere, but stored sounds expect the mute.
template <std::uint32_t work>
void ask(A& application, float /*v*/) {
  application.request(work);
}

/// What takes more than a setting and a law.
template <void (A::*operation)(float)>
void by(A& application, float v) {
  (application.*operation)(v);
}

double plain(float v) noexcept { return v; }
double twice(float v) noexcept { return 2.0 * v; }
double switchPosition(float v) noexcept { return steppedPosition(v, 1.0F); }
double ampTypePosition(float v) noexcept { return steppedPosition(v, 2.0F); }

void applyColor(A& a, float v) {
  a.set(S::ColorMidGainDb, 12.0 * v - 3.0);
  a.set(S::ColorLowGainDb, -12.0 * v);
}

void applyAmount(A& a, float v) {
  a.set(S::RoomReturnGain, roomReturnLaw(v));
  a.set(S::NoiseSendGain, noiseSendLaw(v));
}

// The recordings' levels against each other.
void applySlowVolume(A& a, float v) {
  a.set(S::HornSlowNoiseVolume, gainLaw(v) * 5.01187233627);
  a.set(S::DrumSlowNoiseVolume, gainLaw(v) * 0.70794578438);
}

void applyFastVolume(A& a, float v) {
  a.set(S::HornFastNoiseVolume, gainLaw(v) * 6.3095734448);
  a.set(S::DrumFastNoiseVolume, gainLaw(v));
}

void applySwitchVolume(A& a, float v) {
  a.set(S::HornSwitchNoiseVolume, gainLaw(v) * 0.99763115748);
  a.set(S::DrumSwitchNoiseVolume, gainLaw(v) * 0.06294627058);
}

// clang-format off
constexpr std::array<ParameterRow, kNumParameters> kRows = {{
    // index, name, display, default, what is done with it, kept (unless Kept), steps (unless fine)
    // Modes and levers
    {0, "Bypass", kOnOff, 0.0F, to<S::Bypass, switchPosition>, kInAllPresets, kSwitchSteps},
    {1, "CPUmode", kCpuModeWord, 1.0F, by<&A::applyCpuMode>, kInAllPresets, kSwitchSteps},
    {2, "Lever", kLeverPlace, 0.0F, by<&A::applyLever>, kInAllPresets},
    {3, "Speed", kSilent, 0.0F, nothing, kInAllPresets, kSwitchSteps},
    {4, "Stop", kStopWord, 0.0F, by<&A::applyStop>, kInAllPresets, kSwitchSteps},

    // Amplifier, tone, placement and room
    {5, "Mech", kGain, 0.5F, by<&A::applyMech>},
    {6, "Bottom", kTone, 0.5F, to<S::BottomGainDb, toneDb>},
    {7, "LoMid", kTone, 0.5F, to<S::LoMidGainDb, toneDb>},
    {8, "Presence", kTone, 0.501063F, to<S::PresenceGainDb, toneDb>},
    {9, "Top", kTone, 0.5F, to<S::TopGainDb, toneDb>},
    {10, "Setup", kMicSetup, 0.25F, by<&A::applySetup>, kKept, kSetupSteps},
    {11, "Input", kInputGain, 0.500008F, to<S::InputGain, inputGainLaw>},
    {12, "Type", kAmpType, 0.5F, to<S::AmplifierType, ampTypePosition>, kKept, kTypeSteps},
    {13, "Drive", kDriveGain, 0.5F, to<S::DriveGain, driveLaw>},
    {14, "Size", kRoomNumber, 0.0F, by<&A::applySize>, kKept, kSizeSteps},
    {15, "Color", kPercent, 0.508422F, applyColor},
    {16, "Amount", kRoomAmount, 0.0F, applyAmount},

    // Horn
    {17, "HSlowSpd", kRotorSpeed, 0.0673F, to<S::HornSlowSpeedHz, rotorSpeedLaw>},
    {18, "HFastSpd", kRotorSpeed, 0.677088F, to<S::HornFastSpeedHz, rotorSpeedLaw>},
    {19, "HAccel", kRampTime, 0.375887F, to<S::HornAccelSeconds, timeLaw>},
    {20, "HDecel", kRampTime, 0.455859F, to<S::HornDecelSeconds, timeLaw>},
    {21, "HDistance", kDistance, 0.5F, by<&A::applyHornDistance>},
    {22, "HHPF", kHighPass, 0.0F, to<S::HornHighPassHz, hornHighPassLaw>},
    {23, "HGain", kGain, 0.5F, to<S::HornGain, gainLaw>},

    // Drum
    {24, "DSlowSpd", kRotorSpeed, 0.0931F, to<S::DrumSlowSpeedHz, rotorSpeedLaw>},
    {25, "DFastSpd", kRotorSpeed, 0.65282F, to<S::DrumFastSpeedHz, rotorSpeedLaw>},
    {26, "DAccel", kRampTime, 0.630063F, to<S::DrumAccelSeconds, timeLaw>},
    {27, "DDecel", kRampTime, 0.741758F, to<S::DrumDecelSeconds, timeLaw>},
    {28, "DDistance", kDistance, 0.0F, by<&A::applyDrumDistance>},
    {29, "DLPF", kLowPass, 1.0F, to<S::DrumLowPassHz, drumLowPassLaw>},
    {30, "DGain", kGain, 0.5F, to<S::DrumGain, gainLaw>},

    // Reserved; MIDI
    {31, "", kSilent, 0.5F},
    {32, "", kSilent, 0.5F},
    {33, "", kSilent, 1.0F},
    {34, "", kSilent, 0.5F},
    {35, "MIDIchl", kMidiChannel, 1.0F, by<&A::applyMidiChannel>, kInAllPresets},
    {36, "", kSilent, 0.0F, nothing, kNotKept},

    // Horn: microphones, rotor and cabinet
    {37, "Horn Gain", kGain, 0.5F, to<S::HornFeedGain, hornFeedLaw>},
    {38, "Horn Mic1 Angle", kAngle, 0.19F, to<S::HornMic1Angle, micAngleLaw, kPendingHornMic1 | kCrossTalkWork>},
    {39, "Horn Mic1 Panorama", kPanorama, 0.0F, to<S::HornMic1Pan, plain>},
    {40, "Horn Mic2 Angle", kAngle, 0.52F, to<S::HornMic2Angle, micAngleLaw, kPendingHornMic2 | kCrossTalkWork>},
    {41, "Horn Mic2 Distance", kMic2Offset, 0.2575F, by<&A::applyMic2Distance>},
    {42, "Horn Mic2 Panorama", kPanorama, 1.0F, to<S::HornMic2Pan, plain>},
    {43, "Horn Mic2 Gain", kGain, 0.55F, to<S::HornMic2Gain, gainLaw>},
    {44, "Horn FM Radius", kRadius, 0.245586F, to<S::HornFmRadius, radiusLaw, kPendingCrossDelays>},
    {45, "Horn Attenuation", kTwice, 0.497676F, to<S::HornAttenuationExponent, twice, kHornWork>},
    {46, "Horn Ray 1 (front)", kPlain, 0.497715F, to<S::HornRayGain1, plain>},
    {47, "Horn Ray 2 (back/sides)", kPlain, 0.5F, to<S::HornRayGain2, plain>},
    {48, "Horn Ray 3 (back-right)", kPlain, 0.5F, to<S::HornRayGain3, plain>},
    {49, "Horn Ray 4 (back-left)", kPlain, 0.5F, to<S::HornRayGain4, plain>},
    {50, "Horn Ray 5 (LBR)", kPlain, 0.5F, to<S::HornRayGain5, plain>},
    {51, "Horn Ray 6 (RBL)", kPlain, 0.5F, to<S::HornRayGain6, plain>},
    {52, "Horn Rays 7-10 (misc)", kPlain, 0.559258F, to<S::HornRayGain7, plain>},
    {53, "Horn LPF cut low", kFrequency, 0.0F},
    {54, "Horn LPF cut high", kFrequency, 1.0F},
    {55, "Horn Reflection coeff", kCoefficient, 0.922695F, to<S::HornReflectionCoeff, coefLaw>},
    {56, "Horn Z-axis rays", kPlain, 0.696738F, to<S::HornZAxisGain, plain>},
    {57, "", kSilent, 0.0F, nothing, kNotKept},
    {58, "Horn Flip", kFlip, 0.0F, to<S::HornFlip, flipLaw, kHornWork>},
    {59, "", kSilent, 0.0F, nothing, kNotKept},
    {60, "Horn Reflection LPF", kOctaves, 0.348672F, to<S::HornReflectionLpfOctaves, twice>},

    // Drum: microphone, rotor and cabinet
    {61, "Drum Gain", kGain, 0.61418F, to<S::DrumFeedGain, gainLaw>},
    {62, "Drum Mic1 Angle", kAngle, 0.5F, to<S::DrumMicAngle, micAngleLaw, kPendingDrum | kCrossTalkWork>},
    {63, "Drum Mic1 Pan", kPanorama, 0.476328F, to<S::DrumMicPan, plain>},
    {64, "", kSilent, 0.0F, nothing, kNotKept},
    {65, "", kSilent, 0.0F, nothing, kNotKept},
    {66, "", kSilent, 0.0F, nothing, kNotKept},
    {67, "", kSilent, 0.0F, nothing, kNotKept},
    {68, "Drum FM Radius", kRadius, 0.658691F, to<S::DrumFmRadius, radiusLaw, kPendingCrossDelays>},
    {69, "Drum Attenuation", kTwice, 0.492148F, to<S::DrumAttenuationExponent, twice, kDrumWork>},
    {70, "Drum Reflection coeff", kCoefficient, 0.923145F, to<S::DrumReflectionCoeff, coefLaw>},
    {71, "", kSilent, 0.0F, nothing, kNotKept},
    {72, "Horn Open Back Mode", kOnOff, 0.0F, to<S::HornOpenBackMode, openBackModeLaw, kHornGeometryWork>},
    {73, "Drum Open Back Mode", kNotImplemented, 0.0F, nothing, kNotKept},

    // Amplifier and cross-talk levels
    {74, "Amp Post-drive Gain", kGain, 0.5F, to<S::PostDriveGain, gainLaw>},
    {75, "BR to Tube Mic Gain", kGain, 0.06F, to<S::PortToHornGain, gainLaw>},
    {76, "BR to Drum Mic Gain", kGain, 0.184834F, to<S::PortToDrumGain, gainLaw>},
    {77, "Drum->Tube feedback", kGain, 0.4F, to<S::DrumToHornGain, gainLaw, kPendingCrossDelays>},
    {78, "Horn->Drum feedback", kGain, 0.3F, to<S::HornToDrumGain, gainLaw, kPendingCrossDelays>},
    {79, "", kSilent, 0.0F, ask<kPendingCrossDelays>},
    {80, "Drum Flip", kFlip, 0.0F, to<S::DrumFlip, flipLaw, kDrumWork>},
    {81, "", kSilent, 0.0F, nothing, kNotKept},
    {82, "", kSilent, 0.0F, nothing, kNotKept},
    {83, "", kSilent, 0.0F, nothing, kNotKept},
    {84, "", kSilent, 0.0F, nothing, kNotKept},

    // Drum cabinet, attenuation of both rotors
    {85, "Drum Ray 1 (front)", kPlain, 0.5F, to<S::DrumRayGain1, plain>},
    {86, "Drum Ray 2 (back/sides)", kPlain, 0.5F, to<S::DrumRayGain2, plain>},
    {87, "Drum LPF cut low", kFrequency, 0.849902F},
    {88, "Drum LPF cut high", kFrequency, 1.0F},
    {89, "Drum Reflection LPF", kOctaves, 0.13F, to<S::DrumReflectionLpfOctaves, twice>},
    {90, "Horn Attenuation distance", kHornReach, 0.657754F, to<S::HornAttenuationDistance, hornAttenuationDistanceLaw, kHornWork>},
    {91, "Drum Attenuation distance", kDrumReach, 0.653926F, to<S::DrumAttenuationDistance, drumAttenuationDistanceLaw, kPendingDrum | kCrossTalkWork>},
    {92, "Horn Static Ray", kPlain, 0.353047F, to<S::HornStaticGain, plain>},
    {93, "Horn Att Decay Exp", kDecayExponent, 0.5F, to<S::HornAttenuationFadeExponent, decayExponentLaw, kHornWork>},
    {94, "Drum Att Decay Exp", kDecayExponent, 0.500977F, to<S::DrumAttenuationFadeExponent, decayExponentLaw, kDrumWork>},
    {95, "Drum Static Ray", kPlain, 0.0F, to<S::DrumStaticGain, plain>},
    {96, "Horn AM Radius", kRadius, 0.658926F, to<S::HornAmRadius, radiusLaw, kHornWork>},
    {97, "Drum AM Radius", kRadius, 0.67334F, to<S::DrumAmRadius, radiusLaw, kDrumWork>},

    // Saturation, room and motor noise
    {98, "Horn Filter Saturation", kPlain, 0.3F, to<S::HornFilterSaturation, saturationLaw>},
    {99, "Early Refl. Room Size", kRoomSize, 0.193426F, to<S::RoomSize, roomSizeLaw, kPendingRoomTaps>},
    {100, "Early Refl. Virtual Room Size", kVirtualRoomSize, 0.371357F, to<S::VirtualRoomSize, virtualRoomSizeLaw, kPendingRoomTaps>},
    {101, "Early Refl. LR Delay", kLeftRightDelay, 0.241094F, to<S::RoomLeftRightDelay, leftRightDelayLaw, kPendingRoomTaps>},
    {102, "Slow Sample Volume", kGain, 0.125F, applySlowVolume},
    {103, "Fast Sample Volume", kGain, 0.170079F, applyFastVolume},
    {104, "Accel Sample Volume", kGain, 0.100002F},
    {105, "Decel Sample Volume", kGain, 0.120002F, applySwitchVolume},
    {106, "Early Refl. Main Cutoff", kFrequency, 0.69897F, to<S::RoomMainCutoffHz, freqLaw, kPendingRoomTaps>},
    {107, "Early Refl. X Cutoff", kPlain, 0.0F, ask<kPendingRoomTaps>},
    {108, "", kSilent, 0.0F, nothing, kNotKept},
    {109, "Slow Speed Button", kOnOff, 0.0F},

    // Drum and horn, continued
    {110, "Drum Filter Saturation", kPlain, 0.5F, to<S::DrumFilterSaturation, saturationLaw>},
    {111, "Drum Static Filter Cutoff", kFrequency, 1.0F, to<S::DrumStaticCutoffHz, freqLaw>},
    {112, "Horn Static Filter Cutoff", kFrequency, 0.256055F, to<S::HornStaticCutoffHz, freqLaw>},
    {113, "Drum Ray 3 (back-left)", kPlain, 0.5F, to<S::DrumRayGain3, plain>},
    {114, "Drum Ray 4 (back-right)", kPlain, 0.5F, to<S::DrumRayGain4, plain>},
    {115, "Drum Sample Volume", kGain, 0.789297F, by<&A::applyDrumSampleVolume>},
    {116, "Drum Splitter Frequency", kSplitter, 0.30103F, to<S::DrumSplitterHz, drumSplitterLaw>},
    {117, "Drum LP Static Gain", kGain, 0.328904F, to<S::DrumLowStaticGain, gainLaw>},
    {118, "Bypass Speakers (Amp Only)", kOnOff, 0.0F, to<S::SpeakersBypassed, switchPosition>},
    {119, "Horn Amplitude Clip", kCoefficient, 0.795879F, to<S::HornAmpClip, coefLaw>},
}};

constexpr unsigned char kDefaultsOrder[] = {
    2, 37, 38, 21, 39, 23, 40, 41, 42, 43, 17, 18, 44, 45, 46, 47, 48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 19, 20,
    58, 59, 60, 61, 62, 28, 63, 30, 64, 65, 66, 67, 26, 27, 24, 25, 68, 69, 70, 22, 71, 72, 73, 74, 13, 75, 76, 77,
    78, 79, 80, 81, 82, 83, 84, 85, 86, 87, 88, 89, 90, 12, 91, 92, 93, 94, 95, 96, 97, 98, 16, 99, 100, 101, 5,
    102, 103, 104, 105, 106, 107, 29, 108, 8, 4, 109, 3, 7, 9, 110, 11, 111, 112, 113, 114, 115, 116, 117, 118, 10,
    119, 6, 15, 14, 1, 35, 0};
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

std::span<const unsigned char> parameterDefaultsOrder() noexcept { return kDefaultsOrder; }

} // namespace qlx::plugin
