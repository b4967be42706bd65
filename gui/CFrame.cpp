// SPDX-License-Identifier: ISC
#include "gui/CFrame.h"

#include <algorithm>

namespace qlx::gui {

namespace {

using platform::WindowEvent;
using platform::WindowEventType;

CButtonState stateOf(std::uint32_t pointerButtons, const WindowEvent& event) {
  const auto bit = [](bool set, std::uint32_t value) { return set ? value : 0U; };
  return {bit((pointerButtons & platform::kPointerLeft) != 0, kLButton) |
          bit((pointerButtons & platform::kPointerMiddle) != 0, kMButton) |
          bit((pointerButtons & platform::kPointerRight) != 0, kRButton) |
          bit((event.modifiers & platform::kModifierShift) != 0, kShift) |
          bit((event.modifiers & platform::kModifierControl) != 0, kControl) |
          bit((event.modifiers & platform::kModifierAlt) != 0, kAlt) |
          bit((event.modifiers & platform::kModifierSuper) != 0, kSuper) |
          bit(event.doubleClick, kDoubleClick)};
}

constexpr CCoord kRingDistance = 1.0; // of its outer edge from what it surrounds
constexpr CCoord kRingWidth = 1.5;
constexpr CCoord kRingEdge = 1.0; // inside it
constexpr CCoord kRingRadius = 3.0;
constexpr CColor kRingColour{255, 206, 92, 255};
constexpr CColor kRingEdgeColour{16, 11, 7, 200};

constexpr std::uint32_t kAnyButton = kLButton | kMButton | kRButton;

} // namespace

CFrame::Surface::Surface(const PixelRect& size, const CTypeface* typeface, double scale)
    : picture(size.width(), size.height()), context(picture, typeface, scale),
      dirty({0, 0, size.width(), size.height()}, scale),
      exposed({0, 0, size.width(), size.height()}, scale) {}

CFrame::CFrame(const CRect& size, std::unique_ptr<platform::NativeWindow> window,
               const std::shared_ptr<CTypeface>& typeface, double scale)
    : CViewContainer(size), m_window(std::move(window)), m_scale(scale),
      m_typeface(typeface == nullptr ? nullptr : typeface->atScale(scale)),
      m_surface(std::make_unique<Surface>(m_window->place(), m_typeface.get(), scale)) {
  setPlace(this);
  m_window->setListener(this);
}

CFrame::~CFrame() {
  closePopup();
  m_removedPopups.clear();
  m_window->setListener(nullptr);
  removeModalView();
  m_removedViews.clear();
  removeAllViews();
}

CPoint CFrame::windowSize(const CRect& size, double scale) {
  return {std::floor(size.right * scale), std::floor(size.bottom * scale)};
}

void CFrame::setScale(double scale) {
  if (scale == m_scale) return;
  closePopup();
  const CPoint size = windowSize(getViewSize(), scale);
  m_window->resize(static_cast<int>(size.x), static_cast<int>(size.y));
  m_scale = scale;
  if (m_typeface != nullptr) m_typeface = m_typeface->atScale(scale);
  m_surface = std::make_unique<Surface>(m_window->place(), m_typeface.get(), scale);
  invalidAll();
}

bool CFrame::isOpen() const { return m_window->isOpen(); }

// --- Drawing ---

void CFrame::draw(CDrawContext& context) {
  const CRect all = getViewSize();
  const bool covered = m_background != nullptr && m_background->width() >= all.right &&
                       m_background->height() >= all.bottom;
  if (!covered) context.fillRect(all, kBlackCColor);
  if (m_background != nullptr) context.drawBitmap(*m_background, all);
  drawViews(context);
  if (getRingView() != nullptr) drawRing(context);
  if (m_modalView != nullptr) m_modalView->render(context);
}

void CFrame::setBackground(CBitmapRef background) {
  m_background = std::move(background);
  invalidAll();
}

void CFrame::invalidRect(const CRect& area) { m_surface->dirty.add(area); }
void CFrame::invalidAll() { invalidRect(getViewSize()); }

void CFrame::open() {
  // Shown first, so that the picture is there at once even if nobody ever calls idle.
  m_window->show();
  invalidAll();
  redraw();
}

void CFrame::redraw() {
  Surface& surface = *m_surface;
  collectDirty(surface.dirty);
  if (m_modalView != nullptr) m_modalView->collectDirty(surface.dirty);
  for (const PixelRect& area : surface.dirty.areas()) {
    surface.context.setClip(area);
    render(surface.context);
    surface.exposed.add(area);
  }
  surface.dirty.clear();
  if (surface.exposed.empty()) return;
  m_window->present(surface.picture.view(), surface.exposed.areas());
  surface.exposed.clear();
}

void CFrame::idle() {
  m_window->pump();
  if (isOpen()) {
    giveUnneededKeyboardBack();
    if (m_focusView != nullptr) m_focusView->onIdle();
    if (m_popup != nullptr) m_popup->redraw();
    redraw();
  }
  destroyRemoved();
}

void CFrame::destroyRemoved() {
  m_removedPopups.clear();
  m_removedViews.clear();
}

// --- Modal view, focus, popup ---

bool CFrame::setModalView(std::unique_ptr<CView> view) {
  if (m_modalView != nullptr) return false;
  setHoverView(nullptr, {}, {});
  m_modalView = std::move(view);
  m_modalView->setPlace(this);
  m_modalView->setDirty();
  return true;
}

void CFrame::removeModalView() {
  if (m_modalView == nullptr) return;
  invalidRect(m_modalView->getViewSize());
  m_modalView->setPlace(nullptr);
  m_removedViews.push_back(std::move(m_modalView));
}

void CFrame::setFocusView(CView* view) {
  if (view == m_focusView) return;
  CView* before = m_focusView;
  m_focusView = view;
  if (before != nullptr) before->onFocusLost();
  if (m_focusView != nullptr && m_focusView == view) m_focusView->onFocusGained();
}

void CFrame::takeKeyboardFocus() {
  m_pointerLeft = false; // it is wanted now, wherever the pointer is
  m_window->takeFocus();
}
void CFrame::giveKeyboardFocusBack() { m_window->giveFocusBack(); }

// The host's own keys are to work again once the pointer is elsewhere, unless what the user has
// open here is still to be typed to.
void CFrame::giveUnneededKeyboardBack() {
  const bool needed = editsText() || m_ringShown || m_popup != nullptr || m_modalView != nullptr;
  if (!m_pointerLeft || needed) return;
  m_pointerLeft = false;
  giveKeyboardFocusBack();
}

bool CFrame::openPopup(std::unique_ptr<CView> content, const CPoint& corner,
                       std::function<void()> closed) {
  closePopup();
  const PixelRect size = content->getViewSize().scaledBy(m_scale).touchedPixels();
  auto window = m_window->openPopup(CRect::nearest(corner.x * m_scale),
                                    CRect::nearest(corner.y * m_scale), size.right, size.bottom);
  if (window == nullptr) return false;
  const CRect whole = CRect::of(size).scaledBy(1.0 / m_scale);
  m_popup = std::make_unique<CFrame>(whole, std::move(window), m_typeface, m_scale);
  m_popupClosed = std::move(closed);
  CView& view = m_popup->addView(std::move(content));
  m_popup->setFocusView(&view);
  m_popup->open();
  return true;
}

void CFrame::closePopup() {
  if (m_popup == nullptr) return;
  m_popup->m_window->setListener(nullptr);
  m_removedPopups.push_back(std::move(m_popup));
  const auto closed = std::exchange(m_popupClosed, nullptr);
  if (closed) closed();
}

CRect CFrame::getPopupPlace() const {
  return m_popup == nullptr ? CRect{}
                            : CRect::of(m_popup->getWindow().place()).scaledBy(1.0 / m_scale);
}

void CFrame::forgetView(const CView& view) {
  if (m_focusView == &view) m_focusView = nullptr;
  if (m_mouseDownView == &view) m_mouseDownView = nullptr;
  if (m_hoverView == &view) m_hoverView = nullptr;
  std::erase(m_walkOrder, &view);
  if (m_walkView == &view) {
    m_walkView = nullptr;
    m_ringShown = false;
  }
}

// --- Input: how the window's events reach the views ---

bool CFrame::onWindowEvent(const WindowEvent& event) {
  const CPoint where{event.x / m_scale, event.y / m_scale};
  switch (event.type) {
  case WindowEventType::kMouseDown: platformOnMouseDown(where, stateOf(event.button, event)); break;
  case WindowEventType::kMouseUp: platformOnMouseUp(where, stateOf(event.button, event)); break;
  case WindowEventType::kMouseMove:
    platformOnMouseMoved(where, stateOf(event.buttons, event));
    break;
  case WindowEventType::kMouseLeave: platformOnMouseExited(); break;
  case WindowEventType::kWheel:
    return platformOnWheel(where, event.distance, stateOf(event.buttons, event));
  case WindowEventType::kExpose:
    m_surface->exposed.add(
        PixelRect{event.x, event.y, event.x + event.width, event.y + event.height});
    break;
  case WindowEventType::kKeyDown:
  case WindowEventType::kKeyUp: return onKeyEvent(event);
  case WindowEventType::kFocusGained: break;
  case WindowEventType::kFocusLost:
  case WindowEventType::kClosed:
    closePopup();
    showRing(false);
    if (m_focusView != nullptr) m_focusView->onFocusLost();
    break;
  case WindowEventType::kPressOutside: closePopup(); break;
  case WindowEventType::kTick: idle(); break;
  case WindowEventType::kTextBoxChanged:
    if (m_focusView != nullptr) m_focusView->onTextBoxChanged(event.text);
    break;
  case WindowEventType::kScaleChanged:
    if (m_scaleChanged) m_scaleChanged(event.scale);
    break;
  case WindowEventType::kSelectionText:
    if (m_focusView != nullptr) m_focusView->onSelectionText(event.text);
    break;
  }
  return true;
}

bool CFrame::onKeyEvent(const WindowEvent& event) {
  const CKeyCode key{event.key, event.character, event.modifiers, event.text};
  return event.type == WindowEventType::kKeyDown ? platformOnKeyDown(key) : platformOnKeyUp(key);
}

CView* CFrame::viewAt(const CPoint& where) const {
  if (m_modalView == nullptr) return getViewAt(where);
  if (!m_modalView->hitTest(where)) return nullptr;
  const auto* container = dynamic_cast<const CViewContainer*>(m_modalView.get());
  CView* inner = container == nullptr ? nullptr : container->getViewAt(where);
  return inner != nullptr ? inner : m_modalView.get();
}

CMouseEventResult CFrame::platformOnMouseDown(const CPoint& where, const CButtonState& buttons) {
  m_pointerLeft = false;
  if (m_popup != nullptr) {
    closePopup();
    return CMouseEventResult::kHandledDontNeedMoves;
  }
  // A gesture belongs to the button that started it.
  if (m_mouseDownView != nullptr) return CMouseEventResult::kHandled;

  CView* target = viewAt(where);
  if (m_ringShown) {
    showRing(false);
    if (m_focusView == m_walkView && m_walkView != target) setFocusView(nullptr);
  }
  if (std::ranges::find(m_walkOrder, target) != m_walkOrder.end()) m_walkView = target;
  if (target != nullptr && target->wantsFocus())
    setFocusView(target);
  else if (m_focusView != nullptr && m_focusView != target)
    m_focusView->onFocusLost();

  std::pair<CView*, CMouseEventResult> taken{nullptr, CMouseEventResult::kNotHandled};
  if (m_modalView == nullptr) {
    taken = dispatchMouseDown(where, buttons);
  } else if (m_modalView->hitTest(where)) {
    CView* modal = m_modalView.get();
    if (auto* container = dynamic_cast<CViewContainer*>(modal))
      taken = container->dispatchMouseDown(where, buttons);
    if (taken.first == nullptr) taken = {modal, modal->onMouseDown(where, buttons)};
  }
  if (taken.second == CMouseEventResult::kHandled && taken.first->getFrame() == this) {
    m_mouseDownView = taken.first;
    m_mouseDownButton = buttons.bits() & kAnyButton;
  }
  return taken.second;
}

CMouseEventResult CFrame::platformOnMouseUp(const CPoint& where, const CButtonState& buttons) {
  if (m_mouseDownView == nullptr || (buttons.bits() & kAnyButton) != m_mouseDownButton)
    return CMouseEventResult::kNotHandled;
  CView* view = std::exchange(m_mouseDownView, nullptr);
  const CMouseEventResult result = view->onMouseUp(where, buttons);
  setHoverView(viewAt(where), where, buttons);
  return result;
}

CMouseEventResult CFrame::platformOnMouseMoved(const CPoint& where, const CButtonState& buttons) {
  m_pointerLeft = false;
  if (m_mouseDownView != nullptr) return m_mouseDownView->onMouseMoved(where, buttons);
  setHoverView(viewAt(where), where, buttons);
  return m_hoverView == nullptr ? CMouseEventResult::kNotHandled
                                : m_hoverView->onMouseMoved(where, buttons);
}

void CFrame::platformOnMouseExited() {
  if (m_mouseDownView != nullptr) return;
  setHoverView(nullptr, {-1.0, -1.0}, {});
  m_pointerLeft = true;
}

void CFrame::setHoverView(CView* view, const CPoint& where, const CButtonState& buttons) {
  if (view == m_hoverView) return;
  if (CView* before = std::exchange(m_hoverView, view); before != nullptr)
    before->onMouseExited(where, buttons);
  m_window->setPointerShape(m_hoverView == nullptr ? platform::PointerShape::kArrow
                                                   : m_hoverView->getPointerShape());
  if (m_hoverView != nullptr) m_hoverView->onMouseEntered(where, buttons);
}

bool CFrame::platformOnWheel(const CPoint& where, float distance, const CButtonState& buttons) {
  if (m_mouseDownView != nullptr || m_popup != nullptr) return false;
  if (m_modalView == nullptr) return onWheel(where, distance, buttons);
  return m_modalView->hitTest(where) && m_modalView->onWheel(where, distance, buttons);
}

bool CFrame::platformOnKeyDown(const CKeyCode& key) {
  if (m_popup != nullptr) {
    // A letter that the list knows nothing of is still no command to the host.
    m_popup->platformOnKeyDown(key);
    return true;
  }
  // Behind a modal view nothing gets keys but a text being edited.
  const bool focusGetsKeys = m_focusView != nullptr && (m_modalView == nullptr || editsText());
  const bool edited = editsText();
  if (focusGetsKeys && m_focusView->onKeyDown(key)) {
    // Typing that began at the ring ends there.
    if (edited && !editsText() && getRingView() != nullptr) {
      setFocusView(m_walkView);
      if (key.virtualKey == VirtualKey::kTab) walk(key);
    }
    return true;
  }
  return m_modalView != nullptr ? m_modalView->onKeyDown(key) : walk(key);
}

// --- Walking by keys ---

bool CFrame::walk(const CKeyCode& key) {
  if (m_mouseDownView != nullptr) return false; // the pointer's gesture comes first
  if (key.virtualKey == VirtualKey::kTab && (key.modifiers & ~platform::kModifierShift) == 0U)
    return step((key.modifiers & platform::kModifierShift) != 0 ? -1 : 1);
  CView* const view = getRingView();
  if (view == nullptr || view != m_focusView) return false;
  if (key.virtualKey == VirtualKey::kEscape) {
    showRing(false);
    setFocusView(nullptr);
    giveKeyboardFocusBack();
    return true;
  }
  const KeyAction action = keyActionOf(key);
  WindowEvent event;
  event.modifiers = key.modifiers;
  return action != KeyAction::kNone && view->onKeyAction(action, stateOf(0, event));
}

/// To the next view of the order or (-1) the one before, round its ends.
bool CFrame::step(int by) {
  if (m_walkOrder.empty()) return false;
  const int count = static_cast<int>(m_walkOrder.size());
  const auto found = std::ranges::find(m_walkOrder, m_walkView);
  int next = by > 0 ? 0 : count - 1;
  if (found != m_walkOrder.end())
    next = (static_cast<int>(found - m_walkOrder.begin()) + by + count) % count;
  showRing(false);
  setFocusView(m_walkOrder[static_cast<std::size_t>(next)]);
  m_walkView = m_focusView;
  showRing(true);
  return true;
}

void CFrame::showRing(bool shown) {
  if (m_walkView == nullptr || shown == m_ringShown) return;
  m_ringShown = shown;
  invalidRect(ringPlace());
}

/// Around the view, as far as the window has room.
CRect CFrame::ringPlace() const {
  const CRect ring = m_walkView->getRingPlace().insetBy(-kRingDistance, -kRingDistance);
  return ring.intersect(getViewSize());
}

// Light, and dark towards the control, so that it stands out from bright ones.
void CFrame::drawRing(CDrawContext& context) const {
  const CRect ring = ringPlace();
  context.frameRoundRect(ring, kRingRadius, kRingWidth + kRingEdge, kRingEdgeColour);
  context.frameRoundRect(ring, kRingRadius, kRingWidth, kRingColour);
}

bool CFrame::platformOnKeyUp(const CKeyCode& key) {
  if (m_popup != nullptr) return m_popup->platformOnKeyUp(key);
  if (m_modalView != nullptr) return m_modalView->onKeyUp(key);
  return m_focusView != nullptr && m_focusView->onKeyUp(key);
}

} // namespace qlx::gui
