// SPDX-License-Identifier: ISC
#include "brezan/validate/CheckRun.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qlx::validate {

CheckRun::CheckRun(const Settings& settings, const Check& check, std::filesystem::path home,
                   Progress& progress)
    : m_settings(settings), m_home(std::move(home)), m_progress(progress),
      m_random(settings.seed, std::string(check.group) + '.' + check.name) {}

int CheckRun::rounds(int low, int high) const {
  const double part = (m_settings.level - 1) / 9.0;
  return static_cast<int>(std::lround(low * std::pow(static_cast<double>(high) / low, part)));
}

const tools::SharedObject& CheckRun::library() {
  if (m_library == nullptr) {
    entering(CallKind::Entry, 0, 0);
    m_library = std::make_unique<tools::SharedObject>(m_settings.plugin);
  }
  return *m_library;
}

void CheckRun::trying(const std::string& words) {
  const std::size_t length = std::min(words.size(), m_progress.trying.size() - 1);
  std::copy_n(words.begin(), length, m_progress.trying.begin());
  m_progress.trying[length] = '\0';
}

void CheckRun::entering(CallKind kind, std::int32_t opcode, std::int32_t index) {
  m_progress.kind.store(kind, std::memory_order_relaxed);
  m_progress.opcode.store(opcode, std::memory_order_relaxed);
  m_progress.index.store(index, std::memory_order_relaxed);
  m_progress.calls.fetch_add(1, std::memory_order_relaxed);
}

void CheckRun::fail(const std::string& reason) const {
  const std::string what = m_progress.trying.data();
  throw CheckFailed(what.empty() ? reason : what + ": " + reason);
}

} // namespace qlx::validate
