// SPDX-License-Identifier: ISC
#pragma once

#include "lv2/Plugin.h"

#include <lv2/ui/ui.h>

#include <array>

namespace qlx::lv2 {

/// The effect's editor inside the host's X11 window. It tells the host by writing its ports what
/// the user does. The host's thread for windows only.
class Window final : private WindowListener {
 public:
  /// Throws std::runtime_error when the host lacks what is needed or no window can be had.
  Window(LV2UI_Write_Function write, LV2UI_Controller controller,
         const LV2_Feature* const* features);
  ~Window() override;
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  /// The system's number of the editor's window.
  LV2UI_Widget widget() const { return m_widget; }
  void idle();
  /// Takes the host's wish for the window's size.
  std::uint32_t setOptions(const LV2_Options_Option* options);
  /// The host's port has moved.
  void portMoved(std::uint32_t port, float value);

 private:
  void parameterMoved(std::int32_t parameter) override;
  void gesture(std::int32_t parameter, bool begins) override;
  void presetSelected() override;
  bool sizeWanted(std::int32_t width, std::int32_t height) override;
  void instanceGone() override;
  void tell(std::size_t control, bool always);
  void touch(std::size_t control, bool grabbed);

  Plugin* m_plugin; ///< null once it has gone
  LV2UI_Write_Function m_write;
  LV2UI_Controller m_controller;
  const LV2UI_Touch* m_touch;
  const LV2UI_Resize* m_resize;
  LV2_URID m_scaleFactor = 0; ///< 0 where the host maps nothing
  LV2_URID m_float = 0;
  LV2UI_Widget m_widget = nullptr;
  bool m_bypassBegins = false; ///< a gesture of Bypass has begun and nothing has moved yet
  std::array<float, kNumControlPorts> m_known; ///< what the host's ports read
};

} // namespace qlx::lv2
