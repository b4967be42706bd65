// SPDX-License-Identifier: ISC
#include "brezan/ProgressBar.h"

#include "brezan/System.h"
#include "brezan/Table.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace qlx::tools {

namespace {

constexpr int kWidest = 40;
constexpr int kNarrowest = 5; // less shows nothing
constexpr std::chrono::milliseconds kRedraw{100};

} // namespace

std::string progressLine(double part, double secondsLeft, int columns) {
  part = std::clamp(part, 0.0, 1.0);
  const std::string percent = fixed(100.0 * part, 0);
  std::string words =
      std::string(3 - percent.size(), ' ') + percent + " %  " + fixed(secondsLeft, 0) + " s left";
  // The last column stays free: some terminals begin a new line when it is written.
  const int room = std::min(kWidest, columns - 2 - static_cast<int>(words.size()));
  if (room < kNarrowest) return words.substr(0, static_cast<std::size_t>(std::max(columns - 1, 0)));
  std::string bar;
  for (int i = 0; i < room; ++i) bar += i < static_cast<int>(part * room) ? "█" : "░";
  return bar + ' ' + words;
}

ProgressBar::ProgressBar()
    : m_visible(errorStreamIsTerminal()), m_begin(std::chrono::steady_clock::now()) {}

ProgressBar::~ProgressBar() {
  if (m_visible) std::fputs("\r\033[K", stderr);
}

void ProgressBar::show(double part) {
  const auto now = std::chrono::steady_clock::now();
  if (!m_visible || now - m_drawn < kRedraw) return;
  m_drawn = now;
  const double elapsed = std::chrono::duration<double>(now - m_begin).count();
  const double left = part > 0.0 ? std::max(0.0, elapsed * (1.0 - part) / part) : 0.0;
  std::fprintf(stderr, "\r%s\033[K", progressLine(part, left, errorStreamColumns()).c_str());
  std::fflush(stderr);
}

} // namespace qlx::tools
