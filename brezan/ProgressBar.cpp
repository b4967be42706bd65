// SPDX-License-Identifier: ISC
#include "brezan/ProgressBar.h"

#include "brezan/System.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace qlx::tools {

namespace {

constexpr int kWidth = 40;
constexpr std::chrono::milliseconds kRedraw{100};

} // namespace

ProgressBar::ProgressBar()
    : m_visible(errorStreamIsTerminal()), m_begin(std::chrono::steady_clock::now()) {}

ProgressBar::~ProgressBar() {
  if (m_visible) std::fputs("\r\033[K", stderr);
}

void ProgressBar::show(double part) {
  const auto now = std::chrono::steady_clock::now();
  if (!m_visible || now - m_drawn < kRedraw) return;
  m_drawn = now;
  part = std::clamp(part, 0.0, 1.0);
  std::string bar;
  for (int i = 0; i < kWidth; ++i) bar += i < static_cast<int>(part * kWidth) ? "█" : "░";
  const double elapsed = std::chrono::duration<double>(now - m_begin).count();
  std::fprintf(stderr, "\r%s %3.0f %%  %.0f s left \033[K", bar.c_str(), 100.0 * part,
               part > 0.0 ? elapsed * (1.0 - part) / part : 0.0);
  std::fflush(stderr);
}

} // namespace qlx::tools
