// SPDX-License-Identifier: ISC
#include "gui/controls/CMovieBitmap.h"

namespace qlx::gui {

CMovieBitmap::CMovieBitmap(const CRect& size, CControlListener* listener, std::int32_t tag,
                           std::int32_t frames, CCoord heightOfOneImage, CBitmapRef strip,
                           const CPoint& offset)
    : CControl(size, listener, tag, std::move(strip)),
      IMultiBitmapControl(heightOfOneImage, frames) {
  setBackOffset(offset);
  setMouseEnabled(false);
}

std::unique_ptr<CView> CMovieBitmap::newCopy() const {
  return std::unique_ptr<CView>(new CMovieBitmap(*this));
}

void CMovieBitmap::draw(CDrawContext& context) {
  drawBackground(context, {0.0, getFrameTop(normalized(drawnValue()))});
  setDirty(false);
}

} // namespace qlx::gui
