// SPDX-License-Identifier: ISC
#include "gui/dialogs/CSplashScreen.h"

#include "gui/CFrame.h"

namespace qlx::gui {

CSplashView::CSplashView(CSplashScreen& owner, const CRect& size)
    : CControl(size, nullptr, 0, owner.getBackground()), m_owner(owner) {
  setBackOffset(owner.getBackOffset());
}

std::unique_ptr<CView> CSplashView::newCopy() const {
  return std::unique_ptr<CView>(new CSplashView(*this));
}

void CSplashView::draw(CDrawContext& context) {
  drawBackground(context);
  setDirty(false);
}

CMouseEventResult CSplashView::onMouseDown(const CPoint& /*where*/, const CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  close();
  return CMouseEventResult::kHandledDontNeedMoves;
}

bool CSplashView::onKeyDown(const CKeyCode& key) {
  if (key.virtualKey != VirtualKey::kEscape) return false;
  close();
  return true;
}

void CSplashView::close() {
  m_owner.unSplash();
  getFrame()->removeModalView();
}

CSplashScreen::CSplashScreen(const CRect& size, CControlListener* listener, std::int32_t tag,
                             CBitmapRef picture, const CRect& screen, const CPoint& offset)
    : CControl(size, listener, tag, std::move(picture)), m_screen(screen) {
  setBackOffset(offset);
}

std::unique_ptr<CView> CSplashScreen::newCopy() const {
  return std::unique_ptr<CView>(new CSplashScreen(*this));
}

std::unique_ptr<CSplashView> CSplashScreen::makeView() {
  return std::make_unique<CSplashView>(*this, m_screen);
}

void CSplashScreen::draw(CDrawContext& /*context*/) { setDirty(false); }

CMouseEventResult CSplashScreen::onMouseDown(const CPoint& /*where*/, const CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  if (getFrame()->setModalView(makeView())) setValue(getMax());
  return CMouseEventResult::kHandledDontNeedMoves;
}

bool CSplashScreen::onKeyAction(KeyAction action, const CButtonState& /*modifiers*/) {
  if (action != KeyAction::kPress) return false;
  pressAt(getViewSize().centre());
  return true;
}

void CSplashScreen::unSplash() {
  setValue(getMin());
  if (getFrame() != nullptr) getFrame()->invalidAll();
}

} // namespace qlx::gui
