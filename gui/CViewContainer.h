// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CView.h"

#include <memory>
#include <utility>
#include <vector>

namespace qlx::gui {

/// Views drawn in the order in which they were added; the last one lies on top and is asked first.
class CViewContainer : public CView {
 public:
  explicit CViewContainer(const CRect& size) : CView(size) {}
  ~CViewContainer() override;

  bool isTypeOf(std::string_view className) const override {
    return className == "CViewContainer" || CView::isTypeOf(className);
  }
  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;

  /// Adds a view on top and owns it from now on. The reference is good while it stays in the
  /// container.
  template <typename View>
  View& addView(std::unique_ptr<View> view) {
    View& added = *view;
    insertView(std::move(view));
    return added;
  }
  /// Takes a view out; not from its own handlers. Null when it isn't in here.
  std::unique_ptr<CView> removeView(CView& view);
  void removeAllViews();

  const std::vector<std::unique_ptr<CView>>& getViews() const { return m_views; }

  /// The innermost view that a press here would reach, or null.
  CView* getViewAt(const CPoint& where) const;

  void collectDirty(DirtyRegion& region) override;
  void setPlace(CFrame* frame) override;

  /// Offers a press from the topmost view down. Answers the view that took it and its answer.
  std::pair<CView*, CMouseEventResult> dispatchMouseDown(const CPoint& where,
                                                         const CButtonState& buttons);
  /// Offers a wheel turn from the topmost view down.
  bool onWheel(const CPoint& where, float distance, const CButtonState& buttons) override;

 protected:
  CViewContainer(const CViewContainer& other);
  /// Draws the views that meet the clip.
  void drawViews(CDrawContext& context);

 private:
  void insertView(std::unique_ptr<CView> view);

  std::vector<std::unique_ptr<CView>> m_views;
};

} // namespace qlx::gui
