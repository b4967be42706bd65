// SPDX-License-Identifier: ISC
#include "gui/dialogs/CFileList.h"

#include "gui/CFrame.h"
#include "gui/dialogs/CDialogButton.h"
#include "gui/dialogs/CFileName.h"
#include "gui/dialogs/DialogLook.h"
#include "gui/drawing/ShortenedText.h"

#include <algorithm>
#include <utility>

namespace qlx::gui {

namespace {

constexpr CCoord kWidth = 361.0;
constexpr CCoord kHeight = 436.0;
constexpr CCoord kFrameMargin = 20.0; // left of the frame around a dialog that fills it
constexpr CCoord kMargin = 14.0;
constexpr CCoord kGap = 8.0;
constexpr CCoord kTitleHeight = 26.0;
constexpr CCoord kLine = kDialogButtonHeight;
constexpr CCoord kWideButton = 76.0;
constexpr CCoord kHomeButton = 54.0;
constexpr CCoord kUpButton = 40.0;
constexpr CCoord kLabelWidth = 44.0;
constexpr CCoord kFieldMargin = 6.0;

CRect dialogPlace(const CRect& frame) {
  const CCoord width = std::min(kWidth, frame.width() - 2.0 * kFrameMargin);
  const CCoord height = std::min(kHeight, frame.height() - 2.0 * kFrameMargin);
  const CCoord left = std::floor(frame.centre().x - width / 2.0);
  const CCoord top = std::floor(frame.centre().y - height / 2.0);
  return {left, top, left + width, top + height};
}

bool saves(const platform::FileRequest& request) {
  return request.style == platform::FileRequest::Style::Save;
}

} // namespace

bool CFileList::show(CFrame& frame, const platform::FileRequest& request, Answer answer) {
  if (frame.getModalView() != nullptr) return false;
  std::unique_ptr<CFileList> made(
      new CFileList(dialogPlace(frame.getViewSize()), request, std::move(answer)));
  CFileList& list = *made;
  frame.setModalView(std::move(made));
  list.startIn(request.directory);
  frame.takeKeyboardFocus();
  if (list.m_name != nullptr) list.m_name->beginTextEdit();
  return true;
}

CFileList::CFileList(const CRect& size, const platform::FileRequest& request, Answer answer)
    : CViewContainer(size), m_model(request.types), m_title(request.title),
      m_answer(std::move(answer)) {
  addViews(request);
}

// --- Layout: title; folder and its buttons; rows; name; type and buttons ---

CRect CFileList::nameBox() const {
  const CRect inside = getViewSize().insetBy(kMargin, kMargin);
  const CCoord bottom = inside.bottom - kLine - kGap;
  return {inside.left + kLabelWidth, bottom - kLine, inside.right, bottom};
}

void CFileList::addViews(const platform::FileRequest& request) {
  const CRect inside = getViewSize().insetBy(kMargin, kMargin);
  const CCoord folderTop = inside.top + kTitleHeight;
  const CCoord folderBottom = folderTop + kLine;
  const CCoord upLeft = inside.right - kUpButton;
  addButton({upLeft, folderTop, inside.right, folderBottom}, "Up", &CFileList::goUp);
  addButton({upLeft - kGap - kHomeButton, folderTop, upLeft - kGap, folderBottom}, "Home",
            &CFileList::goHome);

  const CCoord acceptLeft = inside.right - kWideButton;
  const CCoord lastTop = inside.bottom - kLine;
  addButton({acceptLeft, lastTop, inside.right, inside.bottom}, saves(request) ? "Save" : "Open",
            &CFileList::accept)
      .setHighlighted(true);
  addButton({acceptLeft - kGap - kWideButton, lastTop, acceptLeft - kGap, inside.bottom}, "Cancel",
            &CFileList::cancel);

  CCoord rowsBottom = lastTop - kGap;
  if (saves(request)) {
    rowsBottom = nameBox().top - kGap;
    m_name = &addView(
        std::make_unique<CFileName>(nameBox().insetBy(kFieldMargin, 3.0), request.fileName,
                                    [this](const CKeyCode& key) { return onNameKey(key); }));
  }
  CFileRows::Actions actions{[this] { takeSelectedName(); }, [this] { openSelected(); }};
  const CRect rows{inside.left, folderBottom + kGap, inside.right, rowsBottom};
  m_rows = &addView(std::make_unique<CFileRows>(rows, m_model, std::move(actions)));
}

CDialogButton& CFileList::addButton(const CRect& place, std::string_view title,
                                    void (CFileList::*action)()) {
  return addView(
      std::make_unique<CDialogButton>(place, title, [this, action] { (this->*action)(); }));
}

void CFileList::draw(CDrawContext& context) {
  const CRect& box = getViewSize();
  const CRect inside = box.insetBy(kMargin, kMargin);
  context.fillRoundRect(box, 6.0, kDialogBack);
  context.frameRoundRect(box, 6.0, 1.0, kDialogEdge);
  context.setFont(kDialogTitleFont);
  context.setFontColor(kDialogTitle);
  context.drawString(m_title, {inside.left, inside.top, inside.right, inside.top + 16.0});

  context.setFont(kDialogFont);
  context.setFontColor(kDialogText);
  const CCoord folderTop = inside.top + kTitleHeight;
  const CRect folder{inside.left, folderTop, inside.right - kUpButton - kHomeButton - 3.0 * kGap,
                     folderTop + kLine};
  context.drawString(shortenedAtStart(getFrame()->getTypeface(), m_model.directory(), kDialogFont,
                                      static_cast<int>(folder.width())),
                     folder, CHoriTxtAlign::kLeftText);
  if (m_name != nullptr) {
    const CRect field = nameBox();
    context.drawString("Name", {inside.left, field.top, field.left, field.bottom},
                       CHoriTxtAlign::kLeftText);
    context.fillRoundRect(field, 4.0, kDialogSheet);
    context.frameRoundRect(field, 4.0, 1.0, kDialogEdge);
  }
  if (!m_model.types().empty()) {
    const platform::FileType& type = m_model.types().front();
    context.setFontColor(kDialogQuietText);
    context.drawString(type.description + "  *." + type.extension,
                       {inside.left, inside.bottom - kLine, inside.right, inside.bottom},
                       CHoriTxtAlign::kLeftText);
  }
  drawViews(context);
}

// --- Folders ---

void CFileList::startIn(const std::string& directory) {
  if (directory.empty() || !m_model.enter(directory)) m_model.enter(platform::homeDirectory());
  folderChanged();
}

void CFileList::folderChanged() {
  m_rows->modelChanged();
  setDirty();
}

void CFileList::enter(const std::string& directory) {
  if (m_model.enter(directory)) folderChanged();
}

void CFileList::goHome() { enter(platform::homeDirectory()); }

void CFileList::goUp() {
  if (m_model.goUp()) folderChanged();
}

// --- Choosing ---

void CFileList::takeSelectedName() {
  const platform::FolderEntry* entry = m_model.selectedEntry();
  if (m_name != nullptr && entry != nullptr && !entry->isFolder) m_name->setText(entry->name);
}

void CFileList::openSelected() {
  const platform::FolderEntry* entry = m_model.selectedEntry();
  if (entry == nullptr) return;
  const std::string path = m_model.pathOf(entry->name);
  if (entry->isFolder)
    enter(path);
  else
    answer(path);
}

void CFileList::accept() {
  if (m_name == nullptr || m_name->getText().empty()) return openSelected();
  const std::string path = m_model.pathOf(m_name->getText());
  if (m_model.enter(path)) {
    m_name->endTextEdit(true);
    m_name->setText({});
    m_name->beginTextEdit();
    folderChanged();
  } else if (!platform::splitPath(path).name.empty()) {
    answer(path);
  }
}

void CFileList::answer(const std::string& path) {
  const Answer answer = std::exchange(m_answer, nullptr);
  CFrame* frame = getFrame();
  frame->removeModalView();
  if (answer) answer(path);
  // Unless a question followed, which goes on with the keyboard.
  if (frame->getModalView() == nullptr) frame->giveKeyboardFocusBack();
}

// --- Input ---

CMouseEventResult CFileList::onMouseDown(const CPoint& /*where*/, const CButtonState& /*buttons*/) {
  return CMouseEventResult::kHandledDontNeedMoves;
}

// What the field leaves to the dialog while a name is being typed.
bool CFileList::onNameKey(const CKeyCode& key) {
  switch (key.virtualKey) {
  case VirtualKey::kReturn:
  case VirtualKey::kEnter: accept(); return true;
  case VirtualKey::kEscape: cancel(); return true;
  case VirtualKey::kTab: m_name->endTextEdit(true); return true;
  case VirtualKey::kUp:
  case VirtualKey::kDown:
  case VirtualKey::kPageUp:
  case VirtualKey::kPageDown: m_name->endTextEdit(true); return m_rows->onKeyDown(key);
  default: return false;
  }
}

bool CFileList::onKeyDown(const CKeyCode& key) {
  switch (key.virtualKey) {
  case VirtualKey::kReturn:
  case VirtualKey::kEnter:
    if (m_model.selectedEntry() != nullptr)
      openSelected();
    else
      accept();
    break;
  case VirtualKey::kEscape: cancel(); break;
  case VirtualKey::kBack: goUp(); break;
  case VirtualKey::kTab:
    if (m_name != nullptr) m_name->beginTextEdit();
    break;
  default: m_rows->onKeyDown(key); break;
  }
  return true;
}

} // namespace qlx::gui
