// SPDX-License-Identifier: ISC
#pragma once

#include "platform/linux/desktop/DBusMessages.h"

#include <cstdint>
#include <memory>
#include <string>

namespace qlx::platform {

/// A connection of its own to the desktop's message bus that never waits: what is sent goes out,
/// and what arrives comes in, when next() is called. A bus that hangs just stays silent. For one
/// thread.
class SessionBus {
 public:
  /// Null when this session has no bus, or one that takes nobody in.
  static std::unique_ptr<SessionBus> connect();

  ~SessionBus();
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;

  /// False once the bus has gone.
  bool isUp() const;

  /// The message's number, by which its answer is known; 0 when it can't be sent.
  std::uint32_t send(DBusMessage& message);

  /// The same for a call to the bus itself with one text argument, or none when it is null.
  std::uint32_t callBus(const char* method, const char* argument);

  /// What has arrived, one by one; null when there is nothing now.
  MessageRef next();

  /// Whether open files can be handed over; known once anything has arrived.
  bool takesDescriptors() const;

 private:
  explicit SessionBus(DBusConnection* connection) : m_connection(connection) {}

  DBusConnection* m_connection;
};

} // namespace qlx::platform
