// SPDX-License-Identifier: ISC
#pragma once

#include "lv2/ControlPorts.h"
#include "plugin/RotaryEffect.h"
#include "presets/store/ThreadMarks.h"

#include <lv2/atom/atom.h>
#include <lv2/core/lv2.h>
#include <lv2/options/options.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

namespace qlx::lv2 {

/// The data of the feature with this URI; null when the host doesn't offer it.
const void* featureData(const LV2_Feature* const* features, const char* uri) noexcept;

/// What the window hears of the effect, on its own thread only.
class WindowListener {
 public:
  virtual ~WindowListener() = default;
  virtual void parameterMoved(std::int32_t parameter) = 0;
  virtual void gesture(std::int32_t parameter, bool begins) = 0;
  /// Any parameter may have changed.
  virtual void presetSelected() = 0;
  /// The editor wants this size, in pixels; answers whether it gets it.
  virtual bool sizeWanted(std::int32_t width, std::int32_t height) = 0;
  /// The instance is going, though its window should have gone first.
  virtual void instanceGone() = 0;
};

/// One instance: the effect as its other hosts know it, behind the ports of this interface. Threads
/// as LV2 defines them; save and restore may also come while run does.
class Plugin {
 public:
  /// Throws std::invalid_argument when the host lacks urid:map.
  Plugin(double rate, const LV2_Feature* const* features);
  ~Plugin();
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  void connectPort(std::uint32_t port, void* location);
  void activate();
  void run(std::uint32_t frames);
  void deactivate();

  LV2_State_Status save(LV2_State_Store_Function store, LV2_State_Handle handle);
  LV2_State_Status restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle);

  std::uint32_t getOptions(LV2_Options_Option* options) const;
  std::uint32_t setOptions(const LV2_Options_Option* options);

  // For the window, on its thread.
  plugin::RotaryEffect& effect() { return *m_effect; }
  ControlPorts& controls() { return m_controls; }
  /// One at a time: false when there is one already.
  bool setWindow(WindowListener& window);
  void forgetWindow() { m_window.store(nullptr, std::memory_order_release); }

 private:
  struct Urids {
    explicit Urids(const LV2_URID_Map& map);
    LV2_URID atomChunk, atomInt, atomFloat, midiEvent, chunk, factoryPreset, maxBlockLength,
        sampleRate;
  };

  static std::intptr_t hostCallback(sdk::EffectRecord* record, std::int32_t opcode,
                                    std::int32_t index, std::intptr_t value, void* ptr, float opt);
  std::intptr_t heard(sdk::HostOpcode opcode, std::int32_t index, std::intptr_t value);
  std::intptr_t call(sdk::EffectOpcode opcode, std::intptr_t value = 0, void* ptr = nullptr,
                     float opt = 0.0F);
  void render(std::uint32_t from, std::uint32_t to);
  void takeMidi(const std::uint8_t* bytes);
  void selectFactoryPreset(std::int32_t number);

  Urids m_urids;
  float m_rate;                      ///< Hz
  std::int32_t m_maxBlockLength = 0; ///< frames, 0 unless the host told
  std::unique_ptr<plugin::RotaryEffect> m_effect;
  sdk::EffectRecord& m_record;
  ControlPorts m_controls;
  std::array<float*, 4> m_audio{};
  const LV2_Atom_Sequence* m_events = nullptr;
  presets::ThreadMarks m_running; ///< who is inside run()
  std::atomic<WindowListener*> m_window{nullptr};
  std::atomic<std::thread::id> m_windowThread{};
};

} // namespace qlx::lv2
