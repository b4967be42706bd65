// SPDX-License-Identifier: ISC
#pragma once

#include "platform/FileSelector.h"

#include <functional>
#include <memory>

namespace qlx::gui {

class CFrame;
class CView;

/// Asks for a file with the desktop's own dialog or, where there is none that works, with a list
/// inside the window. A name typed for saving gets the extension of the first type unless it ends
/// in it, whatever other dots it holds, and no file is chosen for overwriting that the user hasn't
/// been asked about.
class CFileSelector final : public platform::FileSelector {
 public:
  /// @param desktop asks before overwriting the very file that it answers; null: no dialogs there
  /// @param frame the open window's frame, or null
  CFileSelector(std::unique_ptr<platform::FileSelector> desktop, std::function<CFrame*()> frame)
      : m_desktop(std::move(desktop)), m_frame(std::move(frame)) {}

  bool open(const platform::FileRequest& request) override;
  std::optional<Paths> poll() override;
  bool hasFailed() const override { return m_failed; }
  /// To be called before the frame goes away.
  void cancel() override;

 private:
  enum class Shown { Nothing, DesktopDialog, InWindow };

  bool show();
  bool showList();
  void take(Paths paths, bool askedAlready);
  void askToReplace(const std::string& path);
  void showAgain(const std::string& path);

  std::unique_ptr<platform::FileSelector> m_desktop;
  std::function<CFrame*()> m_frame;
  platform::FileRequest m_request;
  Shown m_shown = Shown::Nothing;
  CView* m_view = nullptr; ///< ours in the window, when there is one
  std::optional<Paths> m_answer;
  bool m_failed = false;
};

} // namespace qlx::gui
