// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CViewContainer.h"

#include <functional>
#include <string>
#include <vector>

namespace qlx::gui {

class CTypeface;

/// A message in the middle of the frame with one to three buttons, shown as the frame's modal view.
/// Escape presses the last button, Enter the highlighted one (the first unless arrows or Tab moved
/// it).
class CMessageBox : public CViewContainer {
 public:
  /// Called with the number of the button pressed, once, after the box has gone from the frame.
  using Answer = std::function<void(int button)>;

  /// Shows a box. False, and nothing is called, while the frame has another modal view. `title` may
  /// be empty; the text is broken into lines at spaces.
  static bool show(CFrame& frame, std::string_view title, std::string_view text,
                   const std::vector<std::string>& buttons, Answer answer);

  bool isTypeOf(std::string_view className) const override {
    return className == "CMessageBox" || CViewContainer::isTypeOf(className);
  }
  /// A box is answered once; there are no copies. Null.
  std::unique_ptr<CView> newCopy() const override { return nullptr; }
  void draw(CDrawContext& context) override;
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  bool onKeyDown(const CKeyCode& key) override;

  const std::string& getTitle() const { return m_title; }
  const std::vector<std::string>& getLines() const { return m_lines; }

  /// Presses, or lights up, a button.
  void press(int button);
  void highlight(int button);

 private:
  CMessageBox(const CRect& size, std::string_view title, std::vector<std::string> lines,
              Answer answer);
  void addButtons(const std::vector<std::string>& titles, CTypeface* typeface);

  std::string m_title;
  std::vector<std::string> m_lines;
  Answer m_answer;
  int m_highlighted = 0;
};

} // namespace qlx::gui
