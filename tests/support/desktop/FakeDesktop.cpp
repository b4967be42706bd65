// SPDX-License-Identifier: ISC
#include "tests/support/desktop/FakeDesktop.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace qlx::test {
namespace {

constexpr const char* kPortalName = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPrefix = "org.freedesktop.portal.";
constexpr const char* kRequest = "org.freedesktop.portal.Request";

constexpr const char* kBusSettings =
    R"(<busconfig><type>session</type><listen>unix:dir=/tmp</listen>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy></busconfig>)";

/// Everything in a value, in its order: texts with a space between, bytes as one text.
std::string flattened(DBusMessageIter value) {
  const int type = dbus_message_iter_get_arg_type(&value);
  if (type == DBUS_TYPE_STRING) {
    const char* text = nullptr;
    dbus_message_iter_get_basic(&value, &text);
    return text;
  }
  if (type == DBUS_TYPE_BOOLEAN || type == DBUS_TYPE_UINT32) {
    std::uint32_t number = 0;
    dbus_message_iter_get_basic(&value, &number);
    return std::to_string(number);
  }
  if (type == DBUS_TYPE_INVALID || dbus_type_is_container(type) == FALSE) return {};
  if (type == DBUS_TYPE_ARRAY && dbus_message_iter_get_element_type(&value) == DBUS_TYPE_BYTE) {
    DBusMessageIter bytes;
    const char* data = nullptr;
    int count = 0;
    dbus_message_iter_recurse(&value, &bytes);
    dbus_message_iter_get_fixed_array(&bytes, &data, &count);
    const std::string text(data, static_cast<std::size_t>(count));
    return text.ends_with('\0') ? text.substr(0, text.size() - 1) : "no terminating zero";
  }
  std::string all;
  DBusMessageIter inner;
  dbus_message_iter_recurse(&value, &inner);
  for (; dbus_message_iter_get_arg_type(&inner) != DBUS_TYPE_INVALID;
       dbus_message_iter_next(&inner)) {
    all += (all.empty() ? "" : " ") + flattened(inner);
  }
  return all;
}

} // namespace

PrivateBus::PrivateBus() {
  const std::string settings = m_folder / "bus.conf";
  writeBytes(settings,
             {reinterpret_cast<const std::uint8_t*>(kBusSettings), std::strlen(kBusSettings)});
  // An absolute path, as PATH may lead elsewhere.
  m_daemon.emplace(std::vector<std::string>{"/usr/bin/dbus-daemon", "--config-file=" + settings,
                                            "--print-address=FD", "--nofork"},
                   "/dev/null", &m_address);
  setenv("DBUS_SESSION_BUS_ADDRESS", m_address.c_str(), 1);
}

PrivateBus::~PrivateBus() { unsetenv("DBUS_SESSION_BUS_ADDRESS"); }

void PrivateBus::freeze(bool frozen) const { m_daemon->send(frozen ? SIGSTOP : SIGCONT); }

FakePortal::FakePortal(const PrivateBus& bus, Manner manner)
    : m_connection(dbus_connection_open_private(bus.address().c_str(), nullptr)), m_manner(manner) {
  dbus_bus_register(m_connection, nullptr);
  dbus_bus_request_name(m_connection, kPortalName, 0, nullptr);
}

FakePortal::~FakePortal() { vanish(); }

void FakePortal::vanish() {
  if (m_connection == nullptr) return;
  dbus_connection_close(m_connection);
  dbus_connection_unref(m_connection);
  m_connection = nullptr;
}

void FakePortal::pump() {
  if (m_connection == nullptr) return;
  dbus_connection_read_write(m_connection, 0);
  while (const MessageRef message{dbus_connection_pop_message(m_connection)}) {
    if (dbus_message_is_method_call(message.get(), kRequest, "Close") != FALSE) m_closed = true;
    const char* interface = dbus_message_get_interface(message.get());
    if (dbus_message_get_type(message.get()) == DBUS_MESSAGE_TYPE_METHOD_CALL && !m_closed &&
        interface != nullptr && std::string_view(interface).starts_with(kPortalPrefix)) {
      take(*message);
      reply(*message);
    }
  }
}

