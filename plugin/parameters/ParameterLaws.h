// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::plugin {

/// The laws from a normalised value v to a physical one. Each accepts any number, also outside
/// 0..1, and answers a finite one. Those that answer a float round there on purpose: stored sounds
/// depend on it.

/// The whole part of scale * v + 0.5, formed in single precision: the position of a stepped
/// control. Limited to a million either way.
int steppedPosition(float v, float scale) noexcept;

/// Linear gain, 0 at 0, 1.0004 at 0.5, +12 dB at 1.
float gainLaw(float v) noexcept;
/// Reflection coefficients and amplitude floors: linear gain 0 .. 1.
float coefLaw(float v) noexcept;
/// Radius of a rotor's moving source in metres, 0.125 .. 0.25.
float radiusLaw(float v) noexcept;
/// Filter frequency in Hz, 200 .. 20000.
float freqLaw(float v) noexcept;
/// Rise or fall time of a motor in seconds, 0.1 .. 10.
float timeLaw(float v) noexcept;
/// Tone control in dB, -12 .. 12.
float toneDb(float v) noexcept;
/// HHPF in Hz: 0 (off) below 0.01, then 20 .. 1000.
double hornHighPassLaw(float v) noexcept;
/// DLPF in Hz: 200 .. 20000, 0 (off) at exactly 1.
float drumLowPassLaw(float v) noexcept;

/// Linear gain of the Drive control, -20 .. 20 dB.
double driveLaw(float v) noexcept;
/// Rotor speed in revolutions per second, 0 .. 10.
float rotorSpeedLaw(float v) noexcept;
/// Distance from the rotor's axis to the microphone in metres, 0.35 .. 1.65; 0.35 is the front of
/// the cabinet.
float micDistanceLaw(float v) noexcept;
/// Microphone angle in turns, -0.5 .. 0.5.
double micAngleLaw(float v) noexcept;
/// How much farther away the second horn microphone stands, as a share of the first one's distance,
/// -0.2 .. 0.2.
double mic2OffsetLaw(float v) noexcept;
/// Exponent of the attenuation's fade, 0.5 .. 2.
double decayExponentLaw(float v) noexcept;
/// Distances in metres from which rays are attenuated.
double hornAttenuationDistanceLaw(float v) noexcept;
float drumAttenuationDistanceLaw(float v) noexcept;
/// Drive of a filter's saturation, 0.0008 .. 0.32.
float saturationLaw(float v) noexcept;
/// Size factor of the room, 0.5 .. 4, and of its mirrored neighbours, 0.25 .. 4.
double roomSizeLaw(float v) noexcept;
double virtualRoomSizeLaw(float v) noexcept;
/// Distance between the room's left and right reflections in metres, 0.15 .. 1.5.
double leftRightDelayLaw(float v) noexcept;
/// Cross-over frequency of the drum in Hz, 50 .. 500.
float drumSplitterLaw(float v) noexcept;
/// Gain in front of the amplifier: -3 dB at the control's nominal position.
double inputGainLaw(float v) noexcept;
/// Gain from the feed's crossover into the horn: 36 dB above gainLaw.
double hornFeedLaw(float v) noexcept;
/// Gains from the room back to the microphones and of the motor noise into the room, both of
/// Amount.
double roomReturnLaw(float v) noexcept;
float noiseSendLaw(float v) noexcept;
/// How the horn's back sounds: 0, 1 or 2.
int openBackModeLaw(float v) noexcept;
/// +1 up to the middle of the control, -1 above.
double flipLaw(float v) noexcept;
/// The MIDI channel as MidiLever takes it: 0 none, 1 .. 16, 17 every one.
int midiChannelLaw(float v) noexcept;
/// The normalised Horn Amplitude Clip that belongs to a normalised HDistance.
float ampClipOfDistance(float hornDistance) noexcept;

} // namespace qlx::plugin
