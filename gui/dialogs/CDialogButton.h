// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CView.h"

#include <functional>
#include <string>
#include <string_view>

namespace qlx::gui {

/// A push button of a dialog. It is pressed when the left button is let go on it.
class CDialogButton final : public CView {
 public:
  /// `entered` is called when the pointer comes over the button.
  CDialogButton(
      const CRect& size, std::string_view title, std::function<void()> pressed,
      std::function<void()> entered = [] {});

  /// Its actions are its dialog's; there are no copies. Null.
  std::unique_ptr<CView> newCopy() const override { return nullptr; }

  void setHighlighted(bool highlighted);

  void draw(CDrawContext& context) override;
  platform::PointerShape getPointerShape() const override { return platform::PointerShape::kHand; }
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseUp(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseEntered(const CPoint& where, const CButtonState& buttons) override;

 private:
  std::string m_title;
  std::function<void()> m_pressed;
  std::function<void()> m_entered;
  bool m_highlighted = false;
};

} // namespace qlx::gui
