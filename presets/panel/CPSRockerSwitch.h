// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CRockerSwitch.h"

namespace qlx::presets {

/// A two-sided switch that springs back, with five frames: rest, pointer over the left or right
/// half, left or right half pressed. The listener is told of the press only.
class CPSRockerSwitch final : public gui::CRockerSwitch {
 public:
  CPSRockerSwitch(const gui::CRect& size, gui::CControlListener* listener, std::int32_t tag,
                  gui::CCoord heightOfOneImage, gui::CBitmapRef strip);

  void draw(gui::CDrawContext& context) override;
  gui::CMouseEventResult onMouseDown(const gui::CPoint& where,
                                     const gui::CButtonState& buttons) override;
  gui::CMouseEventResult onMouseUp(const gui::CPoint& where,
                                   const gui::CButtonState& buttons) override;
  gui::CMouseEventResult onMouseMoved(const gui::CPoint& where,
                                      const gui::CButtonState& buttons) override;
  gui::CMouseEventResult onMouseExited(const gui::CPoint& where,
                                       const gui::CButtonState& buttons) override;

 private:
  void setHoverSide(float side);

  float m_hoverSide = 0.0F; ///< -1, 0 or 1
};

} // namespace qlx::presets
