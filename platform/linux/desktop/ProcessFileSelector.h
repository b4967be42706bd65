// SPDX-License-Identifier: ISC
#pragma once

#include "platform/FileSelector.h"
#include "platform/linux/desktop/DetachedCommand.h"

namespace qlx::platform {

/// A file dialog shown by a program of the desktop that writes the chosen path to its output.
class ProcessFileSelector final : public FileSelector {
 public:
  /// Program and arguments that show a dialog. The program ends with 0 for a choice, 1 for none.
  using CommandLine = std::vector<std::string> (*)(const FileRequest& request);

  explicit ProcessFileSelector(CommandLine commandLine) : m_commandLine(commandLine) {}
  ~ProcessFileSelector() override { ProcessFileSelector::cancel(); }
  ProcessFileSelector(const ProcessFileSelector&) = delete;
  ProcessFileSelector& operator=(const ProcessFileSelector&) = delete;

  bool open(const FileRequest& request) override;
  std::optional<Paths> poll() override;
  bool hasFailed() const override { return m_failed; }
  void cancel() override;

 private:
  CommandLine m_commandLine;
  std::optional<DetachedCommand> m_dialog;
  bool m_failed = false;
};

/// The dialogs of GTK and of KDE desktops.
std::vector<std::string> zenityCommandLine(const FileRequest& request);
std::vector<std::string> kdialogCommandLine(const FileRequest& request);

} // namespace qlx::platform
