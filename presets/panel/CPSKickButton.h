// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CKickButton.h"

#include <functional>
#include <utility>

namespace qlx::presets {

/// A button of the preset panel with three frames: rest, pointer over it, pressed. One that needs a
/// double-click passes over single ones, and with Control its value is 0.5 instead of 1. The
/// listener is told of the press only. A key presses the first kind; of the second kind it asks for
/// what the presses do.
class CPSKickButton final : public gui::CKickButton {
 public:
  enum class Press : bool { kSingle, kDouble };

  CPSKickButton(const gui::CRect& size, gui::CControlListener* listener, std::int32_t tag,
                gui::CCoord heightOfOneImage, gui::CBitmapRef strip, Press press);

  void draw(gui::CDrawContext& context) override;
  gui::CMouseEventResult onMouseDown(const gui::CPoint& where,
                                     const gui::CButtonState& buttons) override;
  gui::CMouseEventResult onMouseUp(const gui::CPoint& where,
                                   const gui::CButtonState& buttons) override;
  gui::CMouseEventResult onMouseEntered(const gui::CPoint& where,
                                        const gui::CButtonState& buttons) override;
  gui::CMouseEventResult onMouseExited(const gui::CPoint& where,
                                       const gui::CButtonState& buttons) override;

  bool onKeyAction(gui::KeyAction action, const gui::CButtonState& modifiers) override;
  /// Called when a key would press a button that needs a double-click.
  void onChoiceWanted(std::function<void()> wanted) { m_choiceWanted = std::move(wanted); }
  /// A double-click, with Control or without.
  void doublePress(bool control);

  /// As a release of the mouse, which may have gone to a window that the press has opened.
  void release();

 private:
  bool m_needsDoubleClick;
  std::function<void()> m_choiceWanted;
  bool m_hover = false;
  bool m_pressed = false;
};

} // namespace qlx::presets
