// SPDX-License-Identifier: ISC
#pragma once

#include "gui/controls/CTextLabel.h"
#include "gui/controls/TextEditModel.h"
#include "platform/TextBox.h"

#include <chrono>
#include <memory>

namespace qlx::gui {

/// A label whose text can be edited in place. A left click opens a one-line box over the field,
/// without margins, in the field's font, colour and alignment and showing its background, with all
/// of the text selected and the keyboard focus. While editing, every change is copied into the
/// field, cut to its own limit. Enter, Tab or the loss of the focus accept: the listener is told
/// (valueChanged). Escape brings the old text back and tells nobody. The box is the system's
/// own where it has one (platform::TextBox); else it knows arrows, Home, End, with Control by
/// words, with Shift selecting; mouse selection, double-click for a word; Control with A, C, X, V;
/// the middle button pastes the primary selection.
class CTextEdit : public CTextLabel {
 public:
  CTextEdit(const CRect& size, CControlListener* listener, std::int32_t tag, std::string_view text,
            CBitmapRef background = nullptr, std::int32_t style = 0);

  bool isTypeOf(std::string_view className) const override {
    return className == "CTextEdit" || CTextLabel::isTypeOf(className);
  }
  std::unique_ptr<CView> newCopy() const override;
  void draw(CDrawContext& context) override;
  platform::PointerShape getPointerShape() const override { return platform::PointerShape::kText; }
  CMouseEventResult onMouseDown(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseUp(const CPoint& where, const CButtonState& buttons) override;
  CMouseEventResult onMouseMoved(const CPoint& where, const CButtonState& buttons) override;
  bool onKeyDown(const CKeyCode& key) override;
  /// A press starts editing.
  bool onKeyAction(KeyAction action, const CButtonState& modifiers) override;
  void onFocusLost() override;
  bool isEditingText() const override { return m_box != nullptr; }
  void onSelectionText(std::string_view text) override;
  void onTextBoxChanged(std::string_view text) override;
  void onIdle() override;
  void removed() override;

  /// Characters that the box takes (255) and that are copied into the field (29).
  void setInputLimit(std::size_t characters) { m_inputLimit = characters; }
  void setFieldLimit(std::size_t characters) { m_fieldLimit = characters; }

  /// A text that comes while the user is typing is what Escape brings back; until something has
  /// been typed the box shows it, too.
  void setText(std::string_view text);

  /// Starts and ends editing as a click, Enter and Escape do.
  void beginTextEdit();
  void endTextEdit(bool accept);

 protected:
  CTextEdit(const CTextEdit& other);

 private:
  struct Box {
    explicit Box(std::size_t limit) : model(limit) {}
    TextEditModel model;
    std::string before; ///< the field's text when editing started
    int scroll = 0;     ///< pixels of the window's that the text begins left of the field
    bool caretShown = true;
    bool selecting = false;
    std::chrono::milliseconds blinkAt{0};
    std::unique_ptr<platform::TextBox> native{}; ///< the system's own, or null
  };

  bool hasNativeBox() const { return m_box != nullptr && m_box->native != nullptr; }
  std::unique_ptr<platform::TextBox> openNativeBox();

  // Pens stand at pixels of the window, x is a place in the layout.
  int room() const;
  int penFor(std::size_t position) const;
  std::size_t positionAt(CCoord x) const;
  int textLeft() const;
  void edited();
  void moved();
  bool onShortcut(const CKeyCode& key);
  bool onMotionKey(const CKeyCode& key);
  void offerSelection() const;

  std::unique_ptr<Box> m_box;
  std::size_t m_inputLimit = 255;
  std::size_t m_fieldLimit = 29;
};

} // namespace qlx::gui
