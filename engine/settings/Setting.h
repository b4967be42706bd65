// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>

namespace qlx::engine {

/// Every physical value that the engine can be told, by name. Set with RotaryEngine::set from any
/// thread; the audio thread takes a changed value at the start of its next block. Gains are linear,
/// angles in turns (0 straight in front, positive to the right, -0.5 .. 0.5), distances in metres,
/// times in seconds, rotor speeds in revolutions per second. Values are limited to the range that
/// the engine's settings table states; a value that is not finite is ignored.
enum class Setting : unsigned char {
  // Bypass, amplifier and tone
  Bypass,           ///< 0 or 1: target of the cross-fade from the cabinet to the untouched input
  SpeakersBypassed, ///< 0 or 1: 1 sends amplifier and tone straight to the output
  InputGain,
  AmplifierType, ///< 0 thru, 1 tube, 2 solid state
  DriveGain,
  PostDriveGain,
  BottomGainDb,
  LoMidGainDb,
  PresenceGainDb,
  TopGainDb,

  // Lever and motors
  Lever, ///< 1 slow, 0 fast, in between a blend of both speeds
  Stop,  ///< 0.5 and above brakes both rotors
  HornSlowSpeedHz,
  HornFastSpeedHz,
  HornAccelSeconds,
  HornDecelSeconds,
  DrumSlowSpeedHz,
  DrumFastSpeedHz,
  DrumAccelSeconds,
  DrumDecelSeconds,

  // Horn microphones
  HornMic1Angle,
  HornMic1Distance,
  HornMic1Pan, ///< 0 left .. 1 right, constant power
  HornMic2Angle,
  HornMic2Distance,
  HornMic2Pan,
  HornMic2Gain,
  HornGain,
  HornFeedGain,
  HornLevel,      ///< make-up of the chosen microphone placement; not smoothed
  HornHighPassHz, ///< 0 switches the filter off

  // Horn rotor and its cabinet (all three horn models)
  HornFmRadius,
  HornAmRadius,
  HornAttenuationExponent,
  HornAttenuationDistance,
  HornAttenuationFadeExponent,
  HornReflectionCoeff,
  HornReflectionLpfOctaves, ///< octaves of treble lost per reflection
  HornStaticCutoffHz,
  HornFlip, ///< +1 or -1: the rotor's sense of mounting; -1 exchanges the side walls and turns the
            ///< rotor by half a turn
  HornOpenBackMode,
  HornRayGain1, ///< direct
  HornRayGain2, ///< back wall and side walls
  HornRayGain3, ///< back-right corner
  HornRayGain4, ///< back-left corner
  HornRayGain5, ///< left-back-right
  HornRayGain6, ///< right-back-left
  HornRayGain7, ///< four and five reflections
  HornZAxisGain,
  HornStaticGain,
  HornAmpClip,         ///< floor of every ray's amplitude
  HornDistanceAmpClip, ///< the floor that a full reset restores; follows the microphone distance
  HornFilterSaturation,

  // Drum microphone, rotor and its cabinet (both drum models)
  DrumMicAngle,
  DrumMicDistance,
  DrumMicPan,
  DrumGain,
  DrumFeedGain,
  DrumLowPassHz, ///< 0 switches the filter off
  DrumFmRadius,
  DrumAmRadius,
  DrumAttenuationExponent,
  DrumAttenuationDistance,
  DrumAttenuationFadeExponent,
  DrumReflectionCoeff,
  DrumReflectionLpfOctaves,
  DrumStaticCutoffHz,
  DrumSplitterHz,
  DrumLowStaticGain,
  DrumFlip,
  DrumRayGain1, ///< direct
  DrumRayGain2, ///< back wall and side walls
  DrumRayGain3, ///< back-left corner
  DrumRayGain4, ///< back-right corner
  DrumStaticGain,
  DrumFilterSaturation,

  // Cross-talk
  PortToHornGain,
  PortToDrumGain,
  DrumToHornGain,
  HornToDrumGain,

  // Room
  RoomReturnGain,
  NoiseSendGain, ///< not smoothed
  RoomSize,
  VirtualRoomSize,
  RoomLeftRightDelay,
  RoomMainCutoffHz,
  ColorMidGainDb,
  ColorLowGainDb,

  // Motor noise
  HornNoiseLevel,
  DrumNoiseLevel,
  HornSlowNoiseVolume,
  HornFastNoiseVolume,
  HornSwitchNoiseVolume, ///< start and stop sound
  DrumSlowNoiseVolume,
  DrumFastNoiseVolume,
  DrumSwitchNoiseVolume,
  NoisePan, ///< share of a horn microphone's own noise in its channel, 0.5 .. 1

  Count
};

inline constexpr std::size_t kSettingCount = static_cast<std::size_t>(Setting::Count);

/// Internal quality: LowCpu runs the rotors at a half to an eighth of the host's rate, Brilliant at
/// the host's rate up to 50 kHz and at half or a quarter of it above.
enum class CpuMode : unsigned char { LowCpu = 0, Brilliant = 1 };

} // namespace qlx::engine
