#include "gui/CSplashScreen.h"

#include "gui/CFrame.h"

namespace qlx::gui {

namespace {

// The picture over the frame; a click anywhere on it closes it.
class CSplashPicture final : public CControl {
 public:
  CSplashPicture(CSplashScreen& owner, const CRect& size)
      : CControl(size, nullptr, 0, owner.getBackground()), m_owner(owner) {
    setBackOffset(owner.getBackOffset());
  }

  std::unique_ptr<CView> newCopy() const override {
    return std::make_unique<CSplashPicture>(m_owner, getViewSize());
  }
  void draw(CDrawContext& context) override {
    drawBackground(context);
    setDirty(false);
  }
  CMouseEventResult onMouseDown(const CPoint& /*where*/, const CButtonState& buttons) override {
    if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
    m_owner.unSplash();
    getFrame()->removeModalView();
    return CMouseEventResult::kHandledDontNeedMoves;
  }

 private:
  CSplashScreen& m_owner;
};

} // namespace

CSplashScreen::CSplashScreen(const CRect& size, CControlListener* listener, std::int32_t tag,
                             CBitmapRef picture, const CRect& screen, const CPoint& offset)
    : CControl(size, listener, tag, std::move(picture)), m_screen(screen) {
  setBackOffset(offset);
}

std::unique_ptr<CView> CSplashScreen::newCopy() const {
  return std::unique_ptr<CView>(new CSplashScreen(*this));
}

void CSplashScreen::draw(CDrawContext& /*context*/) { setDirty(false); }

CMouseEventResult CSplashScreen::onMouseDown(const CPoint& /*where*/, const CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  if (getFrame()->setModalView(std::make_unique<CSplashPicture>(*this, m_screen)))
    setValue(getMax());
  return CMouseEventResult::kHandledDontNeedMoves;
}

void CSplashScreen::unSplash() {
  setValue(getMin());
  if (getFrame() != nullptr) getFrame()->invalidAll();
}

} // namespace qlx::gui
