// SPDX-License-Identifier: ISC
#include "gui/controls/CAnimKnob.h"

namespace qlx::gui {

CAnimKnob::CAnimKnob(const CRect& size, CControlListener* listener, std::int32_t tag,
                     std::int32_t frames, CCoord heightOfOneImage, CBitmapRef strip,
                     const CPoint& offset)
    : CKnob(size, listener, tag, std::move(strip)), IMultiBitmapControl(heightOfOneImage, frames) {
  setBackOffset(offset);
}

std::unique_ptr<CView> CAnimKnob::newCopy() const {
  return std::unique_ptr<CView>(new CAnimKnob(*this));
}

void CAnimKnob::draw(CDrawContext& context) {
  drawBackground(context, {0.0, getFrameTop(normalized(drawnValue()))});
  setDirty(false);
}

} // namespace qlx::gui
