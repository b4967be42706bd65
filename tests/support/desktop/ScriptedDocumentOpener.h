// SPDX-License-Identifier: ISC
#pragma once

#include "platform/DocumentOpener.h"

#include <utility>

namespace qlx::test {
using namespace platform;

/// Opens nothing, remembers what was asked for, and answers what it is told.
class ScriptedDocumentOpener final : public DocumentOpener {
 public:
  bool open(const std::string& path, std::uintptr_t /*ownerWindow*/) override {
    if (m_path) return false;
    m_path = path;
    m_outcome.reset();
    return true;
  }

  std::optional<Outcome> poll() override {
    if (m_outcome) m_path.reset();
    return std::exchange(m_outcome, std::nullopt);
  }

  void cancel() override {
    m_path.reset();
    m_outcome.reset();
  }

  /// The document that is being opened now.
  const std::optional<std::string>& path() const { return m_path; }

  void answer(Outcome outcome) { m_outcome = outcome; }

 private:
  std::optional<std::string> m_path;
  std::optional<Outcome> m_outcome;
};

} // namespace qlx::test
