// SPDX-License-Identifier: ISC
#pragma once

#include "platform/linux/desktop/SessionBus.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qlx::platform {

/// One request to the desktop's portal, which shows something to the user and answers when the user
/// has done with it. Polled; never waits. For one thread. Destroying it takes the request back.
class PortalRequest {
 public:
  /// For the portal to say that it has taken the request on.
  static constexpr std::chrono::milliseconds kPatience{2000};

  enum class State : std::uint8_t {
    Asking,   ///< nobody has taken it on yet
    Accepted, ///< shown to the user, who may take any time
    Answered, ///< see answer() and paths()
    Failed,   ///< no portal, no such request, no word in time, or the portal went away
  };
  enum class Answer : std::uint32_t { Success = 0, Cancelled = 1, Other = 2 };

  struct Call {
    const char* interface; ///< without the common beginning of the portal's interfaces
    const char* method;
    bool handsOverFile = false;
    /// Writes everything before the options, and the options but for the handle's.
    std::function<void(MessageWriter&)> writeArguments;
    std::function<void(MessageWriter&)> writeOptions;
  };

  /// Null when there is no bus to ask on.
  static std::unique_ptr<PortalRequest> start(Call call);

  ~PortalRequest();
  PortalRequest(const PortalRequest&) = delete;
  PortalRequest& operator=(const PortalRequest&) = delete;

  State poll();
  Answer answer() const { return m_answer; }
  /// Of the files that the user chose, as bytes that the system opens files by.
  const std::vector<std::string>& paths() const { return m_paths; }

 private:
  PortalRequest(Call call, std::unique_ptr<SessionBus> bus);
  void handle(DBusMessage& message);
  void handleReply(DBusMessage& reply);
  void handleSignal(DBusMessage& signal);
  bool sendCall(const std::string& ownName);
  bool listenTo(const std::string& handle);
  void takeAnswer(DBusMessage& response);

  Call m_call;
  std::unique_ptr<SessionBus> m_bus;
  std::chrono::steady_clock::time_point m_deadline;
  State m_state = State::Asking;
  std::uint32_t m_helloSerial = 0;
  std::uint32_t m_callSerial = 0;
  std::string m_handle; ///< the request's object, from when the call is sent
  Answer m_answer = Answer::Other;
  std::vector<std::string> m_paths;
};

/// How portals are told which window to stay in front of; empty for none.
std::string portalWindowName(std::uintptr_t window);

/// The path of a file's address; empty when it is not a file's.
std::string pathOfFileAddress(const std::string& address);

} // namespace qlx::platform
