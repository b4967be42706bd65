// SPDX-License-Identifier: ISC
#include "lv2/Plugin.h"

#include "lv2/Identity.h"
#include "plugin/FactoryPresets.h"

#include <lv2/atom/util.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/midi/midi.h>
#include <lv2/parameters/parameters.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace qlx::lv2 {

using sdk::EffectOpcode;
using sdk::HostOpcode;

namespace {

const LV2_URID_Map& mapOf(const LV2_Feature* const* features) {
  const auto* map = static_cast<const LV2_URID_Map*>(featureData(features, LV2_URID__map));
  if (map == nullptr) throw std::invalid_argument("the host has no urid:map");
  return *map;
}

} // namespace

const void* featureData(const LV2_Feature* const* features, const char* uri) noexcept {
  for (; features != nullptr && *features != nullptr; ++features) {
    if (std::string_view((*features)->URI) == uri) return (*features)->data;
  }
  return nullptr;
}

Plugin::Urids::Urids(const LV2_URID_Map& map) {
  const auto of = [&map](const char* uri) { return map.map(map.handle, uri); };
  atomChunk = of(LV2_ATOM__Chunk);
  atomInt = of(LV2_ATOM__Int);
  atomFloat = of(LV2_ATOM__Float);
  midiEvent = of(LV2_MIDI__MidiEvent);
  chunk = of(kChunkUri);
  factoryPreset = of(kFactoryPresetUri);
  maxBlockLength = of(LV2_BUF_SIZE__maxBlockLength);
  sampleRate = of(LV2_PARAMETERS__sampleRate);
}

Plugin::Plugin(double rate, const LV2_Feature* const* features)
    : m_urids(mapOf(features)), m_rate(static_cast<float>(rate)),
      m_effect(std::make_unique<plugin::RotaryEffect>(&Plugin::hostCallback)),
      m_record(*m_effect->getRecord()),
      m_controls(*m_effect, rate,
                 static_cast<const ChangeRequest*>(featureData(features, kChangeRequestUri))) {
  m_record.hostReserved1 = std::bit_cast<std::intptr_t>(this);
  call(EffectOpcode::Open);
  call(EffectOpcode::SetSampleRate, 0, nullptr, m_rate);
  const void* options = featureData(features, LV2_OPTIONS__options);
  if (options != nullptr) setOptions(static_cast<const LV2_Options_Option*>(options));
}

Plugin::~Plugin() {
  if (WindowListener* const window = m_window.load(std::memory_order_acquire))
    window->instanceGone();
  m_record.hostReserved1 = 0;
}

std::intptr_t Plugin::call(EffectOpcode opcode, std::intptr_t value, void* ptr, float opt) {
  return m_record.dispatcher(&m_record, static_cast<std::int32_t>(opcode), 0, value, ptr, opt);
}

std::intptr_t Plugin::hostCallback(sdk::EffectRecord* record, std::int32_t opcode,
                                   std::int32_t index, std::intptr_t value, void* /*ptr*/,
                                   float /*opt*/) {
  if (static_cast<HostOpcode>(opcode) == HostOpcode::Version) return sdk::kVstVersion;
  auto* const plugin = record == nullptr ? nullptr : std::bit_cast<Plugin*>(record->hostReserved1);
  return plugin == nullptr ? 0 : plugin->heard(static_cast<HostOpcode>(opcode), index, value);
}

/// Answers 0 to all that need no answer; to PinConnected that is yes.
std::intptr_t Plugin::heard(HostOpcode opcode, std::int32_t index, std::intptr_t value) {
  if (m_running.holdsThisThread()) {
    if (opcode == HostOpcode::Automate) m_controls.movedHere(index);
    return 0;
  }
  WindowListener* const window = m_window.load(std::memory_order_acquire);
  if (window == nullptr ||
      m_windowThread.load(std::memory_order_relaxed) != std::this_thread::get_id()) {
    return 0;
  }
  switch (opcode) {
  case HostOpcode::Automate: window->parameterMoved(index); break;
  case HostOpcode::BeginEdit: window->gesture(index, true); break;
  case HostOpcode::EndEdit: window->gesture(index, false); break;
  case HostOpcode::UpdateDisplay: window->presetSelected(); break;
  case HostOpcode::SizeWindow:
    return window->sizeWanted(index, static_cast<std::int32_t>(value)) ? 1 : 0;
  default: break;
  }
  return 0;
}

