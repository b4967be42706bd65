// SPDX-License-Identifier: ISC
#pragma once

#include "platform/DocumentOpener.h"
#include "platform/FileSelector.h"
#include "tests/support/ProcessResources.h"
#include "tests/support/desktop/FakeDesktop.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <optional>
#include <thread>

namespace qlx::test {

using Clock = std::chrono::steady_clock;
using Manner = FakePortal::Manner;
using Outcome = DocumentOpener::Outcome;
using Style = FileRequest::Style;
using std::chrono::milliseconds;

inline bool isAlive(pid_t process) { return process > 0 && ::kill(process, 0) == 0; }

/// A desktop of scripts and, when asked for, a bus with a portal. Every test leaves as many
/// descriptors as it found, no child but the bus, and signals as they were.
class DesktopDialogs : public testing::Test {
 protected:
  DesktopDialogs() {
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    unsetenv("XDG_RUNTIME_DIR");
    signal(SIGPIPE, SIG_DFL);
    sigaction(SIGPIPE, nullptr, &pipeAction);
    descriptors = openDescriptors();
  }
  ~DesktopDialogs() override {
    selector.reset();
    opener.reset();
    portal.reset();
    bus.reset();
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    struct sigaction now {};
    sigaction(SIGPIPE, nullptr, &now);
    EXPECT_EQ(now.sa_handler, pipeAction.sa_handler);
  }

  void startPortal(std::optional<Manner> manner) {
    bus.emplace();
    ASSERT_TRUE(bus->isRunning()) << "dbus-daemon is needed";
    if (manner) portal.emplace(*bus, *manner);
  }

  FileRequest request(Style style) const {
    return {style, "Load it", "/tmp/", "old.qlx", {{"QLX Preset", "qlx"}}, 0x1A2B};
  }

  bool open(Style style = Style::Open) {
    begun = Clock::now();
    polls = 0;
    return selector->open(request(style));
  }

  /// Lets the desktop go on until something is so, for some seconds at most.
  bool until(const std::function<bool()>& isSo) {
    const auto end = Clock::now() + std::chrono::seconds(8);
    while (!isSo()) {
      if (Clock::now() > end) return false;
      if (portal) portal->pump();
      std::this_thread::sleep_for(milliseconds(1));
    }
    return true;
  }

  /// The path chosen; "-" when the user cancelled, "failed" when there was no dialog.
  std::string answer() {
    std::optional<FileSelector::Paths> paths;
    const bool came = until([&] {
      ++polls;
      paths = selector->poll();
      return paths || selector->hasFailed();
    });
    took = std::chrono::duration_cast<milliseconds>(Clock::now() - begun);
    if (!came) return "no answer";
    if (!paths) return "failed";
    return paths->empty() ? "-" : paths->front();
  }

  bool accepted() {
    return until([&] {
      EXPECT_FALSE(selector->poll());
      return !portal->requests().empty();
    });
  }

  struct sigaction pipeAction {};
  std::size_t descriptors = 0;
  FakePrograms programs;
  std::optional<PrivateBus> bus;
  std::optional<FakePortal> portal;
  std::unique_ptr<FileSelector> selector = desktopFileSelector();
  std::unique_ptr<DocumentOpener> opener = desktopDocumentOpener();
  Clock::time_point begun;
  milliseconds took{0};
  int polls = 0; ///< until the answer
};

} // namespace qlx::test
