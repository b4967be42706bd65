// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CFrame.h"

#include <functional>
#include <utility>

namespace qlx::editor {

/// The editor's frame. A click into it asks for the keyboard, so that keys reach the lever without
/// the host's giving the window the focus first. A right click that no view takes is the frame's,
/// and so is the menu key, or Shift with F10.
class MyFrame final : public gui::CFrame {
 public:
  using CFrame::CFrame;

  gui::CMouseEventResult platformOnMouseDown(const gui::CPoint& where,
                                             const gui::CButtonState& buttons) override;

  bool platformOnKeyDown(const gui::CKeyCode& key) override;

  /// Called when a menu is wanted, with what it is wanted for (null for the window) and its place:
  /// the view under a right click that no view took, or the one that has the keyboard. Not behind a
  /// modal view.
  using ContextMenuOpener = std::function<void(const gui::CView* view, const gui::CPoint& where)>;
  void onContextMenu(ContextMenuOpener opener) { m_openContextMenu = std::move(opener); }

 private:
  ContextMenuOpener m_openContextMenu;
};

} // namespace qlx::editor
