// SPDX-License-Identifier: ISC
#pragma once

#include "plugin/parameters/ShortText.h"

namespace qlx::plugin {

/// Numbers, units and words of the displays. The host's displays and the editor's share this one
/// object's operations, so that they agree. Stateless: any thread, any time.
class ParameterFormatter {
 public:
  /// Decibels of a linear gain, "-oo" for 0 and below.
  ShortText decibels(double gain) const noexcept;

  /// Whole Hz below 1000, else kHz with two places.
  ShortText frequency(double hz) const noexcept;
  const char* frequencyUnit(double hz) const noexcept;

  /// The same for a filter that is off at 0 Hz: "Off" without a unit.
  ShortText filterFrequency(double hz) const noexcept;
  const char* filterFrequencyUnit(double hz) const noexcept;

  /// Whole milliseconds below a second, else seconds with one place.
  ShortText time(float seconds) const noexcept;
  const char* timeUnit(float seconds) const noexcept;

  /// Distance between microphone and cabinet front: whole centimetres below a metre, else metres
  /// with two places. `metres` is counted from the rotor's axis.
  ShortText distance(float metres) const noexcept;
  const char* distanceUnit(float metres) const noexcept;

  ShortText rotorSpeed(float hz) const noexcept;

  /// The filter frequencies of HHPF and DLPF in Hz, 0 for off.
  double hornHighPassHz(float v) const noexcept;
  double drumLowPassHz(float v) const noexcept;

  /// The two words of the microphone placement and the amplifier's type; empty outside the
  /// control's positions.
  const char* micSetup(float v) const noexcept;
  const char* micSetupDetail(float v) const noexcept;
  const char* ampType(float v) const noexcept;

  /// 1 .. 5.
  int roomSize(float v) const noexcept;
};

} // namespace qlx::plugin
