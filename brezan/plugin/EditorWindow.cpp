// SPDX-License-Identifier: ISC
#include "brezan/plugin/EditorWindow.h"

#include "brezan/System.h"
#include "brezan/pictures/DiagramCanvas.h"

#include <cstdint>
#include <numbers>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace qlx::tools {

namespace {

constexpr int kIconSize = 64;

/// A rotor seen from above, in the colours of the panel: the mouth of a horn that turns.
std::vector<std::uint32_t> drawIcon() {
  constexpr double kMiddle = kIconSize / 2.0;
  constexpr double kTurn = 2.0 * std::numbers::pi;
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(kIconSize) * kIconSize);
  const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
      cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()),
                                          CAIRO_FORMAT_ARGB32, kIconSize, kIconSize, kIconSize * 4),
      cairo_surface_destroy);
  const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> context(cairo_create(surface.get()),
                                                                   cairo_destroy);
  cairo_t* cr = context.get();
  cairo_set_source_rgb(cr, kInk.red, kInk.green, kInk.blue);
  cairo_paint(cr);
  cairo_set_source_rgb(cr, kFaint.red, kFaint.green, kFaint.blue);
  cairo_set_line_width(cr, 3.0);
  cairo_arc(cr, kMiddle, kMiddle, 26.0, 0.0, kTurn);
  cairo_stroke(cr);
  cairo_set_source_rgb(cr, kOrange.red, kOrange.green, kOrange.blue);
  cairo_move_to(cr, kMiddle, kMiddle);
  cairo_arc(cr, kMiddle, kMiddle, 21.0, -kTurn / 8.0 - 0.45, -kTurn / 8.0 + 0.45);
  cairo_close_path(cr);
  cairo_fill(cr);
  cairo_arc(cr, kMiddle, kMiddle, 7.0, 0.0, kTurn);
  cairo_fill(cr);
  cairo_surface_flush(surface.get());
  return pixels;
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
  const std::vector<std::uint32_t> icon = drawIcon();
  m_window = platform::nativeWindowSystem().openTopLevel(
      {host.effectName(), "brezan", {icon.data(), kIconSize, kIconSize}}, size->width,
      size->height);
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
  return false;
}

} // namespace qlx::tools
