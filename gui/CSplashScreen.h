#pragma once

#include "gui/CControl.h"

namespace qlx::gui {

/// An area that shows a picture over the frame when clicked, until the picture is clicked. Value 1
/// while it is shown, else 0. Draws nothing itself.
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
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;

  const CRect& getScreen() const { return m_screen; }

  /// The screen is closed: the value returns to the minimum and the frame is redrawn. The modal
  /// view is its closer's to remove.
  void unSplash();

 protected:
  CSplashScreen(const CSplashScreen&) = default;

 private:
  CRect m_screen;
};

} // namespace qlx::gui
