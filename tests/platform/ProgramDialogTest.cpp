// SPDX-License-Identifier: ISC
#include "tests/support/desktop/DesktopRig.h"

#include <fcntl.h>
#include <unistd.h>

namespace qlx::test {
namespace {

TEST_F(DesktopDialogs, ProgramsAnswerOrGiveWayToTheNext) {
  const struct {
    const char* zenity; ///< null: not there
    const char* kdialog;
    const char* answer;
  } cases[]{
      {"echo /a/b.qlx", nullptr, "/a/b.qlx"},
      {"echo '/a/line\nbreak |.qlx'", nullptr, "/a/line\nbreak |.qlx"},
      {"printf /a/b.qlx", nullptr, "/a/b.qlx"},
      {"exit 1", "echo /k", "-"},
      {nullptr, "echo /k", "/k"},
      {nullptr, "exit 1", "-"},
      {"exit 0", "echo /k", "/k"},
      {"exit 255", "echo /k", "/k"},
      {"kill -9 $$", "echo /k", "/k"},
      {"echo /half; kill -TERM $$", "echo /k", "/k"},
      {"while echo 0123456789012345678901234567890123456789; do :; done", "echo /k", "/k"},
      {nullptr, nullptr, "failed"},
      {"kill -9 $$", "kill -11 $$", "failed"},
      {"(exec 2>&1; /bin/sleep 20) & echo $! > $HERE/pid; echo /a", nullptr, "/a"},
  };
  for (const bool hostReaps : {false, true}) {
    // Hosts that don't care for their children, which are then reaped by the system.
    signal(SIGCHLD, hostReaps ? SIG_IGN : SIG_DFL);
    for (const auto& c : cases) {
      if (c.zenity != nullptr) programs.write("zenity", c.zenity);
      if (c.kdialog != nullptr) programs.write("kdialog", c.kdialog);
      ASSERT_TRUE(open());
      EXPECT_EQ(answer(), c.answer) << (c.zenity == nullptr ? "no zenity" : c.zenity);
      if (const std::string left = programs.read("pid"); !left.empty()) {
        ::kill(std::stoi(left), SIGKILL);
      }
      programs.removeAll();
    }
  }
  signal(SIGCHLD, SIG_DFL);
}

TEST_F(DesktopDialogs, ProgramsAreToldWhatToAsk) {
  constexpr const char* kTellArguments = R"(printf '%s|' "$@" >$HERE/told; echo /a)";
  programs.write("zenity", kTellArguments);
  ASSERT_TRUE(open(Style::Save));
  EXPECT_EQ(answer(), "/a");
  EXPECT_EQ(programs.read("told"),
            "--file-selection|--modal|--title=Load it|--attach=6699|--save|--confirm-overwrite|"
            "--filename=/tmp/old.qlx|--file-filter=QLX Preset | *.qlx *.QLX|");
  ASSERT_TRUE(open(Style::Open));
  EXPECT_EQ(answer(), "/a");
  EXPECT_EQ(programs.read("told"), "--file-selection|--modal|--title=Load it|--attach=6699|"
                                   "--filename=/tmp/|--file-filter=QLX Preset | *.qlx *.QLX|");
  programs.removeAll();
  programs.write("kdialog", kTellArguments);
  ASSERT_TRUE(open(Style::Save));
  EXPECT_EQ(answer(), "/a");
  EXPECT_EQ(programs.read("told"), "--title|Load it|--attach|6699|--getsavefilename|/tmp/old.qlx|"
                                   "QLX Preset (*.qlx *.QLX)|");
}

TEST_F(DesktopDialogs, ProgramsStartClean) {
  // What a host has about it: an open file without a close-on-exec mark, blocked and ignored
  // signals, libraries of its own.
  const int hostFile = ::fcntl(STDERR_FILENO, F_DUPFD, 40);
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  signal(SIGPIPE, SIG_IGN);
  setenv("LD_LIBRARY_PATH", "/host/libraries", 1);
  programs.write("zenity",
                 "echo \"$LD_LIBRARY_PATH\" >$HERE/libraries\n"
                 "for f in 3 4 5 6 7 8 9 40; do [ -e /proc/$$/fd/$f ] && echo $f; done "
                 ">$HERE/files 3>&-\n"
                 "while read -r name value; do case $name in Sig[BI]*) echo $value; esac; done "
                 "</proc/$$/status >$HERE/signals\necho /a");
  ASSERT_TRUE(open());
  EXPECT_EQ(answer(), "/a");
  unsetenv("LD_LIBRARY_PATH");
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  sigaction(SIGPIPE, &pipeAction, nullptr);
  ::close(hostFile);
  EXPECT_EQ(programs.read("libraries"), "\n");
  EXPECT_EQ(programs.read("files"), "");
  const std::string signals = programs.read("signals");
  const std::size_t line = signals.find('\n');
  EXPECT_EQ(std::stoull(signals.substr(0, line), nullptr, 16), 0U) << "blocked";
  const auto ignored = std::stoull(signals.substr(line), nullptr, 16);
  EXPECT_EQ(ignored >> (SIGPIPE - 1) & 1U, 0U);
}

TEST_F(DesktopDialogs, AProgramStillOpenEndsWithItsSelector) {
  for (const bool destroy : {false, true}) {
    programs.removeAll();
    programs.write("zenity", "echo $$ >$HERE/pid; exec /bin/sleep 3600");
    ASSERT_TRUE(open());
    std::string pid;
    ASSERT_TRUE(until([&] {
      EXPECT_FALSE(selector->poll());
      pid = programs.read("pid");
      return pid.ends_with('\n');
    }));
    const pid_t process = std::stoi(pid);
    EXPECT_TRUE(isAlive(process));
    destroy ? selector.reset() : selector->cancel();
    EXPECT_TRUE(until([&] { return !isAlive(process); }));
  }
  selector = desktopFileSelector();
  EXPECT_TRUE(open());
  selector.reset(); // at once, before anything has happened
}

} // namespace
} // namespace qlx::test
