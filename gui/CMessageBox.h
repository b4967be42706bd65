#pragma once

#include "gui/CViewContainer.h"

#include <functional>
#include <string>
#include <vector>

namespace qlx::gui {

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
  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  bool onKeyDown(const CKeyCode& key) override;

  const std::string& getTitle() const { return m_title; }
  const std::vector<std::string>& getLines() const { return m_lines; }

  /// Presses a button.
  void press(int button);

 protected:
  CMessageBox(const CMessageBox&) = default;

 private:
  CMessageBox(const CRect& size, std::string_view title, std::vector<std::string> lines,
              Answer answer);
  void addButtons(const std::vector<std::string>& titles);
  void highlight(int button);

  std::string m_title;
  std::vector<std::string> m_lines;
  Answer m_answer;
  int m_highlighted = 0;
};

} // namespace qlx::gui
