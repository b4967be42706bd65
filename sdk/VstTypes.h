// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <cstdint>

/// The binary interface between a host and an effect, 64-bit layouts. Used from both sides: the
/// effect implements it, the command-line host calls it. Texts are zero-terminated bytes; hosts
/// pass buffers of 24 to 256 bytes for them.
namespace qlx::sdk {

/// Four characters as one number, the first in the most significant byte.
constexpr std::int32_t fourCharacters(const char (&text)[5]) {
  std::uint32_t number = 0;
  for (int i = 0; i < 4; ++i) number = (number << 8) | static_cast<unsigned char>(text[i]);
  return static_cast<std::int32_t>(number);
}

inline constexpr std::int32_t kEffectMagic = fourCharacters("VstP");
inline constexpr std::int32_t kIdentifyAnswer = fourCharacters("NvEf");
inline constexpr std::int32_t kVstVersion = 2400;

// Nominal text lengths; hosts' buffers are longer in practice.
inline constexpr std::size_t kProgramNameLength = 24;
inline constexpr std::size_t kEffectNameLength = 32;
inline constexpr std::size_t kVendorTextLength = 64;

struct EffectRecord;

using DispatcherFunction = std::intptr_t (*)(EffectRecord* effect, std::int32_t opcode,
                                             std::int32_t index, std::intptr_t value, void* ptr,
                                             float opt);
using HostCallback = std::intptr_t (*)(EffectRecord* effect, std::int32_t opcode,
                                       std::int32_t index, std::intptr_t value, void* ptr,
                                       float opt);
using ProcessFunction = void (*)(EffectRecord* effect, float** inputs, float** outputs,
                                 std::int32_t frames);
using ProcessDoubleFunction = void (*)(EffectRecord* effect, double** inputs, double** outputs,
                                       std::int32_t frames);
using SetParameterFunction = void (*)(EffectRecord* effect, std::int32_t index, float value);
using GetParameterFunction = float (*)(EffectRecord* effect, std::int32_t index);

/// What the entry point returns: `EffectRecord* VSTPluginMain(HostCallback)`.
using EntryFunction = EffectRecord* (*)(HostCallback host);

enum EffectFlags : std::int32_t {
  kHasEditor = 1,
  kCanReplacing = 1 << 4,
  kProgramChunks = 1 << 5,
  kIsSynth = 1 << 8,
  kNoSoundInStop = 1 << 9,
  kCanDoubleReplacing = 1 << 12,
};

struct EffectRecord {
  std::int32_t magic;
  DispatcherFunction dispatcher;
  ProcessFunction process; ///< obsolete accumulating form: adds to the outputs
  SetParameterFunction setParameter;
  GetParameterFunction getParameter;
  std::int32_t numPrograms;
  std::int32_t numParams;
  std::int32_t numInputs;
  std::int32_t numOutputs;
  std::int32_t flags; ///< EffectFlags
  std::intptr_t hostReserved1;
  std::intptr_t hostReserved2;
  std::int32_t initialDelay; ///< samples
  std::int32_t realQualities;
  std::int32_t offQualities;
  float ioRatio;
  void* object;
  void* user;
  std::int32_t uniqueId;
  std::int32_t version;
  ProcessFunction processReplacing;
  ProcessDoubleFunction processDoubleReplacing;
  char reserved[56];
};

/// Host to effect.
enum class EffectOpcode : std::int32_t {
  Open = 0,
  Close = 1, ///< destroys the effect
  SetProgram = 2,
  GetProgram = 3,
  SetProgramName = 4,
  GetProgramName = 5,
  GetParameterLabel = 6,
  GetParameterDisplay = 7,
  GetParameterName = 8,
  SetSampleRate = 10, ///< opt, Hz
  SetBlockSize = 11,  ///< value, frames
  MainsChanged = 12,  ///< value 0 off, 1 on
  EditGetRectangle = 13,
  EditOpen = 14, ///< ptr: parent window; on X11 the window's number itself
  EditClose = 15,
  EditIdle = 19,
  Identify = 22,
  GetChunk = 23, ///< index 1 program, 0 bank; ptr: void**; answers the size
  SetChunk = 24, ///< index 1 program, 0 bank; value size; ptr data
  ProcessEvents = 25,
  CanBeAutomated = 26,
  StringToParameter = 27,
  GetProgramNameIndexed = 29, ///< value: category
  GetInputProperties = 33,
  GetOutputProperties = 34,
  GetPlugCategory = 35,
  SetSpeakerArrangement = 42, ///< value: input arrangement*, ptr: output arrangement*
  SetBypass = 44,
  GetEffectName = 45,
  GetVendorString = 47,
  GetProductString = 48,
  GetVendorVersion = 49,
  VendorSpecific = 50,
  CanDo = 51,
  GetTailSize = 52,
  GetParameterProperties = 56,
  GetVstVersion = 58,
  EditKeyDown = 59, ///< index character, value virtual key, opt modifiers
  EditKeyUp = 60,
  SetEditKnobMode = 61,
  GetMidiProgramName = 62,
  GetCurrentMidiProgram = 63,
  GetMidiProgramCategory = 64,
  HasMidiProgramsChanged = 65,
  GetMidiKeyName = 66,
  BeginSetProgram = 67,
  EndSetProgram = 68,
  GetSpeakerArrangement = 69,
  ShellGetNextPlugin = 70,
  StartProcess = 71,
  StopProcess = 72,
  SetTotalSampleToProcess = 73,
  SetPanLaw = 74,
  BeginLoadBank = 75,
  BeginLoadProgram = 76,
  SetProcessPrecision = 77, ///< value 0 single, 1 double
  GetNumMidiInputChannels = 78,
  GetNumMidiOutputChannels = 79,
};

/// Effect to host.
enum class HostOpcode : std::int32_t {
  Automate = 0, ///< index, opt value
  Version = 1,  ///< answers 2400 (a 2.4 host) or 2 (some scanners); 0 refuses
  CurrentShellId = 2,
  Idle = 3,
  PinConnected = 4, ///< index pin, value 0 input, 1 output; answers 0 for connected
  WantMidi = 6,
  GetTime = 7,
  ProcessEvents = 8,
  IoChanged = 13,
  SizeWindow = 15, ///< index width, value height
  GetSampleRate = 16,
  GetBlockSize = 17,
  GetInputLatency = 18,
  GetOutputLatency = 19,
  GetCurrentProcessLevel = 23,
  GetAutomationState = 24,
  GetVendorString = 32,
  GetProductString = 33,
  GetVendorVersion = 34,
  VendorSpecific = 35,
  CanDo = 37,
  GetLanguage = 38,
  GetDirectory = 41,
  UpdateDisplay = 42,
  BeginEdit = 43,
  EndEdit = 44,
  OpenFileSelector = 45,
  CloseFileSelector = 46,
};

enum PlugCategory : std::int32_t { kCategoryUnknown = 0, kCategoryEffect = 1 };

enum ParameterFlags : std::int32_t {
  kParameterIsSwitch = 1 << 0,
  kParameterUsesIntegerRange = 1 << 1,
  kParameterUsesFloatStep = 1 << 2,
  kParameterUsesIntegerStep = 1 << 3,
  kParameterHasDisplayIndex = 1 << 4,
  kParameterHasDisplayCategory = 1 << 5,
  kParameterCanRamp = 1 << 6,
};

struct ParameterProperties {
  float stepFloat;
  float smallStepFloat;
  float largeStepFloat;
  char label[64];
  std::int32_t flags; ///< ParameterFlags
  std::int32_t minInteger;
  std::int32_t maxInteger;
  std::int32_t stepInteger;
  std::int32_t largeStepInteger;
  char shortLabel[8];
  std::int16_t displayIndex;
  std::int16_t category;
  std::int16_t numParametersInCategory;
  std::int16_t reserved;
  char categoryLabel[24];
  char future[16];
};

enum PinFlags : std::int32_t {
  kPinIsActive = 1 << 0,
  kPinIsStereo = 1 << 1,
  kPinUsesSpeaker = 1 << 2,
};

struct PinProperties {
  char label[64];
  std::int32_t flags; ///< PinFlags
  std::int32_t arrangementType;
  char shortLabel[8];
  char future[48];
};

enum SpeakerArrangementType : std::int32_t {
  kArrangementUser = -2,
  kArrangementEmpty = -1,
  kArrangementMono = 0,
  kArrangementStereo = 1,
};

struct SpeakerProperties {
  float azimuth;
  float elevation;
  float radius;
  float reserved;
  char name[64];
  std::int32_t type;
  char future[28];
};

struct SpeakerArrangement {
  std::int32_t type; ///< SpeakerArrangementType
  std::int32_t numChannels;
  SpeakerProperties speakers[8];
};

enum EventType : std::int32_t { kMidiEventType = 1, kSystemExclusiveEventType = 6 };

struct Event {
  std::int32_t type; ///< EventType
  std::int32_t byteSize;
  std::int32_t deltaFrames; ///< from the block's start
  std::int32_t flags;
  char data[16];
};

/// An Event of type kMidiEventType.
struct MidiEvent {
  std::int32_t type;
  std::int32_t byteSize;
  std::int32_t deltaFrames;
  std::int32_t flags;
  std::int32_t noteLength;
  std::int32_t noteOffset;
  char midiData[4]; ///< status, data 1, data 2
  char detune;
  char noteOffVelocity;
  char reserved1;
  char reserved2;
};

/// As many event pointers follow as `numEvents` counts; the declared length means nothing.
struct EventList {
  std::int32_t numEvents;
  std::intptr_t reserved;
  Event* events[2];
};

struct EditRectangle {
  std::int16_t top;
  std::int16_t left;
  std::int16_t bottom;
  std::int16_t right;
};

enum VirtualKey : unsigned char {
  kKeyNone = 0,
  kKeyBack = 1,
  kKeyTab = 2,
  kKeyReturn = 4,
  kKeyEscape = 6,
  kKeySpace = 7,
  kKeyEnd = 9,
  kKeyHome = 10,
  kKeyLeft = 11,
  kKeyUp = 12,
  kKeyRight = 13,
  kKeyDown = 14,
  kKeyPageUp = 15,
  kKeyPageDown = 16,
  kKeyEnter = 19,
  kKeyInsert = 21,
  kKeyDelete = 22,
  kKeyF10 = 49,
  kKeyShift = 54,
  kKeyControl = 55,
  kKeyAlt = 56,
};

enum KeyModifier : unsigned char {
  kModifierShift = 1 << 0,
  kModifierAlternate = 1 << 1,
  kModifierCommand = 1 << 2,
  kModifierControl = 1 << 3,
};

/// One key as the host delivers it.
struct KeyCode {
  std::int32_t character;  ///< 0 when the key has none
  unsigned char virt;      ///< VirtualKey, 0 when it is a character key
  unsigned char modifiers; ///< KeyModifier bits
};

enum KnobMode : std::int32_t {
  kKnobCircular = 0,
  kKnobRelativeCircular = 1,
  kKnobLinear = 2,
};

// The layouts that a host was compiled with.
static_assert(sizeof(std::intptr_t) == 8 && sizeof(void*) == 8);
static_assert(sizeof(EffectRecord) == 192);
static_assert(offsetof(EffectRecord, magic) == 0);
static_assert(offsetof(EffectRecord, dispatcher) == 8);
static_assert(offsetof(EffectRecord, process) == 16);
static_assert(offsetof(EffectRecord, setParameter) == 24);
static_assert(offsetof(EffectRecord, getParameter) == 32);
static_assert(offsetof(EffectRecord, numPrograms) == 40);
static_assert(offsetof(EffectRecord, numParams) == 44);
static_assert(offsetof(EffectRecord, numInputs) == 48);
static_assert(offsetof(EffectRecord, numOutputs) == 52);
static_assert(offsetof(EffectRecord, flags) == 56);
static_assert(offsetof(EffectRecord, hostReserved1) == 64);
static_assert(offsetof(EffectRecord, hostReserved2) == 72);
static_assert(offsetof(EffectRecord, initialDelay) == 80);
static_assert(offsetof(EffectRecord, realQualities) == 84);
static_assert(offsetof(EffectRecord, offQualities) == 88);
static_assert(offsetof(EffectRecord, ioRatio) == 92);
static_assert(offsetof(EffectRecord, object) == 96);
static_assert(offsetof(EffectRecord, user) == 104);
static_assert(offsetof(EffectRecord, uniqueId) == 112);
static_assert(offsetof(EffectRecord, version) == 116);
static_assert(offsetof(EffectRecord, processReplacing) == 120);
static_assert(offsetof(EffectRecord, processDoubleReplacing) == 128);
static_assert(offsetof(EffectRecord, reserved) == 136);

static_assert(sizeof(ParameterProperties) == 152);
static_assert(offsetof(ParameterProperties, label) == 12);
static_assert(offsetof(ParameterProperties, flags) == 76);
static_assert(offsetof(ParameterProperties, minInteger) == 80);
static_assert(offsetof(ParameterProperties, stepInteger) == 88);
static_assert(offsetof(ParameterProperties, shortLabel) == 96);
static_assert(offsetof(ParameterProperties, displayIndex) == 104);
static_assert(offsetof(ParameterProperties, categoryLabel) == 112);
static_assert(offsetof(ParameterProperties, future) == 136);

static_assert(sizeof(PinProperties) == 128);
static_assert(offsetof(PinProperties, flags) == 64);
static_assert(offsetof(PinProperties, arrangementType) == 68);
static_assert(offsetof(PinProperties, shortLabel) == 72);
static_assert(offsetof(PinProperties, future) == 80);

static_assert(sizeof(SpeakerProperties) == 112);
static_assert(offsetof(SpeakerProperties, name) == 16);
static_assert(offsetof(SpeakerProperties, type) == 80);
static_assert(sizeof(SpeakerArrangement) == 904);
static_assert(offsetof(SpeakerArrangement, numChannels) == 4);
static_assert(offsetof(SpeakerArrangement, speakers) == 8);

static_assert(sizeof(Event) == 32 && sizeof(MidiEvent) == 32);
static_assert(offsetof(Event, byteSize) == 4);
static_assert(offsetof(Event, deltaFrames) == 8);
static_assert(offsetof(Event, flags) == 12);
static_assert(offsetof(Event, data) == 16);
static_assert(offsetof(MidiEvent, noteLength) == 16);
static_assert(offsetof(MidiEvent, noteOffset) == 20);
static_assert(offsetof(MidiEvent, midiData) == 24);
static_assert(offsetof(MidiEvent, detune) == 28);
static_assert(offsetof(EventList, reserved) == 8);
static_assert(offsetof(EventList, events) == 16);
static_assert(sizeof(EditRectangle) == 8);

} // namespace qlx::sdk
