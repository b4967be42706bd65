// SPDX-License-Identifier: ISC
#include "brezan/plugin/EditorWindow.h"

#include "brezan/System.h"
#include "brezan/pictures/DiagramCanvas.h"

#include <cmath>
#include <numbers>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace qlx::tools {

namespace {

constexpr int kIconSize = 64;

/// A rotor seen from above, in the colours of the panel: the mouth of a horn that turns.
gui::PixelBuffer drawIcon() {
  constexpr double kMiddle = kIconSize / 2.0;
  constexpr gui::CRect kAll{0.0, 0.0, kIconSize, kIconSize};
  DiagramCanvas canvas(kIconSize, kIconSize, kInk);
  gui::ShapeFiller ring;
  ring.addRoundRect(kAll.insetBy(4.5, 4.5), kIconSize);
  ring.addRoundRect(kAll.insetBy(7.5, 7.5), kIconSize, gui::ShapeFiller::Direction::Anticlockwise);
  canvas.colour(kFaint);
  canvas.fill(ring);

  constexpr double kMouth = 21.0;     // from the axis
  constexpr double kHalfWidth = 0.45; // radians
  constexpr double kAim = -std::numbers::pi / 4.0;
  constexpr int kSteps = 8;
  std::vector<gui::CPoint> horn{{kMiddle, kMiddle}};
  for (int step = 0; step <= kSteps; ++step) {
    const double angle = kAim + kHalfWidth * (2.0 * step / kSteps - 1.0);
    horn.push_back({kMiddle + kMouth * std::cos(angle), kMiddle + kMouth * std::sin(angle)});
  }
  gui::ShapeFiller rotor;
  rotor.addOutline(std::move(horn));
  canvas.colour(kOrange);
  canvas.fill(rotor);
  canvas.dot(kMiddle, kMiddle, 7.0);
  return canvas.pixels();
}

} // namespace

void wantEditorScale(double scale) {
  std::ostringstream text;
  text << scale;
  setEnvironment("QLX_SCALE", text.str());
}

EditorWindow::EditorWindow(PluginHost& host) : m_host(host) {
  const auto size = host.editorSize();
  if (!size) throw std::runtime_error("the plug-in has no editor");
  const gui::PixelBuffer icon = drawIcon();
  m_window = platform::nativeWindowSystem().openTopLevel({host.effectName(), "brezan", icon.view()},
                                                         size->width, size->height);
  if (m_window == nullptr) throw std::runtime_error("there is no display to open a window on");
  m_window->setListener(this);
  m_window->show();
  host.setSizeListener([this](EditorSize wanted) {
    m_window->resize(wanted.width, wanted.height);
    return true;
  });
  if (!host.openEditor(m_window->handle()))
    throw std::runtime_error("the plug-in did not open its editor");
}

EditorWindow::~EditorWindow() {
  m_host.setSizeListener({});
  m_host.closeEditor();
}

void EditorWindow::idle() {
  m_window->pump();
  m_host.idleEditor();
}

bool EditorWindow::onWindowEvent(const platform::WindowEvent& event) {
  if (event.type == platform::WindowEventType::kClosed) m_open = false;
  if (event.type == platform::WindowEventType::kKeyDown && m_keyListener) m_keyListener(event);
  return false;
}

} // namespace qlx::tools
