// SPDX-License-Identifier: ISC
#pragma once

#include "platform/DocumentOpener.h"
#include "platform/linux/desktop/DetachedCommand.h"
#include "platform/linux/desktop/PortalRequest.h"

#include <chrono>
#include <memory>

namespace qlx::platform {

/// Asks the desktop's portal to open the document and, where that can't, the desktop's own command.
class DesktopDocumentOpener final : public DocumentOpener {
 public:
  bool open(const std::string& path, std::uintptr_t ownerWindow) override;
  std::optional<Outcome> poll() override;
  void cancel() override;

 private:
  void startCommand();
  std::optional<Outcome> pollCommand();

  bool m_underWay = false;
  std::string m_path;
  std::unique_ptr<PortalRequest> m_request;
  std::optional<DetachedCommand> m_command;
  std::chrono::steady_clock::time_point m_commandStart;
};

} // namespace qlx::platform
