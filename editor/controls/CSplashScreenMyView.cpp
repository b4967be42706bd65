// SPDX-License-Identifier: ISC
#include "editor/controls/CSplashScreenMyView.h"

#include "editor/controls/CAbout.h"
#include "gui/drawing/CDrawContext.h"
#include "platform/Version.h"
#include "resources/images/WindowLayout.h"

namespace qlx::editor {

namespace {

constexpr gui::CFontDesc kVersionFont{10.0};
constexpr gui::CColor kVersionColour{160, 159, 157, 255};
constexpr gui::CPoint kVersionSize{resources::layout::kAboutVersion.width(),
                                   resources::layout::kAboutVersion.height()};

} // namespace

CSplashScreenMyView::CSplashScreenMyView(const gui::CRect& size, CAbout& owner,
                                         const gui::CPoint& versionPoint)
    : CSplashView(owner, size), m_versionPoint(versionPoint) {}

std::unique_ptr<gui::CView> CSplashScreenMyView::newCopy() const {
  return std::unique_ptr<gui::CView>(new CSplashScreenMyView(*this));
}

void CSplashScreenMyView::draw(gui::CDrawContext& context) {
  CSplashView::draw(context);
  context.setFont(kVersionFont);
  context.setFontColor(kVersionColour);
  const gui::CPoint corner = getViewSize().topLeft() + m_versionPoint;
  const gui::CPoint end = corner + kVersionSize;
  context.drawString("v." + std::string(platform::version()), {corner.x, corner.y, end.x, end.y},
                     gui::CHoriTxtAlign::kLeftText);
}

} // namespace qlx::editor
