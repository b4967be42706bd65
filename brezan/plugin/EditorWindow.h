// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/plugin/PluginHost.h"
#include "platform/NativeWindow.h"

#include <functional>
#include <memory>
#include <utility>

namespace qlx::tools {

/// Asks plug-ins that are loaded from now on to open their editors at this scale; 1, 1.5, 2 or 3.
void wantEditorScale(double scale);

/// A window on the desktop with the plug-in's editor in it. The plug-in outlives it.
class EditorWindow final : private platform::WindowListener {
 public:
  /// Throws std::runtime_error when there is no display or the plug-in opens no editor.
  explicit EditorWindow(PluginHost& host);
  ~EditorWindow() override;
  EditorWindow(const EditorWindow&) = delete;
  EditorWindow& operator=(const EditorWindow&) = delete;

  /// False once the user has closed it.
  bool isOpen() const { return m_open; }

  /// What a host does for an open editor some 30 to 60 times a second.
  void idle();

  /// Is told of the keys that the plug-in has left to its host.
  void setKeyListener(std::function<void(const platform::WindowEvent&)> listener) {
    m_keyListener = std::move(listener);
  }

  /// The desktop's number of the window.
  std::uintptr_t number() const { return m_window->handle(); }

 private:
  bool onWindowEvent(const platform::WindowEvent& event) override;

  PluginHost& m_host;
  std::unique_ptr<platform::NativeWindow> m_window;
  std::function<void(const platform::WindowEvent&)> m_keyListener;
  bool m_open = true;
};

} // namespace qlx::tools
