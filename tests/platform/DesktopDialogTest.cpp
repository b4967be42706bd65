#include "platform/DocumentOpener.h"
#include "platform/FileSelector.h"
#include "platform/linux/PortalRequest.h"
#include "tests/platform/FakeDesktop.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <optional>
#include <thread>

namespace qlx::platform::test {
namespace {

using Clock = std::chrono::steady_clock;
using Manner = FakePortal::Manner;
using Outcome = DocumentOpener::Outcome;
using Style = FileRequest::Style;
using std::chrono::milliseconds;

constexpr const char* kZenityAnswers = "echo /from/zenity.qlx";
constexpr milliseconds kNoTimeAtAll{1500}; // on a busy machine
constexpr milliseconds kHang{1500};        // no single call may take so long, either

std::size_t openDescriptors() {
  return static_cast<std::size_t>(
      std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

bool isAlive(pid_t process) { return process > 0 && ::kill(process, 0) == 0; }

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

  void timed(const std::function<void()>& call) {
    const auto start = Clock::now();
    call();
    slowest = std::max(slowest, std::chrono::duration_cast<milliseconds>(Clock::now() - start));
  }

  bool open(Style style = Style::Open) {
    bool opened = false;
    begun = Clock::now();
    timed([&] { opened = selector->open(request(style)); });
    return opened;
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
      timed([&] { paths = selector->poll(); });
      return paths || selector->hasFailed();
    });
    took = std::chrono::duration_cast<milliseconds>(Clock::now() - begun);
    if (!came) return "no answer";
    if (!paths) return "failed";
    return paths->empty() ? "-" : paths->front();
  }

