// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::editor {

// What the displays under the knobs say. All have the form of gui::CParamDisplayConverter; the
// user data is the effect's plugin::ParameterFormatter. Without it those that share words or laws
// with the host's displays write nothing. `text` comes as an empty string with room for
// gui::kDisplayTextSize bytes.

/// With a formatter only.
void formatRotorSpeed(float value, char* text, void* formatter);
void formatRampTime(float value, char* text, void* formatter);
void formatDistance(float value, char* text, void* formatter);
void formatHighPass(float value, char* text, void* formatter);
void formatLowPass(float value, char* text, void* formatter);
void formatLevelDb(float value, char* text, void* formatter);
void formatMicSetup(float value, char* text, void* formatter);
void formatMicSetupDetail(float value, char* text, void* formatter);
void formatAmpType(float value, char* text, void* formatter);

/// With or without.
void formatEqGain(float value, char* text, void* formatter);
void formatDriveGain(float value, char* text, void* formatter);
void formatRoomSize(float value, char* text, void* formatter);
void formatPercent(float value, char* text, void* formatter);

} // namespace qlx::editor
