// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CKnob.h"
#include "gui/controls/IMultiBitmapControl.h"

namespace qlx::gui {

/// A knob drawn from a strip: frame (int)((frames - 1) x normalised value + 0.5).
class CAnimKnob : public CKnob, public IMultiBitmapControl {
 public:
  CAnimKnob(const CRect& size, CControlListener* listener, std::int32_t tag, std::int32_t frames,
            CCoord heightOfOneImage, CBitmapRef strip, const CPoint& offset = {});

  bool isTypeOf(std::string_view className) const override {
    return className == "CAnimKnob" || CKnob::isTypeOf(className);
  }
  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;

 protected:
  CAnimKnob(const CAnimKnob&) = default;
};

} // namespace qlx::gui
