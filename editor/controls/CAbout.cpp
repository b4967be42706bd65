// SPDX-License-Identifier: ISC
#include "editor/controls/CAbout.h"

#include "editor/controls/CSplashScreenMyView.h"

namespace qlx::editor {

CAbout::CAbout(const gui::CRect& size, gui::CControlListener* listener, std::int32_t tag,
               gui::CBitmapRef picture, const gui::CRect& screen, const gui::CPoint& offset,
               const gui::CPoint& versionPoint)
    : CSplashScreen(size, listener, tag, std::move(picture), screen, offset),
      m_versionPoint(versionPoint) {}

std::unique_ptr<gui::CSplashView> CAbout::makeView() {
  return std::make_unique<CSplashScreenMyView>(getScreen(), *this, m_versionPoint);
}

} // namespace qlx::editor
