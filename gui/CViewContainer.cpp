// SPDX-License-Identifier: ISC
#include "gui/CViewContainer.h"

#include "gui/CFrame.h"

#include <algorithm>

namespace qlx::gui {

namespace {

bool isReached(const CView& view, const CPoint& where) {
  return view.getMouseEnabled() && view.hitTest(where);
}

} // namespace

CViewContainer::CViewContainer(const CViewContainer& other) : CView(other) {
  for (const auto& view : other.m_views)
    if (auto copy = view->newCopy()) addView(std::move(copy));
}

CViewContainer::~CViewContainer() { removeAllViews(); }

std::unique_ptr<CView> CViewContainer::newCopy() const {
  return std::unique_ptr<CView>(new CViewContainer(*this));
}

void CViewContainer::draw(CDrawContext& context) { drawViews(context); }

void CViewContainer::drawViews(CDrawContext& context) {
  for (const auto& view : m_views) {
    const PixelRect touched = context.targetPixels(view->getViewSize());
    if (!platform::intersection(touched, context.getClip()).empty()) view->render(context);
  }
}

void CViewContainer::insertView(std::unique_ptr<CView> view) {
  CView& added = *view;
  m_views.push_back(std::move(view));
  added.setPlace(getFrame());
  added.setDirty();
}

std::unique_ptr<CView> CViewContainer::removeView(CView& view) {
  const auto place =
      std::ranges::find_if(m_views, [&view](const auto& owned) { return owned.get() == &view; });
  if (place == m_views.end()) return nullptr;
  if (CFrame* frame = getFrame()) frame->invalidRect(view.getViewSize());
  std::unique_ptr<CView> taken = std::move(*place);
  m_views.erase(place);
  taken->setPlace(nullptr);
  return taken;
}

void CViewContainer::removeAllViews() {
  while (!m_views.empty()) removeView(*m_views.back());
}

CView* CViewContainer::getViewAt(const CPoint& where) const {
  for (auto view = m_views.rbegin(); view != m_views.rend(); ++view) {
    if (!isReached(**view, where)) continue;
    const auto* container = dynamic_cast<const CViewContainer*>(view->get());
    CView* inner = container == nullptr ? nullptr : container->getViewAt(where);
    return inner != nullptr ? inner : view->get();
  }
  return nullptr;
}

void CViewContainer::collectDirty(DirtyRegion& region) {
  CView::collectDirty(region);
  for (const auto& view : m_views) view->collectDirty(region);
}

void CViewContainer::setPlace(CFrame* frame) {
  for (const auto& view : m_views) view->setPlace(frame);
  CView::setPlace(frame);
}

std::pair<CView*, CMouseEventResult>
CViewContainer::dispatchMouseDown(const CPoint& where, const CButtonState& buttons) {
  for (auto view = m_views.rbegin(); view != m_views.rend(); ++view) {
    if (!isReached(**view, where)) continue;
    if (auto* container = dynamic_cast<CViewContainer*>(view->get())) {
      const auto taken = container->dispatchMouseDown(where, buttons);
      if (taken.second != CMouseEventResult::kNotHandled) return taken;
    }
    CView* asked = view->get();
    const CMouseEventResult result = asked->onMouseDown(where, buttons);
    if (result != CMouseEventResult::kNotHandled) return {asked, result};
  }
  return {nullptr, CMouseEventResult::kNotHandled};
}

bool CViewContainer::onWheel(const CPoint& where, float distance, const CButtonState& buttons) {
  for (auto view = m_views.rbegin(); view != m_views.rend(); ++view) {
    if (!isReached(**view, where)) continue;
    if ((*view)->onWheel(where, distance, buttons)) return true;
  }
  return false;
}

} // namespace qlx::gui
