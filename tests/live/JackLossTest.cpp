// SPDX-License-Identifier: ISC
// The player while things come and go: the server, a MIDI device, a session manager.
#include "tests/live/JackServer.h"
#include "tests/live/SessionManager.h"

#include <gtest/gtest.h>
#include <jack/jack.h>

#include <algorithm>

namespace qlx::test {

namespace {

/// A client of the server for the test's own looks and ports.
class Client {
 public:
  explicit Client(const char* name) {
    jack_set_error_function([](const char*) {});
    jack_set_info_function([](const char*) {});
    comes(
        [&] { return (m_client = jack_client_open(name, JackNoStartServer, nullptr)) != nullptr; });
    if (m_client == nullptr) return;
    // A synchronous server waits for a client that has no part in the blocks.
    jack_set_process_callback(
        m_client, [](jack_nframes_t, void*) { return 0; }, nullptr);
    jack_activate(m_client);
  }
  ~Client() {
    if (m_client != nullptr) jack_client_close(m_client);
  }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  bool isThere() const { return m_client != nullptr; }
  jack_port_t* addKeys() const {
    return jack_port_register(m_client, "keys", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
  }
  void removePort(jack_port_t* port) const { jack_port_unregister(m_client, port); }
  bool disconnect(const char* from, const char* to) const {
    return jack_disconnect(m_client, from, to) == 0;
  }
  bool has(const char* port) const { return jack_port_by_name(m_client, port) != nullptr; }
  bool connected(const char* port, const char* other) const {
    const jack_port_t* found = jack_port_by_name(m_client, port);
    return found != nullptr && jack_port_connected_to(found, other) != 0;
  }

 private:
  jack_client_t* m_client = nullptr;
};

class JackLossTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!JackServer::isInstalled()) GTEST_SKIP() << "jackd is not installed";
    server.start(48000, 256);
    const Client probe("Probe");
    if (server.listIsFull()) GTEST_SKIP() << "JACK's list of servers is full of killed ones";
    ASSERT_TRUE(probe.isThere()) << server.words();
  }
  Process play(std::vector<std::string> words) {
    words.insert(words.begin(), {BREZAN, "live", "--plugin", PLUGIN, "--no-window"});
    return Process(std::move(words), output);
  }
  bool said(const char* words) const { return contents(output).find(words) != std::string::npos; }

  JackServer server;
  const std::filesystem::path output = server.folder / "player";
};

} // namespace

TEST_F(JackLossTest, KilledServerIsAwaitedAndJoinedAgain) {
  const std::string state = (server.folder / "state").string();
  Process player = play({"--connect", "--state", state});
  const auto isConnected = [] {
    const Client probe("Probe");
    return comes([&] {
      return probe.connected("QLX Brezan:out_R", "system:playback_2") &&
             probe.connected("system:capture_1", "QLX Brezan:in_L");
    });
  };
  EXPECT_TRUE(isConnected());
  server.kill();
  EXPECT_TRUE(comes([&] { return said("waiting for it to come back"); })) << contents(output);
  server.start(44100, 64);
  EXPECT_TRUE(comes([&] { return said("the audio system is back"); })) << contents(output);
  EXPECT_TRUE(isConnected());
  EXPECT_EQ(player.end(SIGTERM), 0);
  EXPECT_TRUE(said("played ")) << contents(output);
  EXPECT_EQ(std::filesystem::file_size(state), 42289U);
}

TEST_F(JackLossTest, UnpluggedMidiDeviceIsConnectedAgain) {
  constexpr const char* kKeys = "Keyboard:keys";
  constexpr const char* kInput = "QLX Brezan:midi_in";
  const Client keyboard("Keyboard");
  jack_port_t* keys = keyboard.addKeys();
  Process player = play({"--connect", "Keyboard"});
  const auto isConnected = [&] { return keyboard.connected(kKeys, kInput); };
  ASSERT_TRUE(comes(isConnected)) << contents(output);
  for (int i = 1; i < 4; ++i) {
    keyboard.removePort(keys);
    std::this_thread::sleep_for(std::chrono::milliseconds(100 * i));
    keys = keyboard.addKeys();
    EXPECT_TRUE(comes(isConnected)) << i;
  }
  // What the user takes apart stays so, also when the device comes back.
  EXPECT_TRUE(keyboard.disconnect(kKeys, kInput));
  std::this_thread::sleep_for(std::chrono::milliseconds(1000));
  keyboard.removePort(keys);
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  keyboard.addKeys();
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  EXPECT_FALSE(isConnected());
  EXPECT_EQ(player.end(SIGTERM), 0);
}

TEST_F(JackLossTest, SessionManagerOpensSavesAndHearsOfFaults) {
  SessionManager manager;
  ::setenv("NSM_URL", manager.url().c_str(), 1);
  const std::string path = (server.folder / "session" / "brezan.nABCD").string();
  const auto open = [&] {
    EXPECT_EQ(manager.heard().substr(0, 41), "/nsm/server/announce QLX Brezan  brezan 1");
    manager.send("/nsm/client/open", "sss", path.c_str(), "Song", "Rotary nABCD");
    return manager.heard();
  };
  {
    Process player = play({});
    EXPECT_EQ(open(), "/reply /nsm/client/open open") << contents(output);
    EXPECT_TRUE(Client("Probe").has("Rotary nABCD:out_L"));
    EXPECT_FALSE(std::filesystem::exists(path + ".state"));
    manager.send("/nsm/client/save", "");
    EXPECT_EQ(manager.heard(), "/reply /nsm/client/save saved");
    EXPECT_EQ(player.end(SIGTERM), 0);
  }
  EXPECT_EQ(std::filesystem::file_size(path + ".state"), 42289U);
  write(path + ".state", "no state");
  {
    Process player = play({});
    EXPECT_EQ(open().substr(0, 27), "/error /nsm/client/open -9 ");
    EXPECT_EQ(player.end(SIGTERM), 1);
  }
  ::unsetenv("NSM_URL");
}

} // namespace qlx::test
