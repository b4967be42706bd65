// SPDX-License-Identifier: ISC
#pragma once

#include "platform/PixelRect.h"

/// Every rectangle of the editor's window, in pixels from its upper left corner. The generator of
/// the images draws by it, the editor and the preset panel place their controls by it: after a
/// change the images have to be drawn anew (target remake_artwork).
namespace qlx::resources::layout {

using platform::PixelRect;

inline constexpr PixelRect kWindow{0, 0, 401, 570};

// clang-format off
inline constexpr PixelRect kHornPanel   {  5,   5, 396, 126};
inline constexpr PixelRect kCabinetPanel{  5, 130, 322, 392};
inline constexpr PixelRect kLeverPanel  {326, 130, 396, 392};
inline constexpr PixelRect kDrumPanel   {  5, 396, 396, 518};
inline constexpr PixelRect kBottomBar   {  5, 522, 396, 552};
inline constexpr PixelRect kPresetStrip {  3, 553, 398, 569};

/// A knob and the text field under it.
struct Knob {
  PixelRect knob;
  PixelRect display;
};

inline constexpr Knob kHornSlow    {{ 20,  53,  64,  97}, { 16, 102,  68, 113}};
inline constexpr Knob kHornFast    {{ 65,  53, 109,  97}, { 61, 102, 113, 113}};
inline constexpr Knob kHornAccel   {{134,  53, 178,  97}, {130, 102, 182, 113}};
inline constexpr Knob kHornDecel   {{179,  53, 223,  97}, {175, 102, 227, 113}};
inline constexpr Knob kHornDistance{{248,  53, 292,  97}, {244, 102, 296, 113}};
inline constexpr Knob kHornHighPass{{293,  53, 337,  97}, {289, 102, 341, 113}};
inline constexpr Knob kHornGain    {{338,  53, 382,  97}, {334, 102, 386, 113}};

inline constexpr Knob kMech        {{ 16, 202,  60, 246}, { 12, 251,  64, 262}};
inline constexpr Knob kBottom      {{ 74, 202, 118, 246}, { 70, 251, 122, 262}};
inline constexpr Knob kLoMid       {{119, 202, 163, 246}, {115, 251, 167, 262}};
inline constexpr Knob kPresence    {{164, 202, 208, 246}, {160, 251, 212, 262}};
inline constexpr Knob kTop         {{209, 202, 253, 246}, {205, 251, 257, 262}};
inline constexpr Knob kSetup       {{269, 202, 313, 246}, {265, 251, 317, 262}};
/// The second line of the microphone set-up.
inline constexpr PixelRect kSetupDetail{265, 262, 317, 273};
inline constexpr Knob kInput       {{ 20, 303,  64, 347}, { 16, 352,  68, 363}};
inline constexpr Knob kType        {{ 65, 303, 109, 347}, { 61, 352, 113, 363}};
inline constexpr Knob kDrive       {{110, 303, 154, 347}, {106, 352, 158, 363}};
inline constexpr Knob kSize        {{178, 303, 222, 347}, {174, 352, 226, 363}};
inline constexpr Knob kColor       {{222, 303, 266, 347}, {219, 352, 271, 363}};
inline constexpr Knob kAmount      {{268, 303, 312, 347}, {264, 352, 316, 363}};

inline constexpr Knob kDrumSlow    {{ 20, 445,  64, 489}, { 16, 494,  68, 505}};
inline constexpr Knob kDrumFast    {{ 65, 445, 109, 489}, { 61, 494, 113, 505}};
inline constexpr Knob kDrumAccel   {{134, 445, 178, 489}, {130, 494, 182, 505}};
inline constexpr Knob kDrumDecel   {{179, 445, 223, 489}, {175, 494, 227, 505}};
inline constexpr Knob kDrumDistance{{248, 445, 292, 489}, {244, 494, 296, 505}};
inline constexpr Knob kDrumLowPass {{293, 445, 337, 489}, {289, 494, 341, 505}};
inline constexpr Knob kDrumGain    {{338, 445, 382, 489}, {334, 494, 386, 505}};

// Where the lights of the rotors pass, and the plate that opens the about screen.
inline constexpr PixelRect kHornSlot { 91,  12, 389,  24};
inline constexpr PixelRect kDrumSlot { 91, 404, 389, 416};
inline constexpr PixelRect kNamePlate{ 12, 156, 187, 178};

inline constexpr PixelRect kLever{330, 149, 385, 335};
inline constexpr PixelRect kSpeed{330, 348, 357, 384};
inline constexpr PixelRect kStop {359, 347, 385, 383};

inline constexpr PixelRect kMidiChannel   {  6, 536,  36, 550};
inline constexpr PixelRect kMidiRocker    { 38, 536,  69, 550};
inline constexpr PixelRect kSustainLamp   { 68, 536, 130, 550};
inline constexpr PixelRect kModulationLamp{129, 536, 185, 550};
inline constexpr PixelRect kMode          {195, 536, 335, 550};
inline constexpr PixelRect kBypass        {340, 536, 398, 550};

inline constexpr PixelRect kSaveBank     {  4, 554,  16, 568};
inline constexpr PixelRect kBankDefault  { 16, 556,  53, 566};
inline constexpr PixelRect kLoadBank     { 54, 554,  66, 568};
inline constexpr PixelRect kSavePreset   { 69, 554,  81, 568};
inline constexpr PixelRect kPresetDefault{ 81, 556, 128, 566};
inline constexpr PixelRect kLoadPreset   {128, 554, 140, 568};
inline constexpr PixelRect kName         {146, 554, 262, 568};
inline constexpr PixelRect kPresetMenu   {263, 554, 275, 568};
inline constexpr PixelRect kPresetRocker {278, 554, 309, 568};
inline constexpr PixelRect kStoreA       {311, 554, 323, 568};
inline constexpr PixelRect kRecallA      {333, 554, 345, 568};
inline constexpr PixelRect kStoreB       {349, 554, 361, 568};
inline constexpr PixelRect kRecallB      {371, 554, 383, 568};
inline constexpr PixelRect kManual       {384, 554, 400, 568};

/// The about screen over the window, and the field inside it that holds the version.
inline constexpr PixelRect kAbout       {  0,   0, 400, 533};
inline constexpr PixelRect kAboutVersion{258, 181, 338, 196};
// clang-format on

} // namespace qlx::resources::layout
