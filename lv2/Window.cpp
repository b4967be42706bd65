// SPDX-License-Identifier: ISC
#include "lv2/Window.h"

#include "gui/CFrame.h"
#include "presets/panel/CPresetSystemEditor.h"

#include <lv2/instance-access/instance-access.h>

#include <limits>
#include <stdexcept>
#include <utility>

namespace qlx::lv2 {

namespace {

Plugin* instanceOf(const LV2_Feature* const* features) {
  const void* instance = featureData(features, LV2_INSTANCE_ACCESS_URI);
  if (instance == nullptr)
    throw std::runtime_error("the host offers no instance-access, which the window needs");
  return static_cast<Plugin*>(const_cast<void*>(instance));
}

} // namespace

Window::Window(LV2UI_Write_Function write, LV2UI_Controller controller,
               const LV2_Feature* const* features)
    : m_plugin(instanceOf(features)), m_write(write), m_controller(controller),
      m_touch(static_cast<const LV2UI_Touch*>(featureData(features, LV2_UI__touch))) {
  m_known.fill(std::numeric_limits<float>::quiet_NaN());
  const void* parent = featureData(features, LV2_UI__parent);
  if (parent == nullptr) throw std::runtime_error("the host gives no parent window");
  if (!m_plugin->setWindow(*this)) throw std::runtime_error("this instance has a window already");

  // The effect's editor is this class.
  auto& editor = static_cast<presets::CPresetSystemEditor&>(*m_plugin->effect().getEditor());
  if (!editor.open(const_cast<void*>(parent))) {
    m_plugin->forgetWindow();
    throw std::runtime_error("no window can be had");
  }
  // The interface hands an X11 window's number over as a pointer.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  m_widget = reinterpret_cast<LV2UI_Widget>(editor.getFrame()->getWindow().handle());

  const auto* resize = static_cast<const LV2UI_Resize*>(featureData(features, LV2_UI__resize));
  sdk::EditRectangle* size = nullptr;
  if (resize != nullptr && editor.getRect(&size)) {
    resize->ui_resize(resize->handle, size->right - size->left, size->bottom - size->top);
  }
}

Window::~Window() { instanceGone(); }

void Window::instanceGone() {
  if (m_plugin == nullptr) return;
  m_plugin->effect().getEditor()->close();
  m_plugin->forgetWindow();
  m_plugin = nullptr;
}

void Window::idle() {
  if (m_plugin != nullptr) m_plugin->effect().getEditor()->idle();
}

void Window::portMoved(std::uint32_t port, float value) {
  if (port < kFirstControl || port - kFirstControl >= kNumControlPorts) return;
  m_known[port - kFirstControl] = value;
}

void Window::parameterMoved(std::int32_t parameter) {
  const std::size_t control = controlOf(parameter);
  if (control >= kNumControlPorts) return;
  if (parameter == plugin::kBypass && std::exchange(m_bypassBegins, false)) touch(control, true);
  tell(control, true);
}

void Window::presetSelected() {
  for (std::size_t control = 0; control < kNumControlPorts; ++control) tell(control, false);
}

void Window::gesture(std::int32_t parameter, bool begins) {
  const std::size_t control = controlOf(parameter);
  if (control >= kNumControlPorts) return;
  if (parameter == plugin::kBypass) {
    // Presets come with an empty gesture of the first parameter; it is nobody's touch.
    const bool empty = std::exchange(m_bypassBegins, begins);
    if (begins || empty) return;
  }
  touch(control, begins);
}

void Window::touch(std::size_t control, bool grabbed) {
  if (m_touch == nullptr) return;
  m_touch->touch(m_touch->handle, kFirstControl + static_cast<std::uint32_t>(control), grabbed);
}

void Window::tell(std::size_t control, bool always) {
  const ControlPort& port = kControlPorts[control];
  const float value = scaleOf(port).toPort(m_plugin->effect().getParameter(port.parameter));
  if (value == m_known[control] && !always) return;
  m_known[control] = value;
  m_plugin->controls().told(control);
  m_write(m_controller, kFirstControl + static_cast<std::uint32_t>(control), sizeof value, 0,
          &value);
}

} // namespace qlx::lv2
