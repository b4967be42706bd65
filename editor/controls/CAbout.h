// SPDX-License-Identifier: ISC
#pragma once

#include "gui/dialogs/CSplashScreen.h"

namespace qlx::editor {

/// The name plate: an area whose click shows the about screen. Value 1 while that is shown, else 0.
class CAbout final : public gui::CSplashScreen {
 public:
  /// `screen` is where the picture is shown, `versionPoint` where the version is written on it,
  /// from its corner.
  CAbout(const gui::CRect& size, gui::CControlListener* listener, std::int32_t tag,
         gui::CBitmapRef picture, const gui::CRect& screen, const gui::CPoint& offset,
         const gui::CPoint& versionPoint);

 private:
  std::unique_ptr<gui::CSplashView> makeView() override;

  gui::CPoint m_versionPoint;
};

} // namespace qlx::editor