  bool accepted() {
    return until([&] {
      timed([&] { EXPECT_FALSE(selector->poll()); });
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
  milliseconds slowest{0};
};

// --- The portal ---

TEST_F(DesktopDialogs, ThePortalIsToldWhatToAsk) {
  startPortal(Manner::Accepts);
  for (const Style style : {Style::Open, Style::Save}) {
    ASSERT_TRUE(open(style));
    ASSERT_TRUE(until([&] {
      selector->poll();
      return portal->requests().size() == (style == Style::Open ? 1U : 2U);
    }));
    const auto& asked = portal->requests().back();
    EXPECT_EQ(asked.method, style == Style::Open ? "FileChooser.OpenFile" : "FileChooser.SaveFile");
    EXPECT_EQ(asked.parent, "x11:1a2b");
    EXPECT_EQ(asked.title, "Load it");
    auto options = asked.options;
    EXPECT_EQ(options["current_folder"], "/tmp/");
    EXPECT_EQ(options["current_name"], style == Style::Save ? "old.qlx" : "");
    EXPECT_EQ(options["filters"], "QLX Preset 0 *.qlx 0 *.QLX");
    EXPECT_FALSE(open()) << "one dialog at a time";
    portal->respond(0, {"file:///tmp/a.qlx"});
    EXPECT_EQ(answer(), "/tmp/a.qlx");
  }
}

TEST_F(DesktopDialogs, ThePortalsAnswersAreUnderstood) {
  startPortal(std::nullopt);
  const struct {
    Manner manner;
    std::uint32_t code;
    std::vector<std::string> addresses;
    const char* answer;
  } cases[]{
      {Manner::Accepts, 0, {"file:///tmp/a%20b%C3%BC%25.qlx"}, "/tmp/a b\xC3\xBC%.qlx"},
      {Manner::Accepts, 0, {"file://localhost/tmp/a.qlx"}, "/tmp/a.qlx"},
      {Manner::AcceptsOldWay, 0, {"file:///tmp/old.qlx"}, "/tmp/old.qlx"},
      {Manner::Accepts, 1, {}, "-"},
      {Manner::Accepts, 2, {}, "-"},
      {Manner::Accepts, 1, {"file:///tmp/a.qlx"}, "-"},
      {Manner::Accepts, 0, {"sftp://far/away.qlx"}, "-"},
      {Manner::Accepts, 0, {"file:///tmp/a%00b"}, "-"},
      {Manner::Accepts, 0, {"file:///tmp/a%2"}, "-"},
      {Manner::Accepts, 0, {"file://elsewhere/tmp/a.qlx"}, "-"},
  };
  for (const auto& c : cases) {
    portal.emplace(*bus, c.manner);
    ASSERT_TRUE(open());
    ASSERT_TRUE(accepted());
    std::this_thread::sleep_for(milliseconds(20));
    EXPECT_FALSE(selector->poll());
    portal->respond(c.code, c.addresses);
    EXPECT_EQ(answer(), c.answer);
    portal.reset();
  }
}

TEST_F(DesktopDialogs, WithoutAPortalThatAnswersZenityIsNext) {
  programs.write("zenity", kZenityAnswers);
  const int fullSocket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  sockaddr_un where{AF_UNIX, "\0qlx-dialog-test"};
  constexpr socklen_t kLength = sizeof where.sun_family + 16;
  ASSERT_EQ(::bind(fullSocket, reinterpret_cast<sockaddr*>(&where), kLength), 0);
  ASSERT_EQ(::listen(fullSocket, 0), 0);
  const int waiting = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(::connect(waiting, reinterpret_cast<sockaddr*>(&where), kLength), 0);

  const struct {
    const char* what;
    const char* address; ///< null: the private bus
    std::optional<Manner> manner;
    bool frozen;
    bool late;
  } cases[]{
      {"no bus at all", "", {}, false, false},
      {"no such bus", "unix:path=/no/such/bus", {}, false, false},
      {"an address in no known form", "nonsense", {}, false, false},
      {"only a bus that would have to be started", "autolaunch:", {}, false, false},
      {"a bus with its queue full", "unix:abstract=qlx-dialog-test", {}, false, false},
      {"no portal on the bus", nullptr, {}, false, false},
      {"a portal without this dialog", nullptr, Manner::Refuses, false, false},
      {"a portal that never answers", nullptr, Manner::Silent, false, true},
      {"a bus that hangs", nullptr, Manner::Accepts, true, true},
  };
  startPortal(std::nullopt);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    if (c.manner) portal.emplace(*bus, *c.manner);
    setenv("DBUS_SESSION_BUS_ADDRESS", c.address == nullptr ? bus->address().c_str() : c.address,
           1);
    slowest = {};
    if (c.frozen) bus->freeze(true);
    ASSERT_TRUE(open());
    EXPECT_EQ(answer(), "/from/zenity.qlx");
    bus->freeze(false);
    EXPECT_LT(slowest, kHang);
    if (c.late) {
      EXPECT_GE(took, PortalRequest::kPatience);
    }
    EXPECT_LT(took, kNoTimeAtAll + (c.late ? PortalRequest::kPatience : milliseconds(0)));
    portal.reset();
  }
  ::close(waiting);
  ::close(fullSocket);
}

TEST_F(DesktopDialogs, ADialogLostWithItsPortalIsAskedForAgain) {
  programs.write("zenity", kZenityAnswers);
  startPortal(Manner::Accepts);
  ASSERT_TRUE(open());
  ASSERT_TRUE(accepted());
  std::this_thread::sleep_for(milliseconds(20));
  EXPECT_FALSE(selector->poll());
  portal->vanish();
  EXPECT_EQ(answer(), "/from/zenity.qlx");
}

TEST_F(DesktopDialogs, ADismissedPortalDialogIsClosedAndItsLateAnswerLost) {
  startPortal(Manner::Accepts);
  ASSERT_TRUE(open());
  ASSERT_TRUE(accepted());
  timed([&] { selector->cancel(); });
  EXPECT_TRUE(until([&] { return portal->wasClosed(); }));
  portal->respond(0, {"file:///tmp/late.qlx"});
  for (int i = 0; i < 30; ++i) {
    EXPECT_FALSE(selector->poll());
    std::this_thread::sleep_for(milliseconds(1));
  }
  EXPECT_LT(slowest, kHang);
}

// --- Programs ---

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
      slowest = {};
      ASSERT_TRUE(open());
      EXPECT_EQ(answer(), c.answer) << (c.zenity == nullptr ? "no zenity" : c.zenity);
      EXPECT_LT(slowest, kHang);
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
    programs.write("zenity", "echo $$ >$HERE/pid; exec /bin/sleep 60");
    ASSERT_TRUE(open());
    std::string pid;
    ASSERT_TRUE(until([&] {
      EXPECT_FALSE(selector->poll());
      pid = programs.read("pid");
      return pid.ends_with('\n');
    }));
    const pid_t process = std::stoi(pid);
    EXPECT_TRUE(isAlive(process));
    timed([&] { destroy ? selector.reset() : selector->cancel(); });
    EXPECT_TRUE(until([&] { return !isAlive(process); }));
    EXPECT_LT(slowest, kHang);
  }
  selector = desktopFileSelector();
  timed([&] { EXPECT_TRUE(open()); });
  timed([&] { selector.reset(); }); // at once, before anything has happened
  EXPECT_LT(slowest, kHang);
}

// --- Documents ---

TEST_F(DesktopDialogs, DocumentsOpenOrSayWhyNot) {
  const struct {
    std::optional<Manner> manner; ///< none: no portal
    int code;                     ///< the portal's response
    const char* command;          ///< null: not there
    Outcome outcome;
  } cases[]{
      {Manner::Accepts, 0, "exit 4", Outcome::Opened},
      {Manner::Accepts, 1, "exit 4", Outcome::Opened},
      {Manner::Accepts, 2, "exit 0", Outcome::Opened},
      {Manner::Accepts, 2, "exit 3", Outcome::NoProgram},
      {Manner::Refuses, 0, "exit 0", Outcome::Opened},
      {std::nullopt, 0, "exit 0", Outcome::Opened},
      {std::nullopt, 0, "exit 2", Outcome::Failed},
      {std::nullopt, 0, "exit 3", Outcome::NoProgram},
      {std::nullopt, 0, "exit 4", Outcome::Failed},
      {std::nullopt, 0, "kill -9 $$", Outcome::Failed},
      {std::nullopt, 0, nullptr, Outcome::NoProgram},
  };
  qlx::test::TemporaryFolder folder;
  const std::string manual = folder / "the manual.pdf";
  qlx::test::writeBytes(manual, std::vector<std::uint8_t>{'m', 'a', 'n'});
  startPortal(std::nullopt);
  for (const auto& c : cases) {
    if (c.manner) portal.emplace(*bus, *c.manner);
    if (c.command != nullptr)
      programs.write("xdg-open", std::string("echo \"$1\" >$HERE/told; ") + c.command);
    timed([&] { ASSERT_TRUE(opener->open(manual, 0x99)); });
    EXPECT_FALSE(opener->open(manual, 0x99)) << "one at a time";
    std::optional<Outcome> outcome;
    bool responded = false;
    EXPECT_TRUE(until([&] {
      timed([&] { outcome = opener->poll(); });
      if (c.manner == Manner::Accepts && !responded && !portal->requests().empty()) {
        portal->respond(static_cast<std::uint32_t>(c.code));
        responded = true;
      }
      return outcome.has_value();
    }));
    EXPECT_EQ(outcome, c.outcome) << (c.command == nullptr ? "no command" : c.command);
    if (c.manner) {
      EXPECT_EQ(portal->requests().at(0).method, "OpenURI.OpenFile");
      EXPECT_EQ(portal->requests().at(0).parent, "x11:99");
      EXPECT_EQ(portal->requests().at(0).document, "man");
    }
    if (c.command != nullptr && (c.code == 2 || c.manner != Manner::Accepts)) {
      EXPECT_EQ(programs.read("told"), manual + "\n");
    }
    programs.removeAll();
    portal.reset();
  }
  EXPECT_LT(slowest, kHang);
  EXPECT_FALSE(opener->open(folder / "missing.pdf", 0));
  EXPECT_FALSE(opener->open(folder.path(), 0)) << "a folder is no document";
}

TEST_F(DesktopDialogs, AReaderOutlivesWhoAskedForIt) {
  qlx::test::TemporaryFolder folder;
  qlx::test::writeBytes(folder / "manual.pdf", {});
  const auto readerStarts = [&] {
    programs.removeAll();
    programs.write("xdg-open", "echo $$ >$HERE/pid; exec /bin/sleep 60");
    std::string pid;
    EXPECT_TRUE(opener->open(folder / "manual.pdf", 0));
    EXPECT_TRUE(until([&] { return (pid = programs.read("pid")).ends_with('\n'); }));
    return static_cast<pid_t>(std::stoi(pid));
  };
  const pid_t first = readerStarts();
  std::optional<Outcome> outcome;
  EXPECT_TRUE(until([&] { return (outcome = opener->poll()).has_value(); }));
  EXPECT_EQ(outcome, Outcome::Opened) << "a reader that stays is a reader";
  const pid_t second = readerStarts();
  timed([&] { opener.reset(); });
  EXPECT_LT(slowest, kHang);
  EXPECT_TRUE(isAlive(first));
  EXPECT_TRUE(isAlive(second));
  EXPECT_NE(::getpgid(second), ::getpgid(0)) << "nor does it go with the host's terminal";
  ::kill(first, SIGKILL);
  ::kill(second, SIGKILL);
}

} // namespace
} // namespace qlx::platform::test
