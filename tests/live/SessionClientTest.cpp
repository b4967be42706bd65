// SPDX-License-Identifier: ISC
#include "live/SessionClient.h"

#include "tests/live/SessionManager.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>

namespace qlx::test {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 10000ms;

} // namespace

TEST(SessionClientTest, OpensOneSessionAndSavesIt) {
  SessionManager manager;
  live::SessionClient client(manager.url(), "Name", "program", 7);
  EXPECT_EQ(manager.heard(), "/nsm/server/announce Name  program 1 2 7");
  const auto open = [&](const char* path) {
    manager.send("/nsm/client/open", "sss", path, "Session", "name.nAAAA");
    const auto session = client.awaitSession(kPatience);
    return session ? session->path + " " + session->id : "none";
  };
  manager.send("/reply", "ssss", "/nsm/server/announce", "hello", "manager", ":broadcast:");
  EXPECT_EQ(client.awaitSession(kPatience), std::nullopt);
  EXPECT_EQ(open("a/b"), "none");
  EXPECT_EQ(manager.heard(), "/error /nsm/client/open -9 the session's path is not absolute");
  EXPECT_EQ(open("/a/b"), "/a/b name.nAAAA");
  client.tellFailed("no room");
  EXPECT_EQ(manager.heard(), "/error /nsm/client/open -9 no room");
  client.tellOpened();
  EXPECT_EQ(manager.heard(), "/reply /nsm/client/open open");

  int saves = 0;
  const auto idle = [&](const char* path, const char* types, auto... words) {
    manager.send(path, types, words...);
    client.idle([&saves] {
      if (++saves == 2) throw std::runtime_error("disk full");
    });
  };
  idle("/nsm/client/open", "sss", "/c", "Other", "name.nBBBB");
  EXPECT_EQ(manager.heard(), "/error /nsm/client/open -8 one session is open; start again");
  idle("/nsm/client/session_is_loaded", "");
  idle("/nsm/client/save", "i", 1); // no such request
  EXPECT_EQ(saves, 0);
  idle("/nsm/client/save", "");
  EXPECT_EQ(manager.heard(), "/reply /nsm/client/save saved");
  idle("/nsm/client/save", "");
  EXPECT_EQ(manager.heard(), "/error /nsm/client/save -10 disk full");
  EXPECT_EQ(saves, 2);
}

TEST(SessionClientTest, ManagersMayBeAbsentOrRefuse) {
  for (const char* url : {"nowhere", "osc.udp://", "", "osc.udp://127.0.0.1", "osc.udp://:14000/",
                          "osc.udp://127.0.0.1:/", "osc.tcp://127.0.0.1:14000/"})
    EXPECT_THROW(live::SessionClient(url, "Name", "program", 7), std::runtime_error) << url;
  SessionManager manager;
  live::SessionClient client(manager.url(), "Name", "program", 7);
  manager.heard();
  manager.send("/error", "sis", "/nsm/server/announce", -2, "too old");
  EXPECT_THROW(client.awaitSession(kPatience), std::runtime_error);
}

} // namespace qlx::test
