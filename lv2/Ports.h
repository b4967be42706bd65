// SPDX-License-Identifier: ISC
#pragma once

#include "plugin/parameters/ParameterIndex.h"
#include "plugin/parameters/PortScale.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace qlx::lv2 {

/// The ports by number. The control ports follow in the order of kControlPorts.
enum PortIndex : std::uint32_t {
  kLeftInput,
  kRightInput,
  kLeftOutput,
  kRightOutput,
  kEvents,
  kFirstControl
};

/// What belongs together on a generic panel.
struct PortGroup {
  const char* symbol;
  const char* name;
};
inline constexpr PortGroup kNoGroup{"", ""};
inline constexpr PortGroup kMotors{"motors", "Motors"};
inline constexpr PortGroup kTone{"tone", "Tone"};
inline constexpr PortGroup kMicrophones{"microphones", "Microphones"};
inline constexpr PortGroup kAmplifier{"amplifier", "Amplifier"};
inline constexpr PortGroup kRoom{"room", "Room"};
inline constexpr PortGroup kHorn{"horn", "Horn"};
inline constexpr PortGroup kDrum{"drum", "Drum"};
inline constexpr std::array kGroups = {&kMotors, &kTone, &kMicrophones, &kAmplifier,
                                       &kRoom,   &kHorn, &kDrum};

struct ControlPort {
  std::int32_t parameter;
  const char* symbol;
  const char* name;
  const PortGroup& group;
};

inline constexpr std::array kControlPorts = {
    ControlPort{plugin::kBypass, "enabled", "Enabled", kNoGroup},
    ControlPort{plugin::kCPUmode, "cpu_mode", "CPU mode", kNoGroup},
    ControlPort{plugin::kLever, "lever", "Lever", kMotors},
    ControlPort{plugin::kSpeed, "speed_button", "Speed button", kMotors},
    ControlPort{plugin::kStop, "stop", "Stop", kMotors},
    ControlPort{plugin::kMech, "motor_noise", "Motor noise", kMotors},
    ControlPort{plugin::kBottom, "bottom", "Bottom", kTone},
    ControlPort{plugin::kLoMid, "low_middle", "Low middle", kTone},
    ControlPort{plugin::kPresence, "presence", "Presence", kTone},
    ControlPort{plugin::kTop, "top", "Top", kTone},
    ControlPort{plugin::kSetup, "microphone_setup", "Microphone setup", kMicrophones},
    ControlPort{plugin::kInput, "input_level", "Input level", kAmplifier},
    ControlPort{plugin::kType, "amplifier_type", "Amplifier type", kAmplifier},
    ControlPort{plugin::kDrive, "drive", "Drive", kAmplifier},
    ControlPort{plugin::kSize, "room_size", "Room size", kRoom},
    ControlPort{plugin::kColor, "room_color", "Room color", kRoom},
    ControlPort{plugin::kAmount, "room_amount", "Room amount", kRoom},
    ControlPort{plugin::kHSlowSpd, "horn_slow_speed", "Horn slow speed", kHorn},
    ControlPort{plugin::kHFastSpd, "horn_fast_speed", "Horn fast speed", kHorn},
    ControlPort{plugin::kHAccel, "horn_acceleration", "Horn acceleration time", kHorn},
    ControlPort{plugin::kHDecel, "horn_deceleration", "Horn deceleration time", kHorn},
    ControlPort{plugin::kHDistance, "horn_distance", "Horn microphone distance", kMicrophones},
    ControlPort{plugin::kHHPF, "horn_high_pass", "Horn high-pass frequency", kHorn},
    ControlPort{plugin::kHGain, "horn_level", "Horn level", kHorn},
    ControlPort{plugin::kDSlowSpd, "drum_slow_speed", "Drum slow speed", kDrum},
    ControlPort{plugin::kDFastSpd, "drum_fast_speed", "Drum fast speed", kDrum},
    ControlPort{plugin::kDAccel, "drum_acceleration", "Drum acceleration time", kDrum},
    ControlPort{plugin::kDDecel, "drum_deceleration", "Drum deceleration time", kDrum},
    ControlPort{plugin::kDDistance, "drum_distance", "Drum microphone distance", kMicrophones},
    ControlPort{plugin::kDLPF, "drum_low_pass", "Drum low-pass frequency", kDrum},
    ControlPort{plugin::kDGain, "drum_level", "Drum level", kDrum},
    ControlPort{plugin::kMIDIchl, "midi_channel", "MIDI channel", kNoGroup},
};
inline constexpr std::size_t kNumControlPorts = kControlPorts.size();

/// The control port of a host parameter by its place in kControlPorts; kNumControlPorts for none.
constexpr std::size_t controlOf(std::int32_t parameter) noexcept {
  std::size_t i = 0;
  while (i < kNumControlPorts && kControlPorts[i].parameter != parameter) ++i;
  return i;
}

inline const plugin::PortScale& scaleOf(const ControlPort& port) noexcept {
  return *plugin::portScale(port.parameter);
}

} // namespace qlx::lv2
