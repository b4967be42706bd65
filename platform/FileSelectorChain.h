// SPDX-License-Identifier: ISC
#pragma once

#include "platform/FileSelector.h"

#include <memory>
#include <vector>

namespace qlx::platform {

/// Several ways to show a file dialog. The first one that works is used; when a dialog turns out
/// impossible, or is lost without an answer, the next one takes its place.
class FileSelectorChain final : public FileSelector {
 public:
  explicit FileSelectorChain(std::vector<std::unique_ptr<FileSelector>> ways)
      : m_ways(std::move(ways)), m_open(m_ways.size()) {}

  bool open(const FileRequest& request) override;
  std::optional<Paths> poll() override;
  bool hasFailed() const override { return m_failed; }
  void cancel() override;

 private:
  bool isOpen() const { return m_open < m_ways.size(); }
  void openFrom(std::size_t way);

  std::vector<std::unique_ptr<FileSelector>> m_ways;
  std::size_t m_open; ///< number of the way whose dialog is open; behind all others: none
  FileRequest m_request;
  bool m_failed = false;
};

} // namespace qlx::platform
