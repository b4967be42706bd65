// SPDX-License-Identifier: ISC
#include "live/SessionClient.h"

#include <gtest/gtest.h>
#include <lo/lo.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace qlx::test {

namespace {

using namespace std::chrono_literals;

/// A session manager on a port of its own: writes down what it hears.
class Manager {
 public:
  Manager() : m_server(lo_server_new(nullptr, nullptr), lo_server_free) {
    lo_server_add_method(
        m_server.get(), nullptr, nullptr,
        [](const char* path, const char* types, lo_arg** words, int count, lo_message message,
           void* data) {
          auto& self = *static_cast<Manager*>(data);
          self.m_heard += path;
          for (int i = 0; i < count; ++i)
            self.m_heard += types[i] == 's' ? std::string(" ") + &words[i]->s
                                            : " " + std::to_string(words[i]->i);
          const lo_address source = lo_message_get_source(message);
          self.m_client.reset(
              lo_address_new(lo_address_get_hostname(source), lo_address_get_port(source)));
          return 0;
        },
        this);
  }
  std::string url() const {
    return std::string("osc.udp://127.0.0.1:") + std::to_string(lo_server_get_port(m_server.get()));
  }
  std::string heard() {
    lo_server_recv_noblock(m_server.get(), 10000);
    return std::exchange(m_heard, {});
  }
  template <typename... Words>
  void send(const char* path, const char* types, Words... words) const {
    lo_send(m_client.get(), path, types, words...);
  }

 private:
  std::unique_ptr<void, decltype(&lo_server_free)> m_server;
  std::string m_heard;
  std::unique_ptr<void, decltype(&lo_address_free)> m_client{nullptr, lo_address_free};
};

constexpr auto kPatience = 10000ms;

} // namespace

TEST(SessionClientTest, OpensOneSessionAndSavesIt) {
  Manager manager;
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
  for (const char* url : {"nowhere", "osc.udp://", ""})
    EXPECT_THROW(live::SessionClient(url, "Name", "program", 7), std::runtime_error) << url;
  Manager manager;
  live::SessionClient client(manager.url(), "Name", "program", 7);
  manager.heard();
  manager.send("/error", "sis", "/nsm/server/announce", -2, "too old");
  EXPECT_THROW(client.awaitSession(kPatience), std::runtime_error);
}

} // namespace qlx::test
