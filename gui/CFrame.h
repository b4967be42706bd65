// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CColor.h"
#include "gui/CViewContainer.h"
#include "gui/DirtyRegion.h"
#include "gui/drawing/CBitmap.h"
#include "gui/drawing/CDrawContext.h"
#include "platform/NativeWindow.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace qlx::gui {

/// The root of the views of one window: hands out its events, keeps the focus and the one modal
/// view, and at every idle redraws what is dirty. Its views live in the pixels of the layout,
/// whatever the window's scale. User-interface thread only.
class CFrame : public CViewContainer, private platform::WindowListener {
 public:
  /// `size` starts at (0, 0); the window has windowSize() of it at the scale, which is one of
  /// kWindowScales. `typeface` may be null: no texts then.
  CFrame(const CRect& size, std::unique_ptr<platform::NativeWindow> window,
         const std::shared_ptr<CTypeface>& typeface, double scale = 1.0);
  ~CFrame() override;

  bool isTypeOf(std::string_view className) const override {
    return className == "CFrame" || CViewContainer::isTypeOf(className);
  }
  /// A frame is one window's; there are no copies. Null.
  std::unique_ptr<CView> newCopy() const override { return nullptr; }
  void draw(CDrawContext& context) override;

  /// How many pixels of the screen a pixel of the layout takes.
  double getScale() const { return m_scale; }
  /// Gives the window another size. Open popups are closed; all else goes on as it was.
  void setScale(double scale);
  /// Width and height in pixels of the screen of a window in which `size` is shown at a scale. A
  /// part of a pixel at its right or lower edge is left out.
  static CPoint windowSize(const CRect& size, double scale);

  /// Shows the window, draws everything and presents it.
  void open();
  /// Handles what happened to the window, then redraws and presents what is dirty. Does nothing
  /// more once the window is gone.
  void idle();
  /// False once the window is gone (its parent destroyed, the display lost, the user closed it).
  bool isOpen() const;

  /// Drawn under all views, not scaled. It is black beside the bitmap.
  void setBackground(CBitmapRef background);
  const CBitmapRef& getBackground() const { return m_background; }

  /// Asks for a redraw of an area, or of everything.
  void invalidRect(const CRect& area);
  void invalidAll();

  /// Shows a view above all others that gets all input until it is removed. False (and the view is
  /// gone) while there is another one.
  bool setModalView(std::unique_ptr<CView> view);
  /// Takes the modal view away. It may be called from the view's own handlers: the view is
  /// destroyed after them.
  void removeModalView();
  CView* getModalView() const { return m_modalView.get(); }

  /// Gives a view of this frame the keyboard focus; null takes it from all.
  void setFocusView(CView* view);
  CView* getFocusView() const { return m_focusView; }

  /// The views that Tab and Shift with Tab bring the keyboard to, one after the other. The one that
  /// has it then shows a ring and gets key actions; Escape or a press of the pointer ends that.
  void setWalkOrder(std::vector<CView*> views) { m_walkOrder = std::move(views); }
  /// The view with the ring, or null.
  CView* getRingView() const { return m_ringShown ? m_walkView : nullptr; }

  /// Asks for the native window's keyboard focus, and gives it back to what had it before.
  void takeKeyboardFocus();
  void giveKeyboardFocusBack();

  /// Called when the window has come to a screen of another scale, with that scale.
  void onScaleChanged(std::function<void(double scale)> changed) {
    m_scaleChanged = std::move(changed);
  }

  /// Opens a view in a window of its own above the screen, its corner at the given place as far as
  /// the screen has room for it. Keys go to it until it closes, by closePopup, a press elsewhere,
  /// or the loss of the keyboard or the window; `closed` is called then. One at a time; an open one
  /// is closed. False when it can't be had (the view is gone then).
  bool openPopup(std::unique_ptr<CView> content, const CPoint& corner,
                 std::function<void()> closed);
  /// The content is destroyed after the running handler.
  void closePopup();
  /// Where the popup lies, in this frame's coordinates. Empty without one.
  CRect getPopupPlace() const;

  /// The platform's entry points; also for events that a host hands over itself. `where` in pixels
  /// of the layout. The state of a press or release has the one button that changed.
  virtual CMouseEventResult platformOnMouseDown(const CPoint& where, const CButtonState& buttons);
  virtual CMouseEventResult platformOnMouseUp(const CPoint& where, const CButtonState& buttons);
  virtual CMouseEventResult platformOnMouseMoved(const CPoint& where, const CButtonState& buttons);
  virtual void platformOnMouseExited();
  virtual bool platformOnWheel(const CPoint& where, float distance, const CButtonState& buttons);
  virtual bool platformOnKeyDown(const CKeyCode& key);
  virtual bool platformOnKeyUp(const CKeyCode& key);

  /// For the window's scale; null when there is none.
  CTypeface* getTypeface() const { return m_typeface.get(); }
  platform::NativeWindow& getWindow() const { return *m_window; }
  /// A button of the pointer is held that was pressed on a view.
  bool isInGesture() const { return m_mouseDownView != nullptr; }

  /// The toolkit's own: whether a context draws what the window will show.
  bool isScreen(const CDrawContext& context) const { return &context == &m_surface->context; }
  /// The toolkit's own: a view leaves the frame; nothing is sent to it any more.
  void forgetView(const CView& view);

 private:
  /// What depends on the window's size. Regions in pixels of the screen.
  struct Surface {
    Surface(const platform::PixelRect& size, const CTypeface* typeface, double scale);
    PixelBuffer picture;
    CDrawContext context;
    DirtyRegion dirty;
    DirtyRegion exposed;
  };

  bool onWindowEvent(const platform::WindowEvent& event) override;
  bool onKeyEvent(const platform::WindowEvent& event);
  bool walk(const CKeyCode& key);
  bool step(int by);
  void showRing(bool shown);
  CRect ringPlace() const;
  void drawRing(CDrawContext& context) const;
  void giveUnneededKeyboardBack();
  void redraw();
  void setHoverView(CView* view, const CPoint& where, const CButtonState& buttons);
  CView* viewAt(const CPoint& where) const;
  bool editsText() const { return m_focusView != nullptr && m_focusView->isEditingText(); }
  void destroyRemoved();

  std::unique_ptr<platform::NativeWindow> m_window;
  double m_scale;
  std::shared_ptr<CTypeface> m_typeface;
  std::unique_ptr<Surface> m_surface;
  CBitmapRef m_background;
  std::unique_ptr<CView> m_modalView;
  // Removed while their own handlers may still run; destroyed at the end of idle.
  std::vector<std::unique_ptr<CView>> m_removedViews;
  std::vector<std::unique_ptr<CFrame>> m_removedPopups;
  std::unique_ptr<CFrame> m_popup;
  std::function<void()> m_popupClosed;
  std::function<void(double scale)> m_scaleChanged;
  CView* m_focusView = nullptr;
  std::vector<CView*> m_walkOrder;
  CView* m_walkView = nullptr; ///< where walking goes on
  bool m_ringShown = false;
  CView* m_mouseDownView = nullptr;
  CView* m_hoverView = nullptr;
  std::uint32_t m_mouseDownButton = 0;
  bool m_pointerLeft = false; ///< and the keyboard has not been given back since
};

} // namespace qlx::gui
