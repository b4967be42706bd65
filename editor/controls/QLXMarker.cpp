// SPDX-License-Identifier: ISC
#include "editor/controls/QLXMarker.h"

#include <algorithm>
#include <cmath>

namespace qlx::editor {

QLXMarker::QLXMarker(const gui::CRect& size, gui::CControlListener* listener, std::int32_t tag,
                     const Travel& travel, gui::CBitmapRef handle, gui::CBitmapRef strip)
    : CControl(size, listener, tag), m_handle(std::move(handle)), m_strip(std::move(strip)),
      m_travel(travel), m_way(travel.stripWidth + (m_handle ? m_handle->width() : 0)),
      m_copyRect{size.left, size.top, size.left + (m_strip ? m_strip->width() - 1 : 0),
                 size.top + (m_strip ? m_strip->height() : 0)} {
  setHandleOffset(travel.handleOffset);
}

QLXMarker::QLXMarker(const QLXMarker& other)
    : CControl(other), m_handle(other.m_handle), m_strip(other.m_strip), m_travel(other.m_travel),
      m_way(other.m_way), m_minLeft(other.m_minLeft), m_maxRight(other.m_maxRight),
      m_copyRect(other.m_copyRect) {}

std::unique_ptr<gui::CView> QLXMarker::newCopy() const {
  return std::unique_ptr<gui::CView>(new QLXMarker(*this));
}

void QLXMarker::setHandleOffset(const gui::CPoint& offset) {
  m_travel.handleOffset = offset;
  m_minLeft = offset.x;
  m_maxRight = offset.x + m_way + (m_handle ? m_handle->width() : 0);
  invalid();
}

gui::CRect QLXMarker::handlePlace(float value) const {
  if (m_handle == nullptr) return {};
  float turns = 1.0F - normalized(value) + m_travel.phaseOffset;
  if (turns > 1.0F) {
    turns -= 1.0F;
  } else if (turns < -1.0F) {
    turns += 1.0F;
  }
  const gui::CPoint& origin = m_travel.handleOffset;
  const gui::CCoord left = std::floor(static_cast<double>(turns) * m_way) + origin.x;
  const gui::CCoord shownLeft = std::max(left, m_minLeft);
  return {shownLeft, origin.y, std::min(shownLeft + m_handle->width(), m_maxRight),
          origin.y + m_handle->height()};
}

void QLXMarker::draw(gui::CDrawContext& context) {
  if (m_strip == nullptr) return setDirty(false);
  const int scale = context.getArtworkScale();
  if (m_offscreen == nullptr || m_offscreen->scale() != scale) {
    m_offscreen =
        std::make_unique<gui::COffscreenContext>(m_strip->width(), m_strip->height(), scale);
    composeStrip();
    m_stripIsOpaque = m_offscreen->isOpaque();
  }
  if (m_stripIsOpaque && scale == context.getScale()) {
    drawDirectly(context);
  } else {
    composeStrip();
    if (m_handle != nullptr)
      m_offscreen->context().drawBitmap(*m_handle, handlePlace(drawnValue()));
    m_offscreen->copyTo(context, m_copyRect);
  }
  setDirty(false);
}

void QLXMarker::composeStrip() {
  m_offscreen->clear();
  m_offscreen->context().drawBitmap(*m_strip, {0.0, 0.0, static_cast<double>(m_strip->width()),
                                               static_cast<double>(m_strip->height())});
}

// The same pixels as by way of the other surface, without writing and reading that.
void QLXMarker::drawDirectly(gui::CDrawContext& context) const {
  context.drawBitmap(*m_strip, m_copyRect);
  if (m_handle == nullptr) return;
  const gui::CRect inStrip = handlePlace(drawnValue());
  const gui::CPoint corner = m_copyRect.topLeft();
  const gui::CRect place{inStrip.left + corner.x, inStrip.top + corner.y, inStrip.right + corner.x,
                         inStrip.bottom + corner.y};
  const gui::CRect shown = place.intersect(m_copyRect);
  context.drawBitmap(*m_handle, shown, shown.topLeft() - place.topLeft());
}

} // namespace qlx::editor
