#pragma once

#include <utility>

#include "platform/FileSelector.h"

namespace qlx::platform {

/// A file dialog without a screen: shows what was asked for, and answers what it is told.
class ScriptedFileSelector final : public FileSelector {
 public:
  bool open(const FileRequest& request) override {
    if (m_request) return false;
    m_request = request;
    m_answer.reset();
    return true;
  }

  std::optional<Paths> poll() override {
    if (m_answer) m_request.reset();
    return std::exchange(m_answer, std::nullopt);
  }

  void cancel() override {
    m_request.reset();
    m_answer.reset();
  }

  /// The dialog that is open now.
  const std::optional<FileRequest>& request() const { return m_request; }

  /// What the user does; empty paths for cancelling.
  void answer(Paths paths) { m_answer = std::move(paths); }

 private:
  std::optional<FileRequest> m_request;
  std::optional<Paths> m_answer;
};

} // namespace qlx::platform
