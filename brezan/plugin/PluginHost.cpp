// SPDX-License-Identifier: ISC
#include "brezan/plugin/PluginHost.h"

#include "platform/Version.h"
#include "presets/format/PresetData.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace qlx::tools {

using sdk::EffectOpcode;
using sdk::HostOpcode;

namespace {

// Hosts give at least this much for a text, whatever its nominal length.
constexpr std::size_t kTextBuffer = 256;
constexpr int kMostPresets = 1024;

sdk::SpeakerArrangement arrangement(int channels) {
  sdk::SpeakerArrangement result{};
  result.type = channels == 1 ? sdk::kArrangementMono : sdk::kArrangementStereo;
  result.numChannels = channels;
  return result;
}

} // namespace

std::intptr_t PluginHost::answer(sdk::EffectRecord* effect, std::int32_t opcode, std::int32_t index,
                                 std::intptr_t value, void* ptr, float opt) {
  // Null while the entry point runs: the effect does not belong to a host yet.
  const auto* host =
      effect == nullptr ? nullptr : std::bit_cast<const PluginHost*>(effect->hostReserved1);
  const auto copy = [ptr](std::string_view words) -> std::intptr_t {
    if (ptr == nullptr) return 0;
    *std::copy(words.begin(), words.end(), static_cast<char*>(ptr)) = '\0';
    return 1;
  };
  const auto tell = [host, index, opt](HostEdit::Kind kind) -> std::intptr_t {
    if (host != nullptr && host->m_editListener) host->m_editListener({kind, index, opt});
    return 1;
  };
  switch (static_cast<HostOpcode>(opcode)) {
  case HostOpcode::Automate: return tell(HostEdit::Kind::Automate);
  case HostOpcode::BeginEdit: return tell(HostEdit::Kind::Begin);
  case HostOpcode::EndEdit: return tell(HostEdit::Kind::End);
  case HostOpcode::SizeWindow:
    return host != nullptr && host->m_sizeListener &&
                   host->m_sizeListener({index, static_cast<int>(value)})
               ? 1
               : 0;
  case HostOpcode::VendorSpecific: {
    auto* const menu = static_cast<sdk::EditorMenu*>(ptr);
    const bool asked = host != nullptr && host->m_menuListener &&
                       index == sdk::kEditorMenuRequest && menu != nullptr &&
                       menu->byteSize == sizeof(sdk::EditorMenu);
    return asked && host->m_menuListener(*menu) ? 1 : 0;
  }
  case HostOpcode::Version: return sdk::kVstVersion;
  case HostOpcode::PinConnected:
    if (host == nullptr || (value != 0 && value != 1)) return 0;
    return index < host->m_channels[static_cast<std::size_t>(value)] ? 0 : 1;
  case HostOpcode::GetSampleRate: return host ? static_cast<std::intptr_t>(host->m_rate) : 0;
  case HostOpcode::GetBlockSize: return host ? host->m_block : 0;
  case HostOpcode::GetCurrentProcessLevel: return 4; // offline
  case HostOpcode::GetVendorString: return copy("Meridane");
  case HostOpcode::GetProductString: return copy("brezan");
  case HostOpcode::GetVendorVersion: return platform::versionNumber();
  default: return 0;
  }
}

PluginHost::PluginHost(const std::filesystem::path& file) : m_file(file), m_library(file) {
  void* symbol = m_library.symbol("VSTPluginMain");
  if (symbol == nullptr) symbol = m_library.symbol("main");
  if (symbol == nullptr)
    throw std::runtime_error("'" + file.string() + "' is not a plug-in: it has no entry point");
  m_effect = std::bit_cast<sdk::EntryFunction>(symbol)(&PluginHost::answer);
  if (m_effect == nullptr || m_effect->magic != sdk::kEffectMagic)
    throw std::runtime_error("'" + file.string() + "' gave no effect");
  m_effect->hostReserved1 = std::bit_cast<std::intptr_t>(this);
  call(EffectOpcode::Open);
}

PluginHost::~PluginHost() {
  stop();
  call(EffectOpcode::Close);
}

