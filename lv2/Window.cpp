// SPDX-License-Identifier: ISC
#include "lv2/Window.h"

#include "gui/CFrame.h"
#include "presets/panel/CPresetSystemEditor.h"

#include <lv2/instance-access/instance-access.h>

#include <cstring>
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
      m_touch(static_cast<const LV2UI_Touch*>(featureData(features, LV2_UI__touch))),
      m_resize(static_cast<const LV2UI_Resize*>(featureData(features, LV2_UI__resize))) {
  m_known.fill(std::numeric_limits<float>::quiet_NaN());
  const void* parent = featureData(features, LV2_UI__parent);
  if (parent == nullptr) throw std::runtime_error("the host gives no parent window");
  if (!m_plugin->setWindow(*this)) throw std::runtime_error("this instance has a window already");

  const void* map = featureData(features, LV2_URID__map);
  if (map != nullptr) {
    const auto& urids = *static_cast<const LV2_URID_Map*>(map);
    m_scaleFactor = urids.map(urids.handle, LV2_UI__scaleFactor);
    m_float = urids.map(urids.handle, LV2_ATOM__Float);
  }
  if (const void* options = featureData(features, LV2_OPTIONS__options))
    setOptions(static_cast<const LV2_Options_Option*>(options));

  // The effect's editor is this class.
  auto& editor = static_cast<presets::CPresetSystemEditor&>(*m_plugin->effect().getEditor());
  bool isOpen = false;
  try {
    isOpen = editor.open(const_cast<void*>(parent));
  } catch (const std::exception&) { // said below
  }
  if (!isOpen) {
    m_plugin->forgetWindow();
    throw std::runtime_error("no window can be had");
  }
  // The interface hands an X11 window's number over as a pointer.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  m_widget = reinterpret_cast<LV2UI_Widget>(editor.getFrame()->getWindow().handle());

  sdk::EditRectangle* size = nullptr;
  if (editor.getRect(&size)) sizeWanted(size->right - size->left, size->bottom - size->top);
}

Window::~Window() { instanceGone(); }

void Window::instanceGone() {
  if (m_plugin == nullptr) return;
  m_plugin->effect().getEditor()->close();
  m_plugin->forgetWindow();
  m_plugin = nullptr;
}

bool Window::sizeWanted(std::int32_t width, std::int32_t height) {
  return m_resize != nullptr && m_resize->ui_resize(m_resize->handle, width, height) == 0;
}

std::uint32_t Window::setOptions(const LV2_Options_Option* options) {
  std::uint32_t status = LV2_OPTIONS_SUCCESS;
  for (; options->key != 0; ++options) {
    float scale = 0.0F;
    if (options->key != m_scaleFactor) {
      status |= LV2_OPTIONS_ERR_BAD_KEY;
    } else if (options->type != m_float || options->size != sizeof scale) {
      status |= LV2_OPTIONS_ERR_BAD_VALUE;
    } else {
      std::memcpy(&scale, options->value, sizeof scale);
      if (m_plugin != nullptr) m_plugin->effect().getEditor()->setHostScale(scale);
    }
  }
  return status;
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
