// SPDX-License-Identifier: ISC
#pragma once

#include "resources/artwork/ArtworkSet.h"

/// The drawing of each image: one frame of its strip.
namespace qlx::artwork {

void drawWindow(Frame& frame);
void drawAbout(Frame& frame);
void drawKnob(Frame& frame);
void drawLever(Frame& frame);
void drawStopKey(Frame& frame);
void drawSpeedKey(Frame& frame);

void drawRotorSlot(Frame& frame);
void drawHornLight(Frame& frame);
void drawDrumLight(Frame& frame);

void drawRocker(Frame& frame);
void drawMidiChannel(Frame& frame);
void drawSustainLamp(Frame& frame);
void drawModulationLamp(Frame& frame);
void drawMode(Frame& frame);
void drawBypass(Frame& frame);

void drawLoad(Frame& frame);
void drawSave(Frame& frame);
void drawBankDefault(Frame& frame);
void drawPresetDefault(Frame& frame);
void drawStoreA(Frame& frame);
void drawStoreB(Frame& frame);
void drawRecallA(Frame& frame);
void drawRecallB(Frame& frame);
void drawManual(Frame& frame);

} // namespace qlx::artwork
