// SPDX-License-Identifier: ISC
#include "gui/dialogs/CFileSelector.h"

#include "gui/CFrame.h"
#include "gui/dialogs/CFileList.h"
#include "gui/dialogs/CMessageBox.h"
#include "gui/dialogs/DialogLook.h"
#include "gui/dialogs/FileListModel.h"
#include "gui/drawing/ShortenedText.h"
#include "platform/Files.h"

#include <utility>

namespace qlx::gui {

namespace {

bool saves(const platform::FileRequest& request) {
  return request.style == platform::FileRequest::Style::Save;
}

} // namespace

bool CFileSelector::open(const platform::FileRequest& request) {
  if (m_shown != Shown::Nothing) return false;
  m_request = request;
  m_answer.reset();
  m_failed = false;
  return show();
}

bool CFileSelector::show() {
  if (m_desktop != nullptr && m_desktop->open(m_request)) {
    m_shown = Shown::DesktopDialog;
    return true;
  }
  return showList();
}

bool CFileSelector::showList() {
  CFrame* const frame = m_frame();
  const auto chosen = [this](const std::string& path) {
    m_view = nullptr;
    take(path.empty() ? Paths() : Paths{path}, false);
  };
  const bool shown = frame != nullptr && CFileList::show(*frame, m_request, chosen);
  m_shown = shown ? Shown::InWindow : Shown::Nothing;
  m_view = shown ? frame->getModalView() : nullptr;
  return shown;
}

std::optional<platform::FileSelector::Paths> CFileSelector::poll() {
  if (m_shown == Shown::DesktopDialog) {
    if (auto paths = m_desktop->poll()) {
      m_shown = Shown::Nothing;
      take(std::move(*paths), true);
    } else if (m_desktop->hasFailed()) {
      m_failed = !showList();
    }
  }
  return std::exchange(m_answer, std::nullopt);
}

void CFileSelector::take(Paths paths, bool askedAlready) {
  m_shown = Shown::Nothing;
  if (saves(m_request) && paths.size() == 1) {
    std::string& path = paths.front();
    const std::string name = platform::splitPath(path).name;
    const bool complete = name.empty() || m_request.types.empty() ||
                          hasExtension(name, m_request.types.front().extension);
    if (!complete) path += "." + m_request.types.front().extension;
    if ((!askedAlready || !complete) && platform::fileExists(path)) return askToReplace(path);
  }
  m_answer = std::move(paths);
}

void CFileSelector::askToReplace(const std::string& path) {
  CFrame* const frame = m_frame();
  m_answer = Paths(); // unless the user says something else
  if (frame == nullptr) return;
  constexpr int kReplace = 0;
  constexpr int kKeep = 1;
  constexpr int kRoomForName = 200;
  const std::string name = shortenedAtEnd(frame->getTypeface(), platform::splitPath(path).name,
                                          kDialogFont, kRoomForName);
  const auto answered = [this, frame, path](int button) {
    m_view = nullptr;
    m_shown = Shown::Nothing;
    if (button != kReplace) return showAgain(path);
    m_answer = Paths{path};
    frame->giveKeyboardFocusBack();
  };
  if (!CMessageBox::show(*frame, m_request.title, name + " exists already. Replace it?",
                         {"Replace", "Cancel"}, answered)) {
    return;
  }
  frame->takeKeyboardFocus();
  m_answer.reset();
  m_shown = Shown::InWindow;
  m_view = frame->getModalView();
  static_cast<CMessageBox*>(m_view)->highlight(kKeep);
}

void CFileSelector::showAgain(const std::string& path) {
  auto [directory, name] = platform::splitPath(path);
  m_request.directory = std::move(directory);
  m_request.fileName = std::move(name);
  if (!show()) m_answer = Paths();
}

void CFileSelector::cancel() {
  if (m_shown == Shown::DesktopDialog) m_desktop->cancel();
  CFrame* const frame = m_view == nullptr ? nullptr : m_frame();
  if (frame != nullptr && frame->getModalView() == m_view) frame->removeModalView();
  m_view = nullptr;
  m_shown = Shown::Nothing;
  m_answer.reset();
  m_failed = false;
}

} // namespace qlx::gui
