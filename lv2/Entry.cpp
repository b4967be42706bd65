// SPDX-License-Identifier: ISC
#include "lv2/Identity.h"
#include "lv2/Window.h"

#include <lv2/log/logger.h>

#include <cstring>
#include <string_view>

namespace {

using qlx::lv2::Plugin;
using qlx::lv2::Window;

/// One line in the host's log, or on the standard error stream.
void logError(const LV2_Feature* const* features, const char* text) noexcept {
  const auto find = [features](const char* uri) {
    return const_cast<void*>(qlx::lv2::featureData(features, uri));
  };
  LV2_Log_Logger logger{};
  lv2_log_logger_init(&logger, static_cast<LV2_URID_Map*>(find(LV2_URID__map)),
                      static_cast<LV2_Log_Log*>(find(LV2_LOG__log)));
  lv2_log_error(&logger, "QLX Brezan: %s\n", text);
}

/// Runs what a host asks for; what is thrown inside ends here as `refused`.
template <typename Call, typename Answer>
Answer guarded(Answer refused, Call call) noexcept {
  try {
    return call();
  } catch (...) {
    return refused;
  }
}

Plugin& plugin(LV2_Handle instance) { return *static_cast<Plugin*>(instance); }
Window& window(LV2UI_Handle ui) { return *static_cast<Window*>(ui); }

LV2_Handle instantiate(const LV2_Descriptor* /*descriptor*/, double rate, const char* /*folder*/,
                       const LV2_Feature* const* features) {
  try {
    return new Plugin(rate, features);
  } catch (const std::exception& e) {
    logError(features, e.what());
    return nullptr;
  }
}

void connectPort(LV2_Handle instance, std::uint32_t port, void* location) {
  plugin(instance).connectPort(port, location);
}

void activate(LV2_Handle instance) { plugin(instance).activate(); }
void run(LV2_Handle instance, std::uint32_t frames) { plugin(instance).run(frames); }
void deactivate(LV2_Handle instance) { plugin(instance).deactivate(); }
void cleanup(LV2_Handle instance) { delete &plugin(instance); }

LV2_State_Status save(LV2_Handle instance, LV2_State_Store_Function store, LV2_State_Handle handle,
                      std::uint32_t /*flags*/, const LV2_Feature* const* /*features*/) {
  return guarded(LV2_STATE_ERR_UNKNOWN, [&] { return plugin(instance).save(store, handle); });
}

LV2_State_Status restore(LV2_Handle instance, LV2_State_Retrieve_Function retrieve,
                         LV2_State_Handle handle, std::uint32_t /*flags*/,
                         const LV2_Feature* const* /*features*/) {
  return guarded(LV2_STATE_ERR_UNKNOWN, [&] { return plugin(instance).restore(retrieve, handle); });
}

std::uint32_t getOptions(LV2_Handle instance, LV2_Options_Option* options) {
  return plugin(instance).getOptions(options);
}

std::uint32_t setOptions(LV2_Handle instance, const LV2_Options_Option* options) {
  return plugin(instance).setOptions(options);
}

const void* pluginExtension(const char* uri) {
  static constexpr LV2_State_Interface kState{save, restore};
  static constexpr LV2_Options_Interface kOptions{getOptions, setOptions};
  if (std::string_view(uri) == LV2_STATE__interface) return &kState;
  if (std::string_view(uri) == LV2_OPTIONS__interface) return &kOptions;
  return nullptr;
}

LV2UI_Handle openWindow(const LV2UI_Descriptor* /*descriptor*/, const char* pluginUri,
                        const char* /*folder*/, LV2UI_Write_Function write,
                        LV2UI_Controller controller, LV2UI_Widget* widget,
                        const LV2_Feature* const* features) {
  if (std::string_view(pluginUri) != qlx::lv2::kPluginUri) return nullptr;
  try {
    auto* const opened = new Window(write, controller, features);
    *widget = opened->widget();
    return opened;
  } catch (const std::exception& e) {
    logError(features, e.what());
    return nullptr;
  }
}

void closeWindow(LV2UI_Handle ui) { delete &window(ui); }

void portEvent(LV2UI_Handle ui, std::uint32_t port, std::uint32_t size, std::uint32_t format,
               const void* buffer) {
  float value = 0.0F;
  if (format != 0 || size != sizeof value || buffer == nullptr) return;
  std::memcpy(&value, buffer, sizeof value);
  window(ui).portMoved(port, value);
}

int idle(LV2UI_Handle ui) {
  return guarded(1, [&] {
    window(ui).idle();
    return 0;
  });
}

/// What the window is told it does not tell back.
std::uint32_t getWindowOptions(LV2UI_Handle /*ui*/, LV2_Options_Option* options) {
  return options->key == 0 ? LV2_OPTIONS_SUCCESS : LV2_OPTIONS_ERR_BAD_KEY;
}

std::uint32_t setWindowOptions(LV2UI_Handle ui, const LV2_Options_Option* options) {
  return window(ui).setOptions(options);
}

const void* windowExtension(const char* uri) {
  static constexpr LV2UI_Idle_Interface kIdle{idle};
  static constexpr LV2_Options_Interface kOptions{getWindowOptions, setWindowOptions};
  if (std::string_view(uri) == LV2_UI__idleInterface) return &kIdle;
  if (std::string_view(uri) == LV2_OPTIONS__interface) return &kOptions;
  return nullptr;
}

constexpr LV2_Descriptor kPlugin{qlx::lv2::kPluginUri, instantiate, connectPort,    activate, run,
                                 deactivate,           cleanup,     pluginExtension};
constexpr LV2UI_Descriptor kWindow{qlx::lv2::kUiUri, openWindow, closeWindow, portEvent,
                                   windowExtension};

} // namespace

extern "C" {

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(std::uint32_t index) {
  return index == 0 ? &kPlugin : nullptr;
}

LV2_SYMBOL_EXPORT const LV2UI_Descriptor* lv2ui_descriptor(std::uint32_t index) {
  return index == 0 ? &kWindow : nullptr;
}

} // extern "C"
