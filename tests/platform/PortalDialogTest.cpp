// SPDX-License-Identifier: ISC
#include "platform/linux/desktop/PortalRequest.h"
#include "tests/support/desktop/DesktopRig.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace qlx::test {
namespace {

constexpr const char* kZenityAnswers = "echo /from/zenity.qlx";

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
    if (c.frozen) bus->freeze(true);
    ASSERT_TRUE(open());
    EXPECT_EQ(answer(), "/from/zenity.qlx");
    bus->freeze(false);
    if (c.late) {
      EXPECT_GE(took, PortalRequest::kPatience);
      EXPECT_GT(polls, 10) << "no single call waits";
    }
    portal.reset();
  }
  ::close(waiting);
  ::close(fullSocket);
}

TEST_F(DesktopDialogs, ADialogLostWithItsPortalOrBusIsAskedForAgain) {
  programs.write("zenity", kZenityAnswers);
  for (const bool wholeBus : {false, true}) {
    startPortal(Manner::Accepts);
    ASSERT_TRUE(open());
    ASSERT_TRUE(accepted());
    std::this_thread::sleep_for(milliseconds(20));
    EXPECT_FALSE(selector->poll());
    wholeBus ? bus.reset() : portal->vanish();
    EXPECT_EQ(answer(), "/from/zenity.qlx");
    portal.reset();
  }
}

TEST_F(DesktopDialogs, ADismissedPortalDialogIsClosedAndItsLateAnswerLost) {
  startPortal(Manner::Accepts);
  ASSERT_TRUE(open());
  ASSERT_TRUE(accepted());
  selector->cancel();
  EXPECT_TRUE(until([&] { return portal->wasClosed(); }));
  portal->respond(0, {"file:///tmp/late.qlx"});
  for (int i = 0; i < 30; ++i) {
    EXPECT_FALSE(selector->poll());
    std::this_thread::sleep_for(milliseconds(1));
  }
}

} // namespace
} // namespace qlx::test
