// SPDX-License-Identifier: ISC
#include "platform/FileSelectorChain.h"

namespace qlx::platform {

void FileSelectorChain::openFrom(std::size_t way) {
  m_open = way;
  while (isOpen() && !m_ways[m_open]->open(m_request)) ++m_open;
}

bool FileSelectorChain::open(const FileRequest& request) {
  if (isOpen()) return false;
  m_request = request;
  m_failed = false;
  openFrom(0);
  return isOpen();
}

std::optional<FileSelector::Paths> FileSelectorChain::poll() {
  if (!isOpen()) return std::nullopt;
  auto answer = m_ways[m_open]->poll();
  if (answer) {
    m_open = m_ways.size();
  } else if (m_ways[m_open]->hasFailed()) {
    openFrom(m_open + 1);
    m_failed = !isOpen();
  }
  return answer;
}

void FileSelectorChain::cancel() {
  if (isOpen()) m_ways[m_open]->cancel();
  m_open = m_ways.size();
  m_failed = false;
}

} // namespace qlx::platform