bool Plugin::setWindow(WindowListener& window) {
  if (m_window.load(std::memory_order_relaxed) != nullptr) return false;
  m_windowThread.store(std::this_thread::get_id(), std::memory_order_relaxed);
  m_window.store(&window, std::memory_order_release);
  return true;
}

void Plugin::connectPort(std::uint32_t port, void* location) {
  if (port < kEvents) {
    m_audio[port] = static_cast<float*>(location);
  } else if (port == kEvents) {
    m_events = static_cast<const LV2_Atom_Sequence*>(location);
  } else if (port - kFirstControl < kNumControlPorts) {
    m_controls.connect(port - kFirstControl, static_cast<const float*>(location));
  }
}

void Plugin::activate() { call(EffectOpcode::MainsChanged, 1); }

void Plugin::deactivate() { call(EffectOpcode::MainsChanged, 0); }

void Plugin::run(std::uint32_t frames) {
  const presets::ThreadMarks::Scope running(m_running);
  m_controls.takeFromHost(frames);
  std::uint32_t done = 0;
  if (m_events != nullptr) {
    LV2_ATOM_SEQUENCE_FOREACH(m_events, event) {
      constexpr std::uint32_t kControlChangeBytes = 3;
      const auto* const bytes = reinterpret_cast<const std::uint8_t*>(event + 1);
      if (event->body.type != m_urids.midiEvent || event->body.size < kControlChangeBytes ||
          lv2_midi_message_type(bytes) != LV2_MIDI_MSG_CONTROLLER) {
        continue; // nothing that the effect listens to: the block need not be cut
      }
      const auto at =
          static_cast<std::uint32_t>(std::clamp<std::int64_t>(event->time.frames, done, frames));
      render(done, at);
      done = at;
      takeMidi(bytes);
    }
  }
  render(done, frames);
  m_controls.tellHost();
}

void Plugin::render(std::uint32_t from, std::uint32_t to) {
  if (from == to) return;
  const auto at = [this, from](std::size_t port) {
    return m_audio[port] == nullptr ? nullptr : m_audio[port] + from;
  };
  std::array<float*, 2> inputs = {at(kLeftInput), at(kRightInput)};
  std::array<float*, 2> outputs = {at(kLeftOutput), at(kRightOutput)};
  m_record.processReplacing(&m_record, inputs.data(), outputs.data(),
                            static_cast<std::int32_t>(to - from));
}

void Plugin::takeMidi(const std::uint8_t* bytes) {
  sdk::MidiEvent event{};
  event.type = sdk::kMidiEventType;
  event.byteSize = sizeof event;
  std::memcpy(event.midiData, bytes, 3);
  sdk::EventList list{};
  list.numEvents = 1;
  list.events[0] = reinterpret_cast<sdk::Event*>(&event);
  call(EffectOpcode::ProcessEvents, 0, &list);
}

LV2_State_Status Plugin::save(LV2_State_Store_Function store, LV2_State_Handle handle) {
  void* data = nullptr;
  const std::intptr_t size = call(EffectOpcode::GetChunk, 0, &data);
  if (size <= 0 || data == nullptr) return LV2_STATE_ERR_UNKNOWN;
  return store(handle, m_urids.chunk, data, static_cast<std::size_t>(size), m_urids.atomChunk,
               LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE);
}

