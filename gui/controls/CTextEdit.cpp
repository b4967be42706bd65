// SPDX-License-Identifier: ISC
#include "gui/controls/CTextEdit.h"

#include "gui/CFrame.h"
#include "gui/drawing/Utf8.h"

#include <algorithm>

namespace qlx::gui {

namespace {

constexpr std::chrono::milliseconds kBlink{530};

} // namespace

CTextEdit::CTextEdit(const CRect& size, CControlListener* listener, std::int32_t tag,
                     std::string_view text, CBitmapRef background, std::int32_t style)
    : CTextLabel(size, text, std::move(background), style) {
  setListener(listener);
  setTag(tag);
  setMouseEnabled(true);
}

CTextEdit::CTextEdit(const CTextEdit& other)
    : CTextLabel(other), m_inputLimit(other.m_inputLimit), m_fieldLimit(other.m_fieldLimit) {}

std::unique_ptr<CView> CTextEdit::newCopy() const {
  return std::unique_ptr<CView>(new CTextEdit(*this));
}

void CTextEdit::setText(std::string_view text) {
  if (m_box == nullptr) return CTextLabel::setText(text);
  const bool untouched = m_box->model.text() == m_box->before;
  m_box->before = text;
  if (!untouched) return;
  CTextLabel::setText(text);
  m_box->model.setText(text);
  if (hasNativeBox()) return m_box->native->setText(text);
  moved();
}

void CTextEdit::beginTextEdit() {
  if (m_box != nullptr || getFrame() == nullptr) return;
  m_box = std::make_unique<Box>(m_inputLimit);
  m_box->before = getText();
  m_box->model.setText(getText());
  getFrame()->takeKeyboardFocus();
  getFrame()->setFocusView(this);
  m_box->native = openNativeBox();
  if (!hasNativeBox()) moved();
  setDirty();
}

// The field without text is what the system's box shows behind it.
std::unique_ptr<platform::TextBox> CTextEdit::openNativeBox() {
  using Look = platform::TextBoxLook;
  const CFrame& frame = *getFrame();
  const double scale = frame.getScale();
  const PixelRect field = getViewSize().scaledBy(scale).touchedPixels();
  PixelBuffer whole(field.right, field.bottom);
  CDrawContext context(whole, nullptr, scale);
  drawBack(context);
  PixelBuffer back(field.width(), field.height());
  for (int y = 0; y < back.height; ++y)
    std::copy_n(whole.row(field.top + y) + field.left, back.width, back.row(y));

  Look look;
  look.text = getText();
  look.field = field;
  look.background = back.view();
  const CColor& colour = getFontColor();
  look.colour = static_cast<std::uint32_t>(colour.red << 16 | colour.green << 8 | colour.blue);
  look.fontHeight = CRect::nearest(getFont().size * scale);
  look.limit = m_inputLimit;
  switch (getHoriAlign()) {
  case CHoriTxtAlign::kLeftText: look.align = Look::Align::Left; break;
  case CHoriTxtAlign::kCenterText: look.align = Look::Align::Centre; break;
  case CHoriTxtAlign::kRightText: look.align = Look::Align::Right; break;
  }
  return frame.getWindow().openTextBox(look);
}

void CTextEdit::onTextBoxChanged(std::string_view text) {
  if (!hasNativeBox()) return;
  m_box->model.setText(text);
  CTextLabel::setText(firstCharacters(m_box->model.text(), m_fieldLimit));
}

void CTextEdit::endTextEdit(bool accept) {
  if (m_box == nullptr) return;
  if (hasNativeBox()) {
    // Its last change may still be on its way, and the keyboard is the window's again.
    if (getFrame()->isOpen()) onTextBoxChanged(m_box->native->text());
    m_box->native = nullptr;
  }
  const std::unique_ptr<Box> box = std::move(m_box);
  if (getFrame()->getFocusView() == this) getFrame()->setFocusView(nullptr);
  if (!accept) setText(box->before);
  setDirty();
  if (accept) valueChanged();
}

void CTextEdit::onFocusLost() { endTextEdit(true); }

void CTextEdit::removed() {
  m_box = nullptr;
  CTextLabel::removed();
}

void CTextEdit::edited() {
  CTextLabel::setText(firstCharacters(m_box->model.text(), m_fieldLimit));
  moved();
}

// The caret has moved: it stays in view and shows itself.
void CTextEdit::moved() {
  const int caret = penFor(m_box->model.caret());
  const int whole = penFor(m_box->model.characters().size());
  if (whole <= room()) {
    m_box->scroll = 0;
  } else {
    m_box->scroll = std::clamp(m_box->scroll, caret - room(), caret);
    m_box->scroll = std::min(m_box->scroll, whole - room());
  }
  m_box->caretShown = true;
  m_box->blinkAt = getFrame()->getWindow().now() + kBlink;
  setDirty();
}

void CTextEdit::onIdle() {
  if (m_box == nullptr || hasNativeBox() || getFrame()->getWindow().now() < m_box->blinkAt) return;
  m_box->caretShown = !m_box->caretShown;
  m_box->blinkAt = getFrame()->getWindow().now() + kBlink;
  setDirty();
}

// --- Places ---

// A caret behind the last letter has to have its place, too.
int CTextEdit::room() const {
  const double scale = getFrame()->getScale();
  return static_cast<int>(getViewSize().width() * scale) - static_cast<int>(scale);
}

int CTextEdit::penFor(std::size_t position) const {
  CTypeface* typeface = getFrame()->getTypeface();
  if (typeface == nullptr) return 0;
  const std::u32string& text = m_box->model.characters();
  TextPen pen(*typeface, getFont(), 0);
  for (std::size_t i = 0; i < position; ++i) pen.set(text[i]);
  return pen.end();
}

int CTextEdit::textLeft() const {
  const double scale = getFrame()->getScale();
  const int left = CRect::nearest(getViewSize().left * scale);
  const int whole = penFor(m_box->model.characters().size());
  if (whole > room()) return left - m_box->scroll;
  if (getHoriAlign() == CHoriTxtAlign::kCenterText)
    return left + (room() + static_cast<int>(scale) - whole) / 2;
  return getHoriAlign() == CHoriTxtAlign::kRightText ? left + room() - whole : left;
}

std::size_t CTextEdit::positionAt(CCoord x) const {
  CTypeface* typeface = getFrame()->getTypeface();
  const std::u32string& text = m_box->model.characters();
  if (typeface == nullptr) return text.size();
  TextPen pen(*typeface, getFont(), textLeft());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const CTypeface::Glyph glyph = pen.set(text[i]);
    if (x * getFrame()->getScale() < pen.start() + glyph.advance / 2.0) return i;
  }
  return text.size();
}