std::intptr_t PluginHost::call(EffectOpcode opcode, int index, std::intptr_t value, void* ptr,
                               float opt) {
  return m_effect->dispatcher(m_effect, static_cast<std::int32_t>(opcode), index, value, ptr, opt);
}

std::string PluginHost::text(EffectOpcode opcode, int index, std::intptr_t value) {
  std::array<char, kTextBuffer> buffer{};
  call(opcode, index, value, buffer.data());
  buffer.back() = '\0';
  return buffer.data();
}

std::string PluginHost::effectName() { return text(EffectOpcode::GetEffectName); }
std::string PluginHost::vendor() { return text(EffectOpcode::GetVendorString); }
std::string PluginHost::product() { return text(EffectOpcode::GetProductString); }
int PluginHost::vendorVersion() { return static_cast<int>(call(EffectOpcode::GetVendorVersion)); }
int PluginHost::vstVersion() { return static_cast<int>(call(EffectOpcode::GetVstVersion)); }

bool PluginHost::canDo(const char* what) {
  std::string words(what);
  return call(EffectOpcode::CanDo, 0, 0, words.data()) == 1;
}

ParameterInfo PluginHost::parameter(int index) {
  ParameterInfo info{index, text(EffectOpcode::GetParameterName, index), false, 0.0F};
  sdk::ParameterProperties properties{};
  if (call(EffectOpcode::GetParameterProperties, index, 0, &properties) == 1) {
    info.isSwitch = (properties.flags & sdk::kParameterIsSwitch) != 0;
    if ((properties.flags & sdk::kParameterUsesFloatStep) != 0) info.step = properties.stepFloat;
  }
  return info;
}

std::string PluginHost::display(int index) {
  return text(EffectOpcode::GetParameterDisplay, index);
}

std::string PluginHost::label(int index) { return text(EffectOpcode::GetParameterLabel, index); }

std::vector<std::string> PluginHost::presetNames() {
  std::vector<std::string> names;
  std::array<char, kTextBuffer> buffer{};
  for (int number = 0; number < kMostPresets; ++number) {
    buffer.fill('\0');
    if (call(EffectOpcode::GetProgramNameIndexed, number, -1, buffer.data()) == 0) break;
    names.emplace_back(buffer.data());
  }
  if (names.empty()) names.push_back(text(EffectOpcode::GetProgramName));
  return names;
}

int PluginHost::currentPreset() {
  if ((m_effect->flags & sdk::kProgramChunks) == 0)
    return static_cast<int>(call(EffectOpcode::GetProgram));
  const std::vector<char> chunk = state();
  std::int32_t number = 0;
  if (chunk.size() < presets::kChunkCurrentIndexAt + sizeof number) return 0;
  std::memcpy(&number, chunk.data() + presets::kChunkCurrentIndexAt, sizeof number);
  return number;
}

void PluginHost::selectPreset(int number) {
  if ((m_effect->flags & sdk::kProgramChunks) == 0) {
    call(EffectOpcode::SetProgram, 0, number);
    return;
  }
  std::vector<char> chunk = state();
  const std::int32_t wanted = number;
  if (chunk.size() < presets::kChunkCurrentIndexAt + sizeof wanted)
    throw std::runtime_error("the plug-in gives no state in which to choose a preset");
  std::memcpy(chunk.data() + presets::kChunkCurrentIndexAt, &wanted, sizeof wanted);
  setState(std::move(chunk));
}

std::vector<char> PluginHost::state() {
  void* data = nullptr;
  const std::intptr_t size = call(EffectOpcode::GetChunk, 0, 0, &data);
  if (size <= 0 || data == nullptr) return {};
  const char* bytes = static_cast<const char*>(data);
  return {bytes, bytes + size};
}

void PluginHost::setState(std::vector<char> chunk) {
  // The interface has no agreed answer for success but a negative one always means refusal.
  if (call(EffectOpcode::SetChunk, 0, static_cast<std::intptr_t>(chunk.size()), chunk.data()) < 0)
    throw std::runtime_error("the plug-in refused the state");
}

