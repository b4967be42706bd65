// SPDX-License-Identifier: ISC
#include "platform/FileSelectorChain.h"
#include "platform/MessageBox.h"
#include "platform/linux/desktop/DesktopDocumentOpener.h"
#include "platform/linux/desktop/PortalFileSelector.h"
#include "platform/linux/desktop/ProcessFileSelector.h"

namespace qlx::platform {

std::unique_ptr<FileSelector> desktopFileSelector() {
  std::vector<std::unique_ptr<FileSelector>> ways;
  ways.push_back(std::make_unique<PortalFileSelector>());
  ways.push_back(std::make_unique<ProcessFileSelector>(zenityCommandLine));
  ways.push_back(std::make_unique<ProcessFileSelector>(kdialogCommandLine));
  return std::make_unique<FileSelectorChain>(std::move(ways));
}

std::unique_ptr<DocumentOpener> desktopDocumentOpener() {
  return std::make_unique<DesktopDocumentOpener>();
}

bool showMessageBox(std::uintptr_t, std::string_view, std::string_view) { return false; }

} // namespace qlx::platform
