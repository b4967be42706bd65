#include "gui/CMessageBox.h"

#include "gui/CFrame.h"

#include <algorithm>

namespace qlx::gui {

namespace {

constexpr CFontDesc kTitleFont{13.0};
constexpr CFontDesc kTextFont{12.0};
constexpr CCoord kMargin = 16.0;
constexpr CCoord kLineHeight = 16.0;
constexpr CCoord kTitleHeight = 24.0;
constexpr CCoord kButtonHeight = 24.0;
constexpr CCoord kButtonGap = 8.0;
constexpr CCoord kNarrowestButton = 72.0;
constexpr CCoord kButtonPadding = 24.0;
constexpr CCoord kNarrowest = 220.0;
constexpr CCoord kFrameMargin = 20.0; // left of the frame around the largest box

constexpr CColor kBack{38, 33, 29, 255};
constexpr CColor kEdge{111, 85, 35, 255};
constexpr CColor kTitleText{240, 212, 138, 255};
constexpr CColor kText{236, 226, 200, 255};
constexpr CColor kButton{58, 50, 43, 255};
constexpr CColor kHighlight{185, 141, 60, 255};
constexpr CColor kHighlightText{28, 20, 12, 255};

int textWidth(CTypeface* typeface, std::string_view text, const CFontDesc& font) {
  return typeface == nullptr ? 0 : typeface->width(text, font);
}

std::vector<std::string> brokenIntoLines(CTypeface* typeface, std::string_view text, CCoord width) {
  std::vector<std::string> lines(1);
  while (!text.empty()) {
    const std::string_view word = text.substr(0, std::min(text.find(' '), text.size()));
    text.remove_prefix(std::min(word.size() + 1, text.size()));
    std::string& line = lines.back();
    const std::string longer = line.empty() ? std::string(word) : line + " " + std::string(word);
    if (!line.empty() && textWidth(typeface, longer, kTextFont) > width)
      lines.emplace_back(word);
    else
      line = longer;
  }
  return lines;
}

class CMessageButton final : public CView {
 public:
  CMessageButton(const CRect& size, std::string_view title, CMessageBox& box, int number)
      : CView(size), m_title(title), m_box(box), m_number(number) {}

  std::unique_ptr<CView> newCopy() const override { return nullptr; }

  void setHighlighted(bool highlighted) {
    m_highlighted = highlighted;
    setDirty();
  }

  void draw(CDrawContext& context) override {
    context.fillRoundRect(getViewSize(), 4.0, m_highlighted ? kHighlight : kButton);
    context.setFont(kTextFont);
    context.setFontColor(m_highlighted ? kHighlightText : kText);
    context.drawString(m_title, getViewSize());
  }

  CMouseEventResult onMouseDown(const CPoint& /*where*/, const CButtonState& buttons) override {
    return buttons.isLeftButton() ? CMouseEventResult::kHandled : CMouseEventResult::kNotHandled;
  }

  CMouseEventResult onMouseUp(const CPoint& where, const CButtonState& /*buttons*/) override {
    if (getViewSize().contains(where)) m_box.press(m_number);
    return CMouseEventResult::kHandled;
  }

  CMouseEventResult onMouseEntered(const CPoint& /*where*/,
                                   const CButtonState& /*buttons*/) override {
    m_box.highlight(m_number);
    return CMouseEventResult::kHandled;
  }