LV2_State_Status Plugin::restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle) {
  std::size_t size = 0;
  std::uint32_t type = 0;
  std::uint32_t flags = 0;
  if (const void* chunk = retrieve(handle, m_urids.chunk, &size, &type, &flags)) {
    if (type != m_urids.atomChunk) return LV2_STATE_ERR_BAD_TYPE;
    const std::intptr_t answer =
        call(EffectOpcode::SetChunk, static_cast<std::intptr_t>(size), const_cast<void*>(chunk));
    if (answer != 0) return LV2_STATE_ERR_UNKNOWN;
    m_controls.restored();
    return LV2_STATE_SUCCESS;
  }
  if (const void* number = retrieve(handle, m_urids.factoryPreset, &size, &type, &flags)) {
    std::int32_t preset = 0;
    if (type != m_urids.atomInt || size != sizeof preset) return LV2_STATE_ERR_BAD_TYPE;
    std::memcpy(&preset, number, sizeof preset);
    if (preset < 0 || preset >= presets::kNumPresetSlots) return LV2_STATE_ERR_UNKNOWN;
    selectFactoryPreset(preset);
    m_controls.restored();
    return LV2_STATE_SUCCESS;
  }
  return LV2_STATE_ERR_NO_PROPERTY;
}

/// Into its own slot's place when that is untouched, else over the current slot: no other sound of
/// the user's is lost. What all presets share stays as it is.
void Plugin::selectFactoryPreset(std::int32_t number) {
  presets::PresetSlot wanted = plugin::factoryPresets()[static_cast<std::size_t>(number)];
  for (const std::int32_t shared : {plugin::kBypass, plugin::kCPUmode, plugin::kLever,
                                    plugin::kSpeed, plugin::kStop, plugin::kMIDIchl}) {
    wanted.values[static_cast<std::size_t>(shared)] = m_effect->getParameter(shared);
  }
  if (m_effect->getPresetSlot(number) != wanted) {
    number = m_effect->getCurrentPreset();
    m_effect->setPresetSlot(number, wanted);
  }
  m_effect->selectPreset(number);
}

std::uint32_t Plugin::getOptions(LV2_Options_Option* options) const {
  std::uint32_t status = LV2_OPTIONS_SUCCESS;
  for (; options->key != 0; ++options) {
    if (options->context == LV2_OPTIONS_INSTANCE && options->key == m_urids.sampleRate) {
      options->size = sizeof m_rate;
      options->type = m_urids.atomFloat;
      options->value = &m_rate;
    } else if (options->context == LV2_OPTIONS_INSTANCE && options->key == m_urids.maxBlockLength) {
      options->size = sizeof m_maxBlockLength;
      options->type = m_urids.atomInt;
      options->value = &m_maxBlockLength;
    } else {
      status |= LV2_OPTIONS_ERR_BAD_KEY;
    }
  }
  return status;
}

std::uint32_t Plugin::setOptions(const LV2_Options_Option* options) {
  std::uint32_t status = LV2_OPTIONS_SUCCESS;
  for (; options->key != 0; ++options) {
    if (options->key == m_urids.sampleRate) {
      if (options->type != m_urids.atomFloat || options->size != sizeof m_rate) {
        status |= LV2_OPTIONS_ERR_BAD_VALUE;
        continue;
      }
      std::memcpy(&m_rate, options->value, sizeof m_rate);
      call(EffectOpcode::SetSampleRate, 0, nullptr, m_rate);
    } else if (options->key == m_urids.maxBlockLength) {
      if (options->type != m_urids.atomInt || options->size != sizeof m_maxBlockLength) {
        status |= LV2_OPTIONS_ERR_BAD_VALUE;
        continue;
      }
      std::memcpy(&m_maxBlockLength, options->value, sizeof m_maxBlockLength);
      call(EffectOpcode::SetBlockSize, m_maxBlockLength);
    } else {
      status |= LV2_OPTIONS_ERR_BAD_KEY;
    }
  }
  return status;
}

} // namespace qlx::lv2
