// SPDX-License-Identifier: ISC
#include "plugin/parameters/ParameterDisplays.h"

#include "midi/MidiLever.h"
#include "plugin/parameters/ParameterFormatter.h"
#include "plugin/parameters/ParameterLaws.h"

namespace qlx::plugin {

namespace {

constexpr ParameterFormatter kFormat;

const char* none(float) noexcept { return " "; }
const char* decibels(float) noexcept { return "dB"; }
const char* hertz(float) noexcept { return "Hz"; }
const char* degrees(float) noexcept { return "deg"; }
const char* percent(float) noexcept { return "%"; }
const char* centimetres(float) noexcept { return "cm"; }
const char* octaves(float) noexcept { return "oct"; }

ShortText choice(bool second, const char* first, const char* other) noexcept {
  return ShortText(second ? other : first);
}
bool isOn(float v) noexcept { return steppedPosition(v, 1.0F) != 0; }

ShortText leverPlace(float v) noexcept {
  if (v <= 0.005) return ShortText("Chorale");
  if (v >= 0.995) return ShortText("Tremolo");
  return ShortText::whole(steppedPosition(v, 100.0F));
}

ShortText micSetup(float v) noexcept {
  return ShortText(kFormat.micSetup(v)).append(kFormat.micSetupDetail(v));
}

ShortText midiChannel(float v) noexcept {
  const int channel = midiChannelLaw(v);
  if (channel == midi::MidiLever::kNoChannel) return ShortText("OFF");
  if (channel == midi::MidiLever::kEveryChannel) return ShortText("OMNI");
  return ShortText("Ch ").append(ShortText::whole(channel));
}

} // namespace

constexpr Display kSilent{none, [](float) noexcept { return ShortText(); }};
constexpr Display kOnOff{none, [](float v) noexcept { return choice(isOn(v), "Off", "On"); }};
constexpr Display kFlip{none, [](float v) noexcept { return choice(v > 0.5F, "Off", "On"); }};
constexpr Display kCpuModeWord{
    none, [](float v) noexcept { return choice(isOn(v), "LowCPU", "Brilliant"); }};
constexpr Display kLeverPosition{none, leverPlace};
constexpr Display kStopWord{none,
                            [](float v) noexcept { return choice(isOn(v), "Running", "Stopped"); }};
constexpr Display kMicSetup{none, micSetup};
constexpr Display kAmpType{none, [](float v) noexcept { return ShortText(kFormat.ampType(v)); }};
constexpr Display kMidiChannel{none, midiChannel};
constexpr Display kNotImplemented{none,
                                  [](float) noexcept { return ShortText("Not implemented"); }};

constexpr Display kGain{decibels, [](float v) noexcept { return kFormat.decibels(gainLaw(v)); }};
constexpr Display kCoefficient{decibels,
                               [](float v) noexcept { return kFormat.decibels(coefLaw(v)); }};
constexpr Display kTone{decibels, [](float v) noexcept { return ShortText::fixed(toneDb(v), 1); }};
constexpr Display kInputGain{decibels, [](float v) noexcept {
                               return kFormat.decibels(inputGainLaw(v) * kInputDisplayGain);
                             }};
constexpr Display kDriveGain{decibels,
                             [](float v) noexcept { return kFormat.decibels(driveLaw(v)); }};
constexpr Display kRoomAmount{decibels, [](float v) noexcept {
                                return kFormat.decibels(roomReturnLaw(v) * kRoomDisplayGain);
                              }};

constexpr Display kRotorSpeed{
    hertz, [](float v) noexcept { return kFormat.rotorSpeed(rotorSpeedLaw(v)); }};
constexpr Display kRampTime{[](float v) noexcept { return kFormat.timeUnit(timeLaw(v)); },
                            [](float v) noexcept { return kFormat.time(timeLaw(v)); }};
constexpr Display kFrequency{[](float v) noexcept { return kFormat.frequencyUnit(freqLaw(v)); },
                             [](float v) noexcept { return kFormat.frequency(freqLaw(v)); }};
constexpr Display kHighPass{
    [](float v) noexcept { return kFormat.filterFrequencyUnit(hornHighPassLaw(v)); },
    [](float v) noexcept { return kFormat.filterFrequency(hornHighPassLaw(v)); }};
constexpr Display kLowPass{
    [](float v) noexcept { return kFormat.filterFrequencyUnit(drumLowPassLaw(v)); },
    [](float v) noexcept { return kFormat.filterFrequency(drumLowPassLaw(v)); }};
constexpr Display kSplitter{
    [](float v) noexcept { return kFormat.frequencyUnit(drumSplitterLaw(v)); },
    [](float v) noexcept { return kFormat.frequency(drumSplitterLaw(v)); }};
constexpr Display kOctaves{octaves, [](float v) noexcept { return ShortText::fixed(2.0 * v, 2); }};

constexpr Display kDistance{
    [](float v) noexcept { return kFormat.distanceUnit(micDistanceLaw(v)); },
    [](float v) noexcept { return kFormat.distance(micDistanceLaw(v)); }};
constexpr Display kMic2Offset{percent, [](float v) noexcept {
                                return ShortText::fixed(mic2OffsetLaw(v) * 100.0, 1).append("%");
                              }};
constexpr Display kAngle{
    degrees, [](float v) noexcept { return ShortText::fixed(micAngleLaw(v) * 360.0, 1); }};
constexpr Display kPanorama{
    percent, [](float v) noexcept { return ShortText::fixed((2.0 * v - 1.0) * 100.0, 1); }};
constexpr Display kRadius{
    centimetres, [](float v) noexcept { return ShortText::fixed(radiusLaw(v) * 100.0, 1); }};
constexpr Display kHornReach{centimetres, [](float v) noexcept {
                               return ShortText::fixed(hornAttenuationDistanceLaw(v) * 100.0, 0);
                             }};
constexpr Display kDrumReach{centimetres, [](float v) noexcept {
                               return ShortText::fixed(drumAttenuationDistanceLaw(v) * 100.0, 0);
                             }};
constexpr Display kRoomNumber{
    none, [](float v) noexcept { return ShortText::whole(kFormat.roomSize(v)); }};
constexpr Display kRoomSize{none,
                            [](float v) noexcept { return ShortText::fixed(roomSizeLaw(v), 2); }};
constexpr Display kVirtualRoomSize{
    none, [](float v) noexcept { return ShortText::fixed(virtualRoomSizeLaw(v), 2); }};
constexpr Display kLeftRightDelay{centimetres, [](float v) noexcept {
                                    return ShortText::fixed(leftRightDelayLaw(v) * 100.0, 1);
                                  }};

constexpr Display kPercent{percent,
                           [](float v) noexcept { return ShortText::fixed(v * 100.0, 1); }};
constexpr Display kPlain{none, [](float v) noexcept { return ShortText::fixed(v, 2); }};
constexpr Display kTwice{none, [](float v) noexcept { return ShortText::fixed(2.0 * v, 2); }};
constexpr Display kDecayExponent{
    none, [](float v) noexcept { return ShortText::fixed(decayExponentLaw(v), 2); }};

} // namespace qlx::plugin
