// SPDX-License-Identifier: ISC
#pragma once

#include "editor/WheelStep.h"
#include "gui/CControl.h"
#include "gui/controls/IMultiBitmapControl.h"

namespace qlx::editor {

/// The speed lever: the arm of a half-moon switch that swings 40 degrees to either side about an
/// axis behind the panel. The top of the travel is the maximum. Pointer, wheel, and the arrow keys
/// once it has been clicked.
class QLXVerticalSwitch final : public gui::CControl, public gui::IMultiBitmapControl {
 public:
  /// Where the pointer moves the lever, in pixels below the control's top.
  struct Travel {
    float top = 0.0F;
    float bottom = 1.0F;
  };

  /// A frame of the strip is as high as the rectangle. The first frame shows the maximum.
  QLXVerticalSwitch(const gui::CRect& size, gui::CControlListener* listener, std::int32_t tag,
                    const gui::CBitmapRef& strip, const Travel& travel,
                    const gui::CPoint& offset = {});

  bool isTypeOf(std::string_view className) const override {
    return className == "QLXVerticalSwitch" || CControl::isTypeOf(className);
  }
  std::unique_ptr<gui::CView> newCopy() const override;

  void setWheelStep(const WheelStep& wheel) { m_wheel = wheel; }

  void draw(gui::CDrawContext& context) override;
  platform::PointerShape getPointerShape() const override {
    return platform::PointerShape::kUpDown;
  }
  /// The brass plate, between the captions and beside the scale.
  gui::CRect getRingPlace() const override;
  gui::CMouseEventResult onMouseDown(const gui::CPoint& where,
                                     const gui::CButtonState& buttons) override;
  gui::CMouseEventResult onMouseUp(const gui::CPoint& where,
                                   const gui::CButtonState& buttons) override;
  gui::CMouseEventResult onMouseMoved(const gui::CPoint& where,
                                      const gui::CButtonState& buttons) override;
  bool onWheel(const gui::CPoint& where, float distance, const gui::CButtonState& buttons) override;
  /// Up goes one frame towards the minimum, down towards the maximum.
  bool onKeyDown(const gui::CKeyCode& key) override;
  /// Steps are a frame and pages eight, in the same directions. At an end of the travel the keys
  /// change nothing but aren't the host's.
  bool onKeyAction(gui::KeyAction action, const gui::CButtonState& modifiers) override;

 private:
  QLXVerticalSwitch(const QLXVerticalSwitch&) = default;
  float lastFrame() const { return static_cast<float>(getNumSubPixmaps() - 1); }
  float range() const { return getMax() - getMin(); }
  float valueAt(gui::CCoord y) const;
  bool looksAlike(float a, float b) const override { return frameFor(a) == frameFor(b); }
  std::int32_t frameFor(float value) const;

  Travel m_travel;
  WheelStep m_wheel;
};

} // namespace qlx::editor
