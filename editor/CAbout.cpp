// SPDX-License-Identifier: ISC
#include "editor/CAbout.h"

#include "editor/CSplashScreenMyView.h"
#include "gui/CFrame.h"

namespace qlx::editor {

using gui::CMouseEventResult;

CAbout::CAbout(const gui::CRect& size, gui::CControlListener* listener, std::int32_t tag,
               gui::CBitmapRef picture, const gui::CRect& screen, const gui::CPoint& offset,
               const gui::CPoint& versionPoint)
    : CSplashScreen(size, listener, tag, std::move(picture), screen, offset),
      m_versionPoint(versionPoint) {}

CMouseEventResult CAbout::onMouseDown(const gui::CPoint& /*where*/,
                                      const gui::CButtonState& buttons) {
  if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
  setValue(getValue() == 0.0F ? 1.0F : 0.0F);
  if (getValue() == 0.0F) return CMouseEventResult::kHandled;
  auto screen = std::make_unique<CSplashScreenMyView>(getScreen(), *this, m_versionPoint);
  if (!getFrame()->setModalView(std::move(screen))) setValue(0.0F);
  invalid();
  return CMouseEventResult::kHandled;
}

} // namespace qlx::editor
