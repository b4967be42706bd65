#include "brezan/plugin/EditorWindow.h"

#include <stdexcept>

namespace qlx::tools {

EditorWindow::EditorWindow(PluginHost& host) : m_host(host) {
  const auto size = host.editorSize();
  if (!size) throw std::runtime_error("the plug-in has no editor");
  m_window =
      platform::nativeWindowSystem().openTopLevel({host.effectName()}, size->width, size->height);
  if (m_window == nullptr) throw std::runtime_error("there is no display to open a window on");
  m_window->setListener(this);
  m_window->show();
  if (!host.openEditor(m_window->handle()))
    throw std::runtime_error("the plug-in did not open its editor");
}

EditorWindow::~EditorWindow() { m_host.closeEditor(); }

void EditorWindow::idle() {
  m_window->pump();
  m_host.idleEditor();
}

bool EditorWindow::onWindowEvent(const platform::WindowEvent& event) {
  if (event.type == platform::WindowEventType::kClosed) m_open = false;
  return false;
}

} // namespace qlx::tools
