// SPDX-License-Identifier: ISC
#include "platform/FileSelector.h"

#include "platform/windows/Utf16.h"
#include "platform/windows/WorkerTask.h"

#include <atomic>
#include <cderr.h>
#include <commdlg.h>
#include <utility>

namespace qlx::platform {
namespace {

constexpr UINT kLookEveryMilliseconds = 50;
constexpr std::size_t kLongestPath = 32768; // of Windows, in UTF-16 units

/// What the dialog's thread and the one that asked share.
struct Dialog {
  FileRequest request;
  std::atomic<bool> dismissed{false};
  std::atomic<bool> done{false};
  bool failed = false;        ///< good once done
  FileSelector::Paths chosen; ///< good once done
};

/// While it lives, closes the calling thread's dialogs as soon as somebody has dismissed them. The
/// dialog may appear at any time after that was asked for, so it is looked for again and again.
class DismissalWatch {
 public:
  explicit DismissalWatch(const Dialog& dialog)
      : m_window(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                 ownModule(), nullptr)) {
    SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&dialog));
    SetTimer(m_window, 1, kLookEveryMilliseconds, look);
  }
  ~DismissalWatch() { DestroyWindow(m_window); }
  DismissalWatch(const DismissalWatch&) = delete;
  DismissalWatch& operator=(const DismissalWatch&) = delete;

 private:
  static void CALLBACK look(HWND window, UINT, UINT_PTR, DWORD) {
    const auto* dialog = reinterpret_cast<const Dialog*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (dialog == nullptr || !dialog->dismissed) return;
    // The question whether to replace a file knows "no" alone.
    const auto press = [](HWND shown, LPARAM) -> BOOL {
      PostMessageW(shown, WM_COMMAND, IDNO, 0);
      PostMessageW(shown, WM_COMMAND, IDCANCEL, 0);
      return TRUE;
    };
    EnumThreadWindows(GetCurrentThreadId(), press, 0);
  }

  HWND m_window;
};

void show(Dialog& dialog) {
  const FileRequest& request = dialog.request;
  std::wstring filter;
  for (const FileType& type : request.types)
    filter += toUtf16(type.description) + L'\0' + toUtf16("*." + type.extension) + L'\0';
  const std::wstring title = toUtf16(request.title);
  const std::wstring directory = toUtf16(request.directory);
  const std::wstring extension =
      request.types.empty() ? std::wstring() : toUtf16(request.types.front().extension);
  std::wstring path = toUtf16(request.fileName);
  path.resize(kLongestPath);
  const bool save = request.style == FileRequest::Style::Save;

  OPENFILENAMEW with{};
  with.lStructSize = sizeof with;
  with.hwndOwner = reinterpret_cast<HWND>(request.ownerWindow);
  with.lpstrFilter = filter.empty() ? nullptr : filter.c_str();
  with.lpstrFile = path.data();
  with.nMaxFile = static_cast<DWORD>(path.size());
  with.lpstrInitialDir = directory.empty() ? nullptr : directory.c_str();
  with.lpstrTitle = title.c_str();
  with.lpstrDefExt = extension.empty() ? nullptr : extension.c_str();
  with.Flags = OFN_EXPLORER | OFN_NOCHANGEDIR | OFN_HIDEREADONLY | OFN_PATHMUSTEXIST |
               (save ? OFN_OVERWRITEPROMPT : OFN_FILEMUSTEXIST);
  const auto ask = [&] { return (save ? GetSaveFileNameW(&with) : GetOpenFileNameW(&with)) != 0; };

  const DismissalWatch watch(dialog);
  bool chosen = !dialog.dismissed && ask();
  if (!chosen && CommDlgExtendedError() == FNERR_INVALIDFILENAME) {
    path.front() = L'\0'; // the proposed name is none to this system
    chosen = ask();
  }
  if (chosen)
    dialog.chosen = {toUtf8(path.c_str())};
  else
    dialog.failed = CommDlgExtendedError() != 0;
}

/// The system's common dialogs, on a thread of their own.
class CommonFileSelector final : public FileSelector {
 public:
  ~CommonFileSelector() override { CommonFileSelector::cancel(); }

  bool open(const FileRequest& request) override {
    if (m_dialog != nullptr) return false;
    m_failed = false;
    auto dialog = std::make_shared<Dialog>();
    dialog->request = request;
    const auto work = [dialog] {
      show(*dialog);
      dialog->done.store(true, std::memory_order_release);
    };
    if (!startWork(work)) return false;
    m_dialog = std::move(dialog);
    return true;
  }

  std::optional<Paths> poll() override {
    if (m_dialog == nullptr || !m_dialog->done.load(std::memory_order_acquire)) return std::nullopt;
    const auto dialog = std::exchange(m_dialog, nullptr);
    m_failed = dialog->failed;
    if (m_failed) return std::nullopt;
    return dialog->chosen;
  }

  bool hasFailed() const override { return m_failed; }

  // The dialog goes in its own time.
  void cancel() override {
    if (m_dialog != nullptr) m_dialog->dismissed = true;
    m_dialog = nullptr;
    m_failed = false;
  }

 private:
  std::shared_ptr<Dialog> m_dialog;
  bool m_failed = false;
};

} // namespace

std::unique_ptr<FileSelector> desktopFileSelector() {
  return std::make_unique<CommonFileSelector>();
}

} // namespace qlx::platform
