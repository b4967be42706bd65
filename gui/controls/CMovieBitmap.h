// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControl.h"
#include "gui/controls/IMultiBitmapControl.h"

namespace qlx::gui {

/// Shows the frame (int)(normalised value x (frames - 1) + 0.5) of a strip. Ignores the mouse.
class CMovieBitmap : public CControl, public IMultiBitmapControl {
 public:
  CMovieBitmap(const CRect& size, CControlListener* listener, std::int32_t tag, std::int32_t frames,
               CCoord heightOfOneImage, CBitmapRef strip, const CPoint& offset = {});

  bool isTypeOf(std::string_view className) const override {
    return className == "CMovieBitmap" || CControl::isTypeOf(className);
  }
  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;

 protected:
  bool looksAlike(float a, float b) const override {
    return getFrameTop(normalized(a)) == getFrameTop(normalized(b));
  }
  CMovieBitmap(const CMovieBitmap&) = default;
};

} // namespace qlx::gui
