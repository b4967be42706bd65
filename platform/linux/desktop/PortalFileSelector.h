// SPDX-License-Identifier: ISC
#pragma once

#include "platform/FileSelector.h"
#include "platform/linux/desktop/PortalRequest.h"

#include <memory>

namespace qlx::platform {

/// The desktop's own file dialog, asked for over its message bus.
class PortalFileSelector final : public FileSelector {
 public:
  bool open(const FileRequest& request) override;
  std::optional<Paths> poll() override;
  bool hasFailed() const override { return m_failed; }
  void cancel() override;

 private:
  std::unique_ptr<PortalRequest> m_request;
  bool m_failed = false;
};

} // namespace qlx::platform
