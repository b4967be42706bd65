// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CAnimKnob.h"

namespace qlx::editor {

/// The editor's knob: a strip of frames, a straight drag with a travel of its own (right and up
/// raise, Shift for fine), wheel steps, back to the default by Control or double-click, and, for
/// parameters with steps, a pointer that stands only at the steps while the value stays continuous.
class CAnimKnob3 final : public gui::CAnimKnob {
 public:
  /// Where the pointer of a stepped knob stands: `steps` places, evenly over low..high of the
  /// strip. No steps: everywhere.
  struct Steps {
    std::int32_t count = 0;
    float low = 0.0F;
    float high = 1.0F;
  };

  CAnimKnob3(const gui::CRect& size, gui::CControlListener* listener, std::int32_t tag,
             std::int32_t frames, gui::CCoord heightOfOneImage, gui::CBitmapRef strip,
             const gui::CPoint& offset, const Steps& steps);

  /// Change of value per notch of the wheel, and what Shift makes of it.
  void setWheelStep(float step, float fineFactor) {
    m_wheelStep = step;
    m_wheelFineFactor = fineFactor;
  }
  /// The whole range takes 1000 x `factor` pixels.
  void setDragFactor(float factor) { m_dragFactor = factor; }

  void draw(gui::CDrawContext& context) override;
  gui::CMouseEventResult onMouseDown(const gui::CPoint& where,
                                     const gui::CButtonState& buttons) override;
  gui::CMouseEventResult onMouseMoved(const gui::CPoint& where,
                                      const gui::CButtonState& buttons) override;
  bool onWheel(const gui::CPoint& where, float distance, const gui::CButtonState& buttons) override;
  /// A step is a notch of the wheel, a page five of them; of a knob with steps both are one step.
  bool onKeyAction(gui::KeyAction action, const gui::CButtonState& modifiers) override;

 private:
  bool looksAlike(float a, float b) const override { return frameFor(a) == frameFor(b); }
  std::int32_t frameFor(float value) const;
  /// Value per pixel.
  float dragCoefficient(const gui::CButtonState& buttons) const;

  Steps m_steps;
  float m_wheelStep = 0.01F;
  float m_wheelFineFactor = 0.1F;
  float m_dragFactor = 1.0F;

  // The running drag.
  gui::CPoint m_downPoint;
  float m_entryValue = 0.0F;
  float m_coefficient = 0.0F;
};

} // namespace qlx::editor
