// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControl.h"

namespace qlx::gui {

class CSplashScreen;

/// The picture of a splash screen: a modal view that a left click anywhere in the frame closes, and
/// Escape.
class CSplashView : public CControl {
 public:
  /// `owner` lives as long as the frame.
  CSplashView(CSplashScreen& owner, const CRect& size);

  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;
  /// The whole frame: beside the picture there would be nothing to click but what it covers up.
  bool hitTest(const CPoint& /*where*/) const override { return true; }
  platform::PointerShape getPointerShape() const override { return platform::PointerShape::kHand; }
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  bool onKeyDown(const CKeyCode& key) override;

 protected:
  CSplashView(const CSplashView&) = default;

 private:
  void close();

  CSplashScreen& m_owner;
};

/// An area that shows a picture over the frame when clicked, until the next click or Escape. Value
/// 1 while it is shown, else 0. Draws nothing itself.
class CSplashScreen : public CControl {
 public:
  /// `screen` is where the picture is shown.
  CSplashScreen(const CRect& size, CControlListener* listener, std::int32_t tag, CBitmapRef picture,
                const CRect& screen, const CPoint& offset = {});

  bool isTypeOf(std::string_view className) const override {
    return className == "CSplashScreen" || CControl::isTypeOf(className);
  }
  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;
  platform::PointerShape getPointerShape() const override { return platform::PointerShape::kHand; }
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  bool onKeyAction(KeyAction action, const CButtonState& modifiers) override;

  const CRect& getScreen() const { return m_screen; }

  /// The screen is closed: the value returns to the minimum and the frame is redrawn. The modal
  /// view is its closer's to remove.
  void unSplash();

 protected:
  CSplashScreen(const CSplashScreen&) = default;
  std::string textOfValue() const override { return getValue() != getMin() ? "shown" : "closed"; }
  /// The view that a click shows.
  virtual std::unique_ptr<CSplashView> makeView();

 private:
  CRect m_screen;
};

} // namespace qlx::gui
