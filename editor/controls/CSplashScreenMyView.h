// SPDX-License-Identifier: ISC
#pragma once

#include "gui/dialogs/CSplashScreen.h"

namespace qlx::editor {

class CAbout;

/// The about screen: a picture with the version written on it, closed by a click or Escape.
class CSplashScreenMyView final : public gui::CSplashView {
 public:
  /// Shows the picture of `owner`, which lives as long as the frame.
  CSplashScreenMyView(const gui::CRect& size, CAbout& owner, const gui::CPoint& versionPoint);

  bool isTypeOf(std::string_view className) const override {
    return className == "CSplashScreenMyView" || CControl::isTypeOf(className);
  }
  std::unique_ptr<gui::CView> newCopy() const override;
  void draw(gui::CDrawContext& context) override;

 private:
  CSplashScreenMyView(const CSplashScreenMyView&) = default;

  gui::CPoint m_versionPoint;
};

} // namespace qlx::editor
