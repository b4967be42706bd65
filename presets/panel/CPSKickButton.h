// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CKickButton.h"

namespace qlx::presets {

/// A button of the preset panel with three frames: rest, pointer over it, pressed. One that needs a
/// double-click passes over single ones, and with Control its value is 0.5 instead of 1. The
/// listener is told of the press only.
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

  /// As a release of the mouse, which may have gone to a window that the press has opened.
  void release();

 private:
  bool m_needsDoubleClick;
  bool m_hover = false;
  bool m_pressed = false;
};

} // namespace qlx::presets