void FakePortal::take(DBusMessage& call) {
  Request request;
  request.method = std::string(dbus_message_get_interface(&call)).substr(strlen(kPortalPrefix)) +
                   "." + dbus_message_get_member(&call);
  DBusMessageIter at;
  dbus_message_iter_init(&call, &at);
  request.parent = flattened(at);
  dbus_message_iter_next(&at);
  if (dbus_message_iter_get_arg_type(&at) == DBUS_TYPE_UNIX_FD) {
    int file = -1;
    dbus_message_iter_get_basic(&at, &file);
    std::array<char, 256> text{};
    request.document.assign(
        text.data(), static_cast<std::size_t>(std::max<ssize_t>(0, read(file, text.data(), 256))));
    close(file);
  } else {
    request.title = flattened(at);
  }
  dbus_message_iter_next(&at);
  DBusMessageIter entry;
  dbus_message_iter_recurse(&at, &entry);
  for (; dbus_message_iter_get_arg_type(&entry) == DBUS_TYPE_DICT_ENTRY;
       dbus_message_iter_next(&entry)) {
    DBusMessageIter field;
    dbus_message_iter_recurse(&entry, &field);
    const std::string name = flattened(field);
    dbus_message_iter_next(&field);
    request.options[name] = flattened(field);
  }
  std::string sender = dbus_message_get_sender(&call);
  std::replace(sender.begin(), sender.end(), '.', '_');
  m_handle = m_manner == Manner::AcceptsOldWay
                 ? "/org/freedesktop/portal/desktop/request/17"
                 : "/org/freedesktop/portal/desktop/request/" + sender.substr(1) + "/" +
                       request.options["handle_token"];
  m_requests.push_back(std::move(request));
}

void FakePortal::reply(DBusMessage& call) {
  if (m_manner == Manner::Silent) return;
  const bool refuses = m_manner == Manner::Refuses;
  const MessageRef reply(refuses ? dbus_message_new_error(&call, DBUS_ERROR_UNKNOWN_METHOD, "")
                                 : dbus_message_new_method_return(&call));
  const char* handle = m_handle.c_str();
  if (!refuses) {
    dbus_message_append_args(reply.get(), DBUS_TYPE_OBJECT_PATH, &handle, DBUS_TYPE_INVALID);
  }
  dbus_connection_send(m_connection, reply.get(), nullptr);
  dbus_connection_flush(m_connection);
}

void FakePortal::respond(std::uint32_t code, const std::vector<std::string>& addresses) {
  const MessageRef signal(dbus_message_new_signal(m_handle.c_str(), kRequest, "Response"));
  MessageWriter writer(*signal);
  writer.number(code);
  writer.array("{sv}", [&addresses](MessageWriter& results) {
    results.option("choices", "s", [](MessageWriter& value) { value.text("none"); });
    results.option("uris", "as", [&addresses](MessageWriter& value) {
      value.array("s", [&addresses](MessageWriter& texts) {
        for (const std::string& address : addresses) texts.text(address);
      });
    });
  });
  dbus_connection_send(m_connection, signal.get(), nullptr);
  dbus_connection_flush(m_connection);
}

FakePrograms::FakePrograms() : m_path(getenv("PATH")) {
  setenv("PATH", m_folder.path().c_str(), 1);
  setenv("HERE", m_folder.path().c_str(), 1);
}

FakePrograms::~FakePrograms() {
  setenv("PATH", m_path.c_str(), 1);
  unsetenv("HERE");
}

void FakePrograms::write(const std::string& name, const std::string& script) const {
  const std::string text = "#!/bin/sh\n" + script + "\n";
  const std::string path = m_folder / name;
  writeBytes(path, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  chmod(path.c_str(), 0755);
}

void FakePrograms::removeAll() const {
  for (const auto& entry : std::filesystem::directory_iterator(m_folder.path())) {
    std::filesystem::remove(entry.path());
  }
}

std::string FakePrograms::read(const std::string& name) const {
  const auto bytes = readBytes(m_folder / name);
  return {bytes.begin(), bytes.end()};
}

} // namespace qlx::test
