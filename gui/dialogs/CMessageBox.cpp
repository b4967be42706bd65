// SPDX-License-Identifier: ISC
#include "gui/dialogs/CMessageBox.h"

#include "gui/CFrame.h"
#include "gui/dialogs/CDialogButton.h"
#include "gui/dialogs/DialogLook.h"

#include <algorithm>

namespace qlx::gui {

namespace {

constexpr CCoord kMargin = 16.0;
constexpr CCoord kLineHeight = 16.0;
constexpr CCoord kTitleHeight = 24.0;
constexpr CCoord kButtonGap = 8.0;
constexpr CCoord kNarrowestButton = 72.0;
constexpr CCoord kButtonPadding = 24.0;
constexpr CCoord kNarrowest = 220.0;
constexpr CCoord kFrameMargin = 20.0; // left of the frame around the largest box

CCoord textWidth(CTypeface* typeface, std::string_view text, const CFontDesc& font) {
  return typeface == nullptr ? 0.0 : std::ceil(typeface->width(text, font));
}

std::vector<std::string> brokenIntoLines(CTypeface* typeface, std::string_view text, CCoord width) {
  std::vector<std::string> lines(1);
  while (!text.empty()) {
    const std::string_view word = text.substr(0, std::min(text.find(' '), text.size()));
    text.remove_prefix(std::min(word.size() + 1, text.size()));
    std::string& line = lines.back();
    const std::string longer = line.empty() ? std::string(word) : line + " " + std::string(word);
    if (!line.empty() && textWidth(typeface, longer, kDialogFont) > width)
      lines.emplace_back(word);
    else
      line = longer;
  }
  return lines;
}

} // namespace

bool CMessageBox::show(CFrame& frame, std::string_view title, std::string_view text,
                       const std::vector<std::string>& buttons, Answer answer) {
  if (frame.getModalView() != nullptr) return false;
  CTypeface* typeface = frame.getTypeface();
  const CRect all = frame.getViewSize();
  const CCoord room = all.width() - 2.0 * (kFrameMargin + kMargin);
  std::vector<std::string> lines = brokenIntoLines(typeface, text, room);
  CCoord widest = textWidth(typeface, title, kDialogTitleFont);
  for (const std::string& line : lines)
    widest = std::max<CCoord>(widest, textWidth(typeface, line, kDialogFont));
  const CCoord width = std::max(kNarrowest, std::min(widest, room) + 2.0 * kMargin);
  const CCoord height = 3.0 * kMargin + (title.empty() ? 0.0 : kTitleHeight) +
                        kLineHeight * static_cast<CCoord>(lines.size()) + kDialogButtonHeight;
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
    return std::max(kNarrowestButton, textWidth(typeface, title, kDialogFont) + kButtonPadding);
  };
  CCoord row = -kButtonGap;
  for (const std::string& title : titles) row += widthOf(title) + kButtonGap;
  CCoord left = std::floor(getViewSize().centre().x - row / 2.0);
  const CCoord bottom = getViewSize().bottom - kMargin;
  for (const std::string& title : titles) {
    const CRect place{left, bottom - kDialogButtonHeight, left + widthOf(title), bottom};
    const int number = static_cast<int>(getViews().size());
    addView(std::make_unique<CDialogButton>(
        place, title, [this, number] { press(number); }, [this, number] { highlight(number); }));
    left = place.right + kButtonGap;
  }
  highlight(0);
}

void CMessageBox::highlight(int button) {
  m_highlighted = button;
  for (std::size_t i = 0; i < getViews().size(); ++i)
    static_cast<CDialogButton&>(*getViews()[i])
        .setHighlighted(static_cast<int>(i) == m_highlighted);
}

void CMessageBox::press(int button) {
  const Answer answer = std::exchange(m_answer, nullptr);
  getFrame()->removeModalView();
  if (answer) answer(button);
}

void CMessageBox::draw(CDrawContext& context) {
  const CRect& box = getViewSize();
  context.fillRoundRect(box, 6.0, kDialogBack);
  context.frameRoundRect(box, 6.0, 1.0, kDialogEdge);
  CRect line{box.left + kMargin, box.top + kMargin, box.right - kMargin, 0.0};
  if (!m_title.empty()) {
    line.bottom = line.top + kLineHeight;
    context.setFont(kDialogTitleFont);
    context.setFontColor(kDialogTitle);
    context.drawString(m_title, line);
    line.top += kTitleHeight;
  }
  context.setFont(kDialogFont);
  context.setFontColor(kDialogText);
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