std::optional<EditorSize> PluginHost::editorSize() {
  sdk::EditRectangle* rectangle = nullptr;
  if ((m_effect->flags & sdk::kHasEditor) == 0 ||
      call(EffectOpcode::EditGetRectangle, 0, 0, &rectangle) == 0 || rectangle == nullptr)
    return std::nullopt;
  return EditorSize{rectangle->right - rectangle->left, rectangle->bottom - rectangle->top};
}

std::optional<std::vector<std::uint32_t>>
PluginHost::editorPicture(EditorSize size, std::span<const sdk::EditorClick> clicks) {
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(size.width) *
                                    static_cast<std::size_t>(size.height));
  sdk::EditorPicture request{sizeof(sdk::EditorPicture),
                             size.width,
                             size.height,
                             static_cast<std::int32_t>(clicks.size()),
                             clicks.data(),
                             pixels.data()};
  if (call(EffectOpcode::VendorSpecific, sdk::kEditorPictureRequest, 0, &request) == 0)
    return std::nullopt;
  return pixels;
}

std::string PluginHost::editorDescription() {
  constexpr std::intptr_t kLongest = 1 << 20;
  sdk::EditorDescription request{sizeof(sdk::EditorDescription), 0, nullptr};
  const auto ask = [&] {
    return call(EffectOpcode::VendorSpecific, sdk::kEditorDescriptionRequest, 0, &request);
  };
  std::string text(static_cast<std::size_t>(std::clamp<std::intptr_t>(ask(), 0, kLongest)), ' ');
  request.room = static_cast<std::int32_t>(text.size());
  request.text = text.data();
  const std::intptr_t length = text.empty() ? 0 : ask();
  text.resize(std::min(text.size(), static_cast<std::size_t>(std::max<std::intptr_t>(length, 0))));
  return text;
}

bool PluginHost::openEditor(std::uintptr_t parentWindow) {
  return call(EffectOpcode::EditOpen, 0, 0, std::bit_cast<void*>(parentWindow)) != 0;
}

void PluginHost::start(double rate, int maximumBlock, int inputs, int outputs) {
  stop();
  m_rate = rate;
  m_block = maximumBlock;
  m_channels = {inputs, outputs};
  call(EffectOpcode::SetSampleRate, 0, 0, nullptr, static_cast<float>(rate));
  call(EffectOpcode::SetBlockSize, 0, maximumBlock);
  sdk::SpeakerArrangement in = arrangement(inputs);
  sdk::SpeakerArrangement out = arrangement(outputs);
  if (call(EffectOpcode::SetSpeakerArrangement, 0, std::bit_cast<std::intptr_t>(&in), &out) == 0)
    throw std::runtime_error("the plug-in does not take " + std::to_string(inputs) +
                             " channel(s) in and " + std::to_string(outputs) + " out");
  call(EffectOpcode::MainsChanged, 0, 1);
  call(EffectOpcode::StartProcess);
  m_running = true;
}

void PluginHost::stop() {
  if (!m_running) return;
  call(EffectOpcode::StopProcess);
  call(EffectOpcode::MainsChanged, 0, 0);
  m_running = false;
}

void PluginHost::sendMidi(std::span<const MidiBytes> messages) {
  if (messages.empty()) return;
  std::vector<sdk::MidiEvent> events(messages.size());
  // The list's head with room for as many pointers as there are events.
  constexpr std::size_t kHead = offsetof(sdk::EventList, events);
  std::vector<std::intptr_t> memory(
      (std::max(sizeof(sdk::EventList), kHead + messages.size() * sizeof(void*)) + 7) / 8);
  auto* list = reinterpret_cast<sdk::EventList*>(memory.data());
  list->numEvents = static_cast<std::int32_t>(messages.size());
  for (std::size_t i = 0; i < messages.size(); ++i) {
    events[i].type = sdk::kMidiEventType;
    events[i].byteSize = sizeof(sdk::MidiEvent);
    std::memcpy(events[i].midiData, messages[i].data(), messages[i].size());
    void* pointer = &events[i];
    std::memcpy(reinterpret_cast<char*>(memory.data()) + kHead + i * sizeof(void*), &pointer,
                sizeof pointer);
  }
  call(EffectOpcode::ProcessEvents, 0, 0, list);
}

} // namespace qlx::tools