 private:
  std::string m_title;
  CMessageBox& m_box;
  int m_number;
  bool m_highlighted = false;
};

} // namespace

bool CMessageBox::show(CFrame& frame, std::string_view title, std::string_view text,
                       const std::vector<std::string>& buttons, Answer answer) {
  if (frame.getModalView() != nullptr) return false;
  CTypeface* typeface = frame.getTypeface();
  const CRect all = frame.getViewSize();
  const CCoord room = all.width() - 2.0 * (kFrameMargin + kMargin);
  std::vector<std::string> lines = brokenIntoLines(typeface, text, room);
  CCoord widest = textWidth(typeface, title, kTitleFont);
  for (const std::string& line : lines)
    widest = std::max<CCoord>(widest, textWidth(typeface, line, kTextFont));
  const CCoord width = std::max(kNarrowest, std::min(widest, room) + 2.0 * kMargin);
  const CCoord height = 3.0 * kMargin + (title.empty() ? 0.0 : kTitleHeight) +
                        kLineHeight * static_cast<CCoord>(lines.size()) + kButtonHeight;
  const CCoord left = std::floor((all.width() - width) / 2.0);
  const CCoord top = std::floor((all.height() - height) / 2.0);
  std::unique_ptr<CMessageBox> box(new CMessageBox({left, top, left + width, top + height}, title,
                                                   std::move(lines), std::move(answer)));
  box->addButtons(buttons, typeface);
  return frame.setModalView(std::move(box));
}

CMessageBox::CMessageBox(const CRect& size, std::string_view title, std::vector<std::string> lines,
                         Answer answer)
    : CViewContainer(size), m_title(title), m_lines(std::move(lines)), m_answer(std::move(answer)) {
}

// In a row in the middle, below the text.
void CMessageBox::addButtons(const std::vector<std::string>& titles, CTypeface* typeface) {
  const auto widthOf = [typeface](const std::string& title) {
    return std::max(kNarrowestButton, textWidth(typeface, title, kTextFont) + kButtonPadding);
  };
  CCoord row = -kButtonGap;
  for (const std::string& title : titles) row += widthOf(title) + kButtonGap;
  CCoord left = std::floor(getViewSize().centre().x - row / 2.0);
  const CCoord bottom = getViewSize().bottom - kMargin;
  for (const std::string& title : titles) {
    const CRect place{left, bottom - kButtonHeight, left + widthOf(title), bottom};
    addView(
        std::make_unique<CMessageButton>(place, title, *this, static_cast<int>(getViews().size())));
    left = place.right + kButtonGap;
  }
  highlight(0);
}

void CMessageBox::highlight(int button) {
  m_highlighted = button;
  for (std::size_t i = 0; i < getViews().size(); ++i)
    static_cast<CMessageButton&>(*getViews()[i])
        .setHighlighted(static_cast<int>(i) == m_highlighted);
}

void CMessageBox::press(int button) {
  const Answer answer = std::exchange(m_answer, nullptr);
  getFrame()->removeModalView();
  if (answer) answer(button);
}

void CMessageBox::draw(CDrawContext& context) {
  const CRect& box = getViewSize();
  context.fillRoundRect(box, 6.0, kBack);
  context.frameRoundRect(box, 6.0, 1.0, kEdge);
  CRect line{box.left + kMargin, box.top + kMargin, box.right - kMargin, 0.0};
  if (!m_title.empty()) {
    line.bottom = line.top + kLineHeight;
    context.setFont(kTitleFont);
    context.setFontColor(kTitleText);
    context.drawString(m_title, line);
    line.top += kTitleHeight;
  }
  context.setFont(kTextFont);
  context.setFontColor(kText);
  for (const std::string& text : m_lines) {
    line.bottom = line.top + kLineHeight;
    context.drawString(text, line);
    line.top = line.bottom;
  }
  drawViews(context);
}

CMouseEventResult CMessageBox::onMouseDown(const CPoint& /*where*/,
                                           const CButtonState& /*buttons*/) {
  return CMouseEventResult::kHandledDontNeedMoves;
}

bool CMessageBox::onKeyDown(const CKeyCode& key) {
  const int count = static_cast<int>(getViews().size());
  switch (key.virtualKey) {
  case VirtualKey::kReturn:
  case VirtualKey::kEnter:
  case VirtualKey::kSpace: press(m_highlighted); break;
  case VirtualKey::kEscape: press(count - 1); break;
  case VirtualKey::kLeft: highlight(std::max(0, m_highlighted - 1)); break;
  case VirtualKey::kRight: highlight(std::min(count - 1, m_highlighted + 1)); break;
  case VirtualKey::kTab: highlight((m_highlighted + 1) % count); break;
  default: break;
  }
  return true;
}

} // namespace qlx::gui
