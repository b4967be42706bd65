// SPDX-License-Identifier: ISC
#pragma once

#include "platform/linux/desktop/DBusMessages.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qlx::test {
using namespace platform;

/// A message bus of its own that starts no services. While it lives, DBUS_SESSION_BUS_ADDRESS names
/// it.
class PrivateBus {
 public:
  PrivateBus();
  ~PrivateBus();

  bool isRunning() const { return !m_address.empty(); }
  const std::string& address() const { return m_address; }
  /// Stops it in its tracks, and lets it go on.
  void freeze(bool frozen) const;

 private:
  TemporaryFolder m_folder;
  std::string m_address;
  std::optional<ChildProcess> m_daemon;
};

/// Takes the desktop portal's name on the bus and plays its part, a step at each pump().
class FakePortal {
 public:
  enum class Manner {
    Accepts,       ///< takes requests on and waits for respond()
    AcceptsOldWay, ///< the same, but puts the request where nobody expects it
    Refuses,       ///< knows no such request
    Silent,
  };
  struct Request {
    std::string method; ///< "FileChooser.OpenFile" and so on
    std::string parent;
    std::string title;
    /// Options as text: texts and folders as they are, patterns of filters with a space each.
    std::map<std::string, std::string> options;
    std::string document; ///< what a file that was handed over holds
  };

  FakePortal(const PrivateBus& bus, Manner manner);
  ~FakePortal();
  FakePortal(const FakePortal&) = delete;
  FakePortal& operator=(const FakePortal&) = delete;

  void pump();
  /// Ends the request that was taken on.
  void respond(std::uint32_t code, const std::vector<std::string>& addresses = {});
  /// Leaves the bus.
  void vanish();

  const std::vector<Request>& requests() const { return m_requests; }
  bool wasClosed() const { return m_closed; }

 private:
  void take(DBusMessage& call);
  void reply(DBusMessage& call);

  DBusConnection* m_connection;
  Manner m_manner;
  std::string m_handle;
  std::vector<Request> m_requests;
  bool m_closed = false;
};

/// Programs of a desktop, written as shell scripts into a folder that is all of PATH while this
/// lives.
class FakePrograms {
 public:
  FakePrograms();
  ~FakePrograms();
  FakePrograms(const FakePrograms&) = delete;
  FakePrograms& operator=(const FakePrograms&) = delete;

  void write(const std::string& name, const std::string& script) const;
  void removeAll() const;
  /// Where a file of this name is in the folder.
  std::string path(const std::string& name) const { return m_folder / name; }
  /// A file that scripts, which find the folder as $HERE, have written; empty before.
  std::string read(const std::string& name) const;

 private:
  TemporaryFolder m_folder;
  std::string m_path;
};

} // namespace qlx::test