// --- Drawing ---

void CTextEdit::draw(CDrawContext& context) {
  if (m_box == nullptr) return CTextLabel::draw(context);
  if (hasNativeBox()) {
    drawBack(context);
    setDirty(false);
    return;
  }
  const CRect& field = getViewSize();
  const TextEditModel& model = m_box->model;
  const int left = textLeft();
  const double scale = context.getScale();
  drawBack(context);
  context.setFont(getFont());
  context.setFontColor(getFontColor());
  const std::string text = model.text();
  context.drawStringAt(text, left, field);
  const CCoord middle = field.centre().y;
  const CCoord half = getFont().size / 2.0 + 1.0;
  const CRect line{field.left, middle - half, field.right, middle + half};
  if (model.hasSelection()) {
    CRect marked = line;
    marked.left = (left + penFor(model.selectionStart())) / scale;
    marked.right = (left + penFor(model.selectionEnd())) / scale;
    marked = marked.intersect(field);
    context.fillRect(marked, getFontColor());
    // The text's own colours reversed, which is readable on any skin.
    context.setFontColor(getFontColor().isLight() ? kBlackCColor : kWhiteCColor);
    context.drawStringAt(text, left, marked);
  } else if (m_box->caretShown) {
    const CCoord caret = (left + penFor(model.caret())) / scale;
    context.fillRect({caret, line.top, caret + context.getHairline(), line.bottom}, getFontColor());
  }
  setDirty(false);
}

// --- Pointer ---

CMouseEventResult CTextEdit::onMouseDown(const CPoint& where, const CButtonState& buttons) {
  if (m_box == nullptr) {
    if (!buttons.isLeftButton()) return CMouseEventResult::kNotHandled;
    beginTextEdit();
    return CMouseEventResult::kHandledDontNeedMoves;
  }
  if (hasNativeBox()) return CMouseEventResult::kHandledDontNeedMoves; // a press beside its line
  TextEditModel& model = m_box->model;
  if (buttons.isMiddleButton()) {
    model.moveTo(positionAt(where.x), false);
    moved();
    getFrame()->getWindow().requestText(platform::Selection::kPrimary);
    return CMouseEventResult::kHandledDontNeedMoves;
  }
  if (!buttons.isLeftButton()) return CMouseEventResult::kHandledDontNeedMoves;
  if (buttons.isDoubleClick())
    model.selectWordAt(positionAt(where.x));
  else
    model.moveTo(positionAt(where.x), buttons.isShiftSet());
  m_box->selecting = !buttons.isDoubleClick();
  moved();
  return CMouseEventResult::kHandled;
}

