// SPDX-License-Identifier: ISC
#include "platform/linux/desktop/SessionBus.h"

#include "platform/linux/files/FileDescriptor.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include <sys/socket.h>
#include <sys/un.h>

namespace qlx::platform {
namespace {

/// A local socket in the file system, or in the system's own list of names.
struct BusAddress {
  std::string name;
  bool isAbstract = false;
};

/// Whether somebody takes connections there. The library's own way of connecting would wait for as
/// long as a stuck bus has its queue full.
bool takesConnections(const BusAddress& address) {
  sockaddr_un where{};
  where.sun_family = AF_UNIX;
  const std::size_t start = address.isAbstract ? 1 : 0;
  if (start + address.name.size() >= sizeof where.sun_path) return false;
  std::memcpy(where.sun_path + start, address.name.data(), address.name.size());
  const std::size_t used =
      offsetof(sockaddr_un, sun_path) + start + address.name.size() + (address.isAbstract ? 0 : 1);
  const FileDescriptor probe(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  return probe && ::connect(probe.get(), reinterpret_cast<const sockaddr*>(&where),
                            static_cast<socklen_t>(used)) == 0;
}

std::string addressText(const BusAddress& address) {
  char* const escaped = dbus_address_escape_value(address.name.c_str());
  if (escaped == nullptr) return {};
  std::string text = address.isAbstract ? "unix:abstract=" : "unix:path=";
  text += escaped;
  dbus_free(escaped);
  return text;
}

std::optional<BusAddress> localAddress(DBusAddressEntry& entry) {
  if (std::string_view(dbus_address_entry_get_method(&entry)) != "unix") return std::nullopt;
  if (const char* path = dbus_address_entry_get_value(&entry, "path")) return BusAddress{path};
  if (const char* name = dbus_address_entry_get_value(&entry, "abstract")) {
    return BusAddress{name, true};
  }
  return std::nullopt;
}

/// The first address of this session's bus that takes connections. Only local ones: others can't be
/// reached without waiting.
std::optional<BusAddress> findBus() {
  const char* const text = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  if (text == nullptr || *text == '\0') {
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr || *folder != '/') return std::nullopt;
    BusAddress usual{std::string(folder) + "/bus"};
    return takesConnections(usual) ? std::optional(std::move(usual)) : std::nullopt;
  }
  DBusAddressEntry** entries = nullptr;
  int count = 0;
  if (dbus_parse_address(text, &entries, &count, nullptr) == FALSE) return std::nullopt;
  std::optional<BusAddress> found;
  for (int i = 0; i < count && !found; ++i) {
    found = localAddress(*entries[i]);
    if (found && !takesConnections(*found)) found.reset();
  }
  dbus_address_entries_free(entries);
  return found;
}

} // namespace

std::unique_ptr<SessionBus> SessionBus::connect() {
  const auto address = findBus();
  if (!address) return nullptr;
  DBusConnection* const connection =
      dbus_connection_open_private(addressText(*address).c_str(), nullptr);
  if (connection == nullptr) return nullptr;
  return std::unique_ptr<SessionBus>(new SessionBus(connection));
}

SessionBus::~SessionBus() {
  dbus_connection_close(m_connection);
  dbus_connection_unref(m_connection);
}

bool SessionBus::isUp() const { return dbus_connection_get_is_connected(m_connection) != FALSE; }

std::uint32_t SessionBus::send(DBusMessage& message) {
  dbus_uint32_t serial = 0;
  if (dbus_connection_send(m_connection, &message, &serial) == FALSE) return 0;
  return serial;
}

std::uint32_t SessionBus::callBus(const char* method, const char* argument) {
  const MessageRef call(
      dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, method));
  if (call == nullptr) return 0;
  if (argument != nullptr) {
    MessageWriter writer(*call);
    writer.text(argument);
    if (!writer.ok()) return 0;
  }
  return send(*call);
}

MessageRef SessionBus::next() {
  dbus_connection_read_write(m_connection, 0);
  return MessageRef(dbus_connection_pop_message(m_connection));
}

bool SessionBus::takesDescriptors() const {
  return dbus_connection_can_send_type(m_connection, DBUS_TYPE_UNIX_FD) != FALSE;
}

} // namespace qlx::platform
