// SPDX-License-Identifier: ISC
#pragma once

#include <lo/lo_types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

namespace qlx::live {

/// The player's end of the New Session Manager's protocol (version 1.2: OSC messages over a network
/// port of this machine). The manager opens one session, and has it saved from time to time; it
/// ends programs by SIGTERM. One thread.
class SessionClient {
 public:
  struct Session {
    std::string path; ///< begins the names of all files of this program in the session; absolute
    std::string id;   ///< what the program is to be called in the audio system
  };

  /// Announces the program to the manager at `url`, as $NSM_URL gives it. `executable` is what the
  /// manager starts to have it again, `processId` what it ends. Throws std::runtime_error.
  SessionClient(const std::string& url, const std::string& name, const std::string& executable,
                int processId);
  ~SessionClient();
  SessionClient(const SessionClient&) = delete;
  SessionClient& operator=(const SessionClient&) = delete;

  /// Waits for the session as long as `patience`; nothing when it has not come. Throws
  /// std::runtime_error when the manager refuses the program.
  std::optional<Session> awaitSession(std::chrono::milliseconds patience);
  /// Tells the manager how it went; at once after `awaitSession`.
  void tellOpened();
  void tellFailed(const std::string& words);
  /// Takes what has come, without waiting. `save` throws std::runtime_error, which the manager is
  /// told.
  void idle(const std::function<void()>& save);

 private:
  struct FreeServer {
    void operator()(lo_server server) const;
  };
  struct FreeAddress {
    void operator()(lo_address address) const;
  };

  void addMethod(const char* path, const char* types, lo_method_handler handler);
  void reply(const char* request, const char* words);
  void replyError(const char* request, int code, const char* words);
  void opens(const char* path, const char* id);

  std::unique_ptr<std::remove_pointer_t<lo_address>, FreeAddress> m_manager;
  std::unique_ptr<std::remove_pointer_t<lo_server>, FreeServer> m_server;
  std::optional<Session> m_session; ///< from the manager's request on
  std::string m_refusal;
  bool m_saveWanted = false;
};

} // namespace qlx::live
