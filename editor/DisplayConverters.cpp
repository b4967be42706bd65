// SPDX-License-Identifier: ISC
#include "editor/DisplayConverters.h"

#include "plugin/parameters/ParameterFormatter.h"
#include "plugin/parameters/ParameterLaws.h"

#include <cmath>

namespace qlx::editor {

namespace {

using plugin::ParameterFormatter;
using plugin::ShortText;

/// Writes what `make` gets out of the formatter; nothing without one.
template <typename Make>
void withFormatter(void* formatter, char* text, Make make) {
  if (formatter == nullptr) return;
  make(*static_cast<const ParameterFormatter*>(formatter)).copyTo(text);
}

ShortText inUnit(ShortText number, const char* unit) { return number.append(" ").append(unit); }

ShortText inDecibels(float db) { return inUnit(ShortText::fixed(db, 1), "dB"); }

} // namespace

void formatRotorSpeed(float value, char* text, void* formatter) {
  withFormatter(formatter, text, [value](const ParameterFormatter& format) {
    return inUnit(format.rotorSpeed(plugin::rotorSpeedLaw(value)), "Hz");
  });
}

void formatRampTime(float value, char* text, void* formatter) {
  withFormatter(formatter, text, [value](const ParameterFormatter& format) {
    // In double precision up to the last step, unlike the law that the motors and the host's
    // display follow: an odd half of a millisecond may round the other way.
    const auto seconds = static_cast<float>(std::pow(100.0, value) * 0.1);
    return inUnit(format.time(seconds), format.timeUnit(seconds));
  });
}

void formatDistance(float value, char* text, void* formatter) {
  withFormatter(formatter, text, [value](const ParameterFormatter& format) {
    const float metres = plugin::micDistanceLaw(value);
    return inUnit(format.distance(metres), format.distanceUnit(metres));
  });
}

void formatHighPass(float value, char* text, void* formatter) {
  withFormatter(formatter, text, [value](const ParameterFormatter& format) {
    const double hz = format.hornHighPassHz(value);
    return inUnit(format.filterFrequency(hz), format.filterFrequencyUnit(hz));
  });
}

void formatLowPass(float value, char* text, void* formatter) {
  withFormatter(formatter, text, [value](const ParameterFormatter& format) {
    const double hz = format.drumLowPassHz(value);
    return inUnit(format.filterFrequency(hz), format.filterFrequencyUnit(hz));
  });
}

void formatLevelDb(float value, char* text, void* formatter) {
  withFormatter(formatter, text, [value](const ParameterFormatter& format) {
    return inUnit(format.decibels(plugin::gainLaw(value)), "dB");
  });
}

void formatMicSetup(float value, char* text, void* formatter) {
  withFormatter(formatter, text, [value](const ParameterFormatter& format) {
    return ShortText(format.micSetup(value));
  });
}

void formatMicSetupDetail(float value, char* text, void* formatter) {
  withFormatter(formatter, text, [value](const ParameterFormatter& format) {
    return ShortText(format.micSetupDetail(value));
  });
}

void formatAmpType(float value, char* text, void* formatter) {
  withFormatter(formatter, text, [value](const ParameterFormatter& format) {
    return ShortText(format.ampType(value));
  });
}

void formatEqGain(float value, char* text, void* /*formatter*/) {
  inDecibels(plugin::toneDb(value)).copyTo(text);
}

void formatDriveGain(float value, char* text, void* /*formatter*/) {
  inDecibels(value * 40.0F - 20.0F).copyTo(text);
}

void formatRoomSize(float value, char* text, void* /*formatter*/) {
  ShortText::whole(plugin::steppedPosition(value, 4.0F) + 1).copyTo(text);
}

void formatPercent(float value, char* text, void* /*formatter*/) {
  inUnit(ShortText::fixed(value * 100.0F, 1), "%").copyTo(text);
}

} // namespace qlx::editor
