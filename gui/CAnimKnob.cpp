#include "gui/CAnimKnob.h"

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
  const float last = static_cast<float>(getNumSubPixmaps() - 1);
  const auto frame = static_cast<std::int32_t>(getValueNormalized() * last + 0.5F);
  drawBackground(context, {0.0, frame * getHeightOfOneImage()});
  setDirty(false);
}

} // namespace qlx::gui
