// SPDX-License-Identifier: ISC
#include "gui/CView.h"

#include "gui/CFrame.h"
#include "gui/DirtyRegion.h"

namespace qlx::gui {

CView::CView(const CView& other)
    : CBaseObject(other), m_size(other.m_size), m_mouseEnabled(other.m_mouseEnabled),
      m_wantsFocus(other.m_wantsFocus) {}

void CView::draw(CDrawContext& /*context*/) {}

CMouseEventResult CView::onMouseDown(const CPoint& /*where*/, const CButtonState& /*buttons*/) {
  return CMouseEventResult::kNotHandled;
}

CMouseEventResult CView::onMouseUp(const CPoint& /*where*/, const CButtonState& /*buttons*/) {
  return CMouseEventResult::kNotHandled;
}

CMouseEventResult CView::onMouseMoved(const CPoint& /*where*/, const CButtonState& /*buttons*/) {
  return CMouseEventResult::kNotHandled;
}

CMouseEventResult CView::onMouseEntered(const CPoint& /*where*/, const CButtonState& /*buttons*/) {
  return CMouseEventResult::kNotHandled;
}

CMouseEventResult CView::onMouseExited(const CPoint& /*where*/, const CButtonState& /*buttons*/) {
  return CMouseEventResult::kNotHandled;
}

bool CView::onWheel(const CPoint& /*where*/, float /*distance*/, const CButtonState& /*buttons*/) {
  return false;
}

bool CView::onKeyDown(const CKeyCode& /*key*/) { return false; }
bool CView::onKeyUp(const CKeyCode& /*key*/) { return false; }
bool CView::onKeyAction(KeyAction /*action*/, const CButtonState& /*modifiers*/) { return false; }
void CView::onSelectionText(std::string_view /*text*/) {}
void CView::onTextBoxChanged(std::string_view /*text*/) {}

void CView::setViewSize(const CRect& size) {
  if (m_frame != nullptr) m_frame->invalidRect(m_size);
  m_size = size;
  invalid();
}

void CView::setDirty(bool dirty) {
  if (dirty || !m_rendering) m_dirty.store(dirty, std::memory_order_relaxed);
}

void CView::render(CDrawContext& context) {
  m_rendering = true;
  Drawing drawing = Drawing::kAside;
  if (m_frame != nullptr && m_frame->isScreen(context)) {
    const CRect onScreen = CRect::of(context.targetPixels(m_size));
    const bool whole = CRect::of(context.getClip()).contains(onScreen);
    drawing = whole ? Drawing::kWhole : Drawing::kPart;
  }
  // Before drawing: what another thread sets meanwhile makes the view dirty again.
  latch(drawing);
  draw(context);
  m_rendering = false;
}

void CView::collectDirty(DirtyRegion& region) {
  if (isDirty()) region.add(m_size);
}

void CView::setPlace(CFrame* frame) {
  if (m_frame != nullptr && frame != m_frame) {
    removed();
    m_frame->forgetView(*this);
  }
  const bool entered = frame != nullptr && frame != m_frame;
  m_frame = frame;
  if (entered) attached();
}

} // namespace qlx::gui
