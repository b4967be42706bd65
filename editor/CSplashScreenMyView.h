#pragma once

#include "gui/CControl.h"

namespace qlx::editor {

class CAbout;

/// The about screen: a picture with the version written on it, closed by a click.
class CSplashScreenMyView final : public gui::CControl {
 public:
  /// Shows the picture of `owner`, which lives as long as the frame.
  CSplashScreenMyView(const gui::CRect& size, CAbout& owner, const gui::CPoint& versionPoint);

  bool isTypeOf(std::string_view className) const override {
    return className == "CSplashScreenMyView" || CControl::isTypeOf(className);
  }
  std::unique_ptr<gui::CView> newCopy() const override;
  void draw(gui::CDrawContext& context) override;
  gui::CMouseEventResult onMouseDown(const gui::CPoint& where,
                                     const gui::CButtonState& buttons) override;

 private:
  CSplashScreenMyView(const CSplashScreenMyView&) = default;

  CAbout& m_owner;
  gui::CPoint m_versionPoint;
};

} // namespace qlx::editor
