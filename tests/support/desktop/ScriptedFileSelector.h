// SPDX-License-Identifier: ISC
#pragma once

#include <utility>

#include "platform/FileSelector.h"

namespace qlx::test {
using namespace platform;

/// A file dialog without a screen: shows what was asked for, and answers what it is told.
class ScriptedFileSelector final : public FileSelector {
 public:
  bool open(const FileRequest& request) override {
    if (m_request) return false;
    m_request = request;
    m_answer.reset();
    m_failed = false;
    return true;
  }

  std::optional<Paths> poll() override {
    if (m_answer) m_request.reset();
    return std::exchange(m_answer, std::nullopt);
  }

  bool hasFailed() const override { return m_failed; }

  void cancel() override {
    m_request.reset();
    m_answer.reset();
  }

  /// The dialog that is open now.
  const std::optional<FileRequest>& request() const { return m_request; }

  /// What the user does; empty paths for cancelling.
  void answer(Paths paths) { m_answer = std::move(paths); }

  /// The dialog goes away without an answer.
  void fail() {
    cancel();
    m_failed = true;
  }

 private:
  std::optional<FileRequest> m_request;
  std::optional<Paths> m_answer;
  bool m_failed = false;
};

} // namespace qlx::test
