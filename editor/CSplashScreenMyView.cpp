// SPDX-License-Identifier: ISC
#include "editor/CSplashScreenMyView.h"

#include "editor/CAbout.h"
#include "gui/drawing/CDrawContext.h"

namespace qlx::editor {

namespace {

constexpr std::string_view kVersion = "v.1.0.0";
constexpr gui::CFontDesc kVersionFont{10.0};
constexpr gui::CColor kVersionColour{160, 159, 157, 255};
constexpr gui::CPoint kVersionSize{80.0, 15.0};

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
  context.drawString(kVersion, {corner.x, corner.y, end.x, end.y}, gui::CHoriTxtAlign::kLeftText);
}

} // namespace qlx::editor
