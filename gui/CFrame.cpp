// SPDX-License-Identifier: ISC
#include "gui/CFrame.h"

namespace qlx::gui {

CFrame::CFrame(const CRect& size, std::unique_ptr<platform::NativeWindow> window,
               std::shared_ptr<CTypeface> typeface)
    : CViewContainer(size), m_window(std::move(window)), m_typeface(std::move(typeface)),
      m_picture(size.touchedPixels().right, size.touchedPixels().bottom),
      m_context(m_picture, m_typeface.get()),
      m_dirtyRegion({0, 0, m_picture.width, m_picture.height}),
      m_exposedRegion({0, 0, m_picture.width, m_picture.height}) {
  setPlace(this, nullptr);
  m_window->setListener(this);
}

CFrame::~CFrame() {
  closePopup();
  m_deadPopups.clear();
  m_window->setListener(nullptr);
  removeModalView();
  m_dead.clear();
  removeAllViews();
}

bool CFrame::isOpen() const { return m_window->isOpen(); }

// --- Drawing ---

void CFrame::draw(CDrawContext& context) {
  const CRect all = getViewSize();
  const bool covered = m_background != nullptr && m_background->width() >= m_picture.width &&
                       m_background->height() >= m_picture.height;
  if (!covered) context.fillRect(all, m_backgroundColour);
  if (m_background != nullptr) context.drawBitmap(*m_background, all);
  drawViews(context);
  if (m_modalView != nullptr) m_modalView->render(context);
}

void CFrame::setBackground(CBitmapRef background) {
  m_background = std::move(background);
  invalidAll();
}

void CFrame::setBackgroundColor(const CColor& colour) {
  m_backgroundColour = colour;
  invalidAll();
}

void CFrame::invalidRect(const CRect& area) { m_dirtyRegion.add(area.touchedPixels()); }
void CFrame::invalidAll() { invalidRect(getViewSize()); }

void CFrame::open() {
  // Shown first, so that the picture is there at once even if nobody ever calls idle.
  m_window->show();
  invalidAll();
  redraw();
}

void CFrame::redraw() {
  collectDirty(m_dirtyRegion);
  if (m_modalView != nullptr) m_modalView->collectDirty(m_dirtyRegion);
  for (const PixelRect& area : m_dirtyRegion.areas()) {
    m_context.setClip(area);
    render(m_context);
    m_exposedRegion.add(area);
  }
  m_dirtyRegion.clear();
  if (m_exposedRegion.empty()) return;
  m_window->present(m_picture.view(), m_exposedRegion.areas());
  m_exposedRegion.clear();
}

void CFrame::drawInto(PixelBuffer& target) {
  CDrawContext context(target, m_typeface.get());
  draw(context);
}

void CFrame::idle() {
  m_window->pump();
  if (isOpen()) {
    giveUnneededKeyboardBack();
    if (m_focusView != nullptr) m_focusView->onIdle();
    if (m_popup != nullptr) m_popup->redraw();
    redraw();
  }
  buryTheDead();
}

void CFrame::buryTheDead() {
  m_deadPopups.clear();
  m_dead.clear();
}

// --- Modal view, focus, popup ---

bool CFrame::setModalView(std::unique_ptr<CView> view) {
  if (m_modalView != nullptr) return false;
  setHoverView(nullptr, {}, {});
  m_modalView = std::move(view);
  m_modalView->setPlace(this, this);
  m_modalView->setDirty();
  return true;
}

void CFrame::removeModalView() {
  if (m_modalView == nullptr) return;
  invalidRect(m_modalView->getViewSize());
  m_modalView->setPlace(nullptr, nullptr);
  m_dead.push_back(std::move(m_modalView));
}

void CFrame::setFocusView(CView* view) {
  if (view == m_focusView) return;
  CView* before = m_focusView;
  m_focusView = view;
  if (before != nullptr) before->onFocusLost();
  if (m_focusView != nullptr && m_focusView == view) m_focusView->onFocusGained();
}

void CFrame::takeKeyboardFocus() { m_window->takeFocus(); }
void CFrame::giveKeyboardFocusBack() { m_window->giveFocusBack(); }

// The host's own keys are to work again once the pointer is elsewhere, unless what the user has
// open here is still to be typed to.
void CFrame::giveUnneededKeyboardBack() {
  if (!m_pointerLeft || editsText() || m_popup != nullptr || m_modalView != nullptr) return;
  m_pointerLeft = false;
  giveKeyboardFocusBack();
}

bool CFrame::openPopup(std::unique_ptr<CView> content, const CPoint& corner,
                       std::function<void()> closed) {
  closePopup();
  const PixelRect size = content->getViewSize().touchedPixels();
  auto window = m_window->openPopup(CRect::nearest(corner.x), CRect::nearest(corner.y), size.right,
                                    size.bottom);
  if (window == nullptr) return false;
  m_popup = std::make_unique<CFrame>(CRect::of(size), std::move(window), m_typeface);
  m_popupClosed = std::move(closed);
  CView& view = m_popup->addView(std::move(content));
  m_popup->setFocusView(&view);
  m_popup->open();
  return true;
}

void CFrame::closePopup() {
  if (m_popup == nullptr) return;
  m_popup->m_window->setListener(nullptr);
  m_deadPopups.push_back(std::move(m_popup));
  const auto closed = std::exchange(m_popupClosed, nullptr);
  if (closed) closed();
}

CRect CFrame::getPopupPlace() const {
  return m_popup == nullptr ? CRect{} : CRect::of(m_popup->getWindow().place());
}

void CFrame::forgetView(const CView& view) {
  if (m_focusView == &view) m_focusView = nullptr;
  if (m_mouseDownView == &view) m_mouseDownView = nullptr;
  if (m_hoverView == &view) m_hoverView = nullptr;
}

} // namespace qlx::gui
