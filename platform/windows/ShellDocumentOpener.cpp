// SPDX-License-Identifier: ISC
#include "platform/DocumentOpener.h"

#include "platform/windows/Utf16.h"
#include "platform/windows/WorkerTask.h"

#include <atomic>
#include <shellapi.h>
#include <utility>

namespace qlx::platform {
namespace {

constexpr INT_PTR kUnknown = -1;
constexpr INT_PTR kLargestError = 32;

/// The shell's "open", which may take its time, on a thread of its own.
class ShellDocumentOpener final : public DocumentOpener {
 public:
  bool open(const std::string& path, std::uintptr_t ownerWindow) override {
    if (m_answer != nullptr) return false;
    auto answer = std::make_shared<std::atomic<INT_PTR>>(kUnknown);
    const auto work = [answer, path = toUtf16(path), ownerWindow] {
      const HINSTANCE result = ShellExecuteW(reinterpret_cast<HWND>(ownerWindow), L"open",
                                             path.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
      *answer = reinterpret_cast<INT_PTR>(result);
    };
    if (!startWork(work)) return false;
    m_answer = std::move(answer);
    return true;
  }

  std::optional<Outcome> poll() override {
    if (m_answer == nullptr || *m_answer == kUnknown) return std::nullopt;
    const INT_PTR result = *std::exchange(m_answer, nullptr);
    if (result == SE_ERR_NOASSOC) return Outcome::NoProgram;
    return result > kLargestError ? Outcome::Opened : Outcome::Failed;
  }

  void cancel() override { m_answer = nullptr; }

 private:
  std::shared_ptr<std::atomic<INT_PTR>> m_answer; ///< shared with the thread that asks
};

} // namespace

std::unique_ptr<DocumentOpener> desktopDocumentOpener() {
  return std::make_unique<ShellDocumentOpener>();
}

} // namespace qlx::platform
