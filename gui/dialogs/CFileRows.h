// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CView.h"
#include "gui/dialogs/FileListModel.h"

#include <functional>

namespace qlx::gui {

/// The rows of a list of files, with a bar to scroll them by when there are more than fit. A press
/// selects, a second one on the same row opens.
class CFileRows final : public CView {
 public:
  struct Actions {
    std::function<void()> selected; ///< another row, or none, is selected
    std::function<void()> opened;   ///< the selected row is to be opened
  };

  /// `model` outlives the view.
  CFileRows(const CRect& size, FileListModel& model, Actions actions);

  /// A list has one pair of actions; there are no copies. Null.
  std::unique_ptr<CView> newCopy() const override { return nullptr; }

  /// Another folder or selection: brings the selected row, or else the first, into view.
  void modelChanged();
  /// Arrows, pages, ends and first letters move the selection. True when it was one of them.
  bool onKeyDown(const CKeyCode& key) override;

  void draw(CDrawContext& context) override;
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseMoved(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseUp(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseExited(const CPoint& where, const CButtonState& buttons) override;
  bool onWheel(const CPoint& where, float distance, const CButtonState& buttons) override;

  CRect getRowRect(int index) const;
  /// -1 beside all rows.
  int getRowAt(const CPoint& where) const;
  /// The first row in view.
  int getTop() const { return m_top; }

 private:
  int rowsInView() const;
  CRect barRect() const;
  CRect thumbRect() const;
  bool scrolls() const { return m_model.count() > rowsInView(); }
  void scrollTo(int top);
  void setHovered(int row);
  void drawRow(CDrawContext& context, int index) const;

  FileListModel& m_model;
  Actions m_actions;
  int m_top = 0;
  int m_hovered = -1;
  bool m_draggingBar = false;
  CCoord m_grip = 0.0; ///< where the thumb is held, from its top
};

} // namespace qlx::gui