CMouseEventResult CTextEdit::onMouseMoved(const CPoint& where, const CButtonState& buttons) {
  if (m_box == nullptr || !m_box->selecting || !buttons.isLeftButton())
    return CMouseEventResult::kNotHandled;
  m_box->model.moveTo(positionAt(where.x), true);
  moved();
  return CMouseEventResult::kHandled;
}

CMouseEventResult CTextEdit::onMouseUp(const CPoint& /*where*/, const CButtonState& /*buttons*/) {
  if (m_box == nullptr) return CMouseEventResult::kNotHandled;
  m_box->selecting = false;
  offerSelection();
  return CMouseEventResult::kHandled;
}

void CTextEdit::offerSelection() const {
  if (m_box->model.hasSelection())
    getFrame()->getWindow().offerText(platform::Selection::kPrimary, m_box->model.selectedText());
}

// --- Keys ---

void CTextEdit::onSelectionText(std::string_view text) {
  if (m_box == nullptr || text.empty()) return;
  m_box->model.insert(text);
  edited();
}

bool CTextEdit::onKeyDown(const CKeyCode& key) {
  if (m_box == nullptr) return false;
  CFrame* frame = getFrame();
  switch (key.virtualKey) {
  case VirtualKey::kReturn:
  case VirtualKey::kEnter:
  case VirtualKey::kTab:
  case VirtualKey::kEscape:
    endTextEdit(key.virtualKey != VirtualKey::kEscape);
    if (frame->getRingView() == nullptr) frame->giveKeyboardFocusBack();
    return true;
  default: break;
  }
  if (hasNativeBox()) return false; // it gets its keys from the system
  if (onMotionKey(key) || onShortcut(key)) return true;
  const bool command =
      (key.modifiers & (platform::kModifierControl | platform::kModifierSuper)) != 0;
  if (!command && !key.text.empty()) {
    m_box->model.insert(key.text);
    edited();
  }
  return true;
}

bool CTextEdit::onKeyAction(KeyAction action, const CButtonState& /*modifiers*/) {
  if (action != KeyAction::kPress) return false;
  beginTextEdit();
  return true;
}

bool CTextEdit::onMotionKey(const CKeyCode& key) {
  TextEditModel& model = m_box->model;
  const bool word = (key.modifiers & platform::kModifierControl) != 0;
  const bool extend = (key.modifiers & platform::kModifierShift) != 0;
  switch (key.virtualKey) {
  case VirtualKey::kLeft: model.moveLeft(word, extend); break;
  case VirtualKey::kRight: model.moveRight(word, extend); break;
  case VirtualKey::kHome:
  case VirtualKey::kUp: model.moveTo(0, extend); break;
  case VirtualKey::kEnd:
  case VirtualKey::kDown: model.moveTo(model.characters().size(), extend); break;
  case VirtualKey::kBack:
    model.eraseBackward(word);
    edited();
    return true;
  case VirtualKey::kDelete:
    if (extend) return false;
    model.eraseForward(word);
    edited();
    return true;
  default: return false;
  }
  moved();
  if (extend) offerSelection();
  return true;
}

// Control with A, C, X, V, and the older shortcuts with Insert and Delete.
bool CTextEdit::onShortcut(const CKeyCode& key) {
  const bool control = (key.modifiers & platform::kModifierControl) != 0;
  const bool shift = (key.modifiers & platform::kModifierShift) != 0;
  const char32_t letter =
      control && key.character >= 'A' && key.character <= 'Z' ? key.character + 32 : key.character;
  const bool insert = key.virtualKey == VirtualKey::kInsert;
  const bool cut = (control && letter == 'x') || (shift && key.virtualKey == VirtualKey::kDelete);
  const bool copy = (control && letter == 'c') || (control && insert);
  const bool paste = (control && letter == 'v') || (shift && insert);
  platform::NativeWindow& window = getFrame()->getWindow();
  TextEditModel& model = m_box->model;
  if (control && letter == 'a') {
    model.selectAll();
    moved();
  } else if (cut || copy) {
    if (!model.hasSelection()) return true;
    window.offerText(platform::Selection::kClipboard, model.selectedText());
    if (!cut) return true;
    model.eraseBackward(false);
    edited();
  } else if (paste) {
    window.requestText(platform::Selection::kClipboard);
  } else {
    return false;
  }
  return true;
}

} // namespace qlx::gui
