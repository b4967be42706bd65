// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CBaseObject.h"
#include "gui/CButtonState.h"
#include "gui/CKeyCode.h"
#include "gui/CRect.h"
#include "platform/PointerShape.h"

#include <atomic>
#include <memory>

namespace qlx::gui {

class CDrawContext;
class CFrame;
class DirtyRegion;

/// A rectangle of the window that draws itself and takes input. A view belongs to the container
/// that it was added to. All rectangles and points are in the frame's coordinates. User-interface
/// thread only, but for setDirty(true).
class CView : public CBaseObject {
 public:
  explicit CView(const CRect& size) : m_size(size) {}
  CView& operator=(const CView&) = delete;

  bool isTypeOf(std::string_view className) const override {
    return className == "CView" || CBaseObject::isTypeOf(className);
  }

  /// A view of the same class with the same settings, in no container.
  virtual std::unique_ptr<CView> newCopy() const = 0;

  /// Draws the view as it is now. What it draws depends on nothing but its state.
  virtual void draw(CDrawContext& context);

  virtual CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons);
  virtual CMouseEventResult onMouseUp(const CPoint& where, const CButtonState& buttons);
  virtual CMouseEventResult onMouseMoved(const CPoint& where, const CButtonState& buttons);
  virtual CMouseEventResult onMouseEntered(const CPoint& where, const CButtonState& buttons);
  virtual CMouseEventResult onMouseExited(const CPoint& where, const CButtonState& buttons);

  /// `distance` in notches, away from the user is positive. True when handled.
  virtual bool onWheel(const CPoint& where, float distance, const CButtonState& buttons);
  /// True when handled.
  virtual bool onKeyDown(const CKeyCode& key);
  virtual bool onKeyUp(const CKeyCode& key);
  /// A key after the keyboard was brought to the view (CFrame::setWalkOrder). `modifiers` may hold
  /// Shift, for fine steps, and Control. True when handled.
  virtual bool onKeyAction(KeyAction action, const CButtonState& modifiers);

  /// The keyboard focus came to the view, or went: to another view, another window, or a press
  /// elsewhere in this one.
  virtual void onFocusGained() {}
  virtual void onFocusLost() {}
  /// Whether typed text goes to the view at present.
  virtual bool isEditingText() const { return false; }
  /// Text asked for with platform::NativeWindow::requestText has arrived.
  virtual void onSelectionText(std::string_view text);
  /// The window's platform::TextBox holds this text now.
  virtual void onTextBoxChanged(std::string_view text);
  /// Called at every idle of the frame while the view has the focus.
  virtual void onIdle() {}

  /// What the ring of CFrame::setWalkOrder surrounds.
  virtual CRect getRingPlace() const { return m_size; }

  /// What the pointer looks like while it is over the view.
  virtual platform::PointerShape getPointerShape() const { return platform::PointerShape::kArrow; }

  /// The view has come into, or is about to leave, a frame (getFrame() is valid in both).
  virtual void attached() {}
  virtual void removed() {}

  const CRect& getViewSize() const { return m_size; }
  virtual void setViewSize(const CRect& size);
  /// Where the view can be clicked: its rectangle unless it says otherwise.
  virtual bool hitTest(const CPoint& where) const { return m_size.contains(where); }

  /// Asks for a redraw at the next idle, or (false) declares that the screen is up to date. While
  /// the view is being drawn its frame looks after that by itself. setDirty(true) from any thread.
  virtual void setDirty(bool dirty = true);
  virtual bool isDirty() const { return m_dirty.load(std::memory_order_relaxed); }
  void invalid() { setDirty(true); }

  bool getMouseEnabled() const { return m_mouseEnabled; }
  void setMouseEnabled(bool enabled) { m_mouseEnabled = enabled; }
  /// Whether a press on the view gives it the keyboard focus.
  bool wantsFocus() const { return m_wantsFocus; }
  void setWantsFocus(bool wants) { m_wantsFocus = wants; }

  /// Null while the view is in no frame.
  CFrame* getFrame() const { return m_frame; }

  /// The toolkit's own: draws the view, and makes it clean when this puts all of it on the screen.
  void render(CDrawContext& context);
  /// The toolkit's own: adds what must be redrawn.
  virtual void collectDirty(DirtyRegion& region);
  /// The toolkit's own: the view came into a frame, or left it (null).
  virtual void setPlace(CFrame* frame);

 protected:
  /// Copies the settings; the copy is in no container.
  CView(const CView& other);

  /// What a drawing that is about to begin is for.
  enum class Drawing : unsigned char {
    kWhole, ///< all of the view on the screen
    kPart,  ///< a part of it; the rest of the screen keeps what it shows
    kAside, ///< not for the screen
  };
  /// Fixes what the drawing shows. After a whole one the screen is up to date.
  virtual void latch(Drawing drawing) {
    if (drawing == Drawing::kWhole) m_dirty.store(false, std::memory_order_relaxed);
  }
  bool isRendering() const { return m_rendering; }

 private:
  CRect m_size;
  CFrame* m_frame = nullptr;
  std::atomic<bool> m_dirty{true};
  bool m_rendering = false;
  bool m_mouseEnabled = true;
  bool m_wantsFocus = false;
};

static_assert(std::atomic<bool>::is_always_lock_free);

} // namespace qlx::gui
