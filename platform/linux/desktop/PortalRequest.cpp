// SPDX-License-Identifier: ISC
#include "platform/linux/desktop/PortalRequest.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>

namespace qlx::platform {
namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kRequestInterface = "org.freedesktop.portal.Request";
/// One request a connection, so every handle can have the same last part.
constexpr const char* kToken = "request";

/// Where the portal says that it will put the request of this sender.
std::string expectedHandle(const std::string& ownName) {
  std::string sender = ownName.substr(ownName.starts_with(':') ? 1 : 0);
  std::replace(sender.begin(), sender.end(), '.', '_');
  return std::string(kPortalPath) + "/request/" + sender + "/" + kToken;
}

std::string firstText(DBusMessage& message, int type) {
  const char* text = nullptr;
  if (dbus_message_get_args(&message, nullptr, type, &text, DBUS_TYPE_INVALID) == FALSE) return {};
  return text;
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

/// The texts of the array that the variant holds.
void readAddresses(DBusMessageIter variant, std::vector<std::string>& paths) {
  DBusMessageIter array;
  DBusMessageIter item;
  dbus_message_iter_recurse(&variant, &array);
  if (dbus_message_iter_get_arg_type(&array) != DBUS_TYPE_ARRAY) return;
  dbus_message_iter_recurse(&array, &item);
  for (; dbus_message_iter_get_arg_type(&item) == DBUS_TYPE_STRING; dbus_message_iter_next(&item)) {
    const char* address = nullptr;
    dbus_message_iter_get_basic(&item, &address);
    if (std::string path = pathOfFileAddress(address); !path.empty()) {
      paths.push_back(std::move(path));
    }
  }
}

} // namespace

std::string portalWindowName(std::uintptr_t window) {
  if (window == 0) return {};
  char text[32];
  std::snprintf(text, sizeof text, "x11:%lx", static_cast<unsigned long>(window));
  return text;
}

std::string pathOfFileAddress(const std::string& address) {
  constexpr std::string_view kScheme = "file://";
  constexpr std::string_view kThisHost = "localhost/";
  if (!address.starts_with(kScheme)) return {};
  std::string_view rest = std::string_view(address).substr(kScheme.size());
  if (rest.starts_with(kThisHost)) rest.remove_prefix(kThisHost.size() - 1);
  if (!rest.starts_with('/')) return {};
  std::string path;
  for (std::size_t i = 0; i < rest.size(); ++i) {
    if (rest[i] != '%') {
      path += rest[i];
      continue;
    }
    const int high = i + 2 < rest.size() ? hexDigit(rest[i + 1]) : -1;
    const int low = i + 2 < rest.size() ? hexDigit(rest[i + 2]) : -1;
    if (high < 0 || low < 0 || high + low == 0) return {};
    path += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return path;
}

std::unique_ptr<PortalRequest> PortalRequest::start(Call call) {
  auto bus = SessionBus::connect();
  if (bus == nullptr) return nullptr;
  return std::unique_ptr<PortalRequest>(new PortalRequest(std::move(call), std::move(bus)));
}

PortalRequest::PortalRequest(Call call, std::unique_ptr<SessionBus> bus)
    : m_call(std::move(call)), m_bus(std::move(bus)),
      m_deadline(std::chrono::steady_clock::now() + kPatience) {
  m_helloSerial = m_bus->callBus("Hello", nullptr);
  if (m_helloSerial == 0) m_state = State::Failed;
}

PortalRequest::~PortalRequest() {
  if (m_handle.empty() || m_state == State::Answered || m_state == State::Failed) return;
  const MessageRef close(
      dbus_message_new_method_call(kPortal, m_handle.c_str(), kRequestInterface, "Close"));
  if (close == nullptr) return;
  dbus_message_set_no_reply(close.get(), TRUE);
  m_bus->send(*close);
}

PortalRequest::State PortalRequest::poll() {
  while (m_state == State::Asking || m_state == State::Accepted) {
    const MessageRef message = m_bus->next();
    if (message == nullptr) break;
    handle(*message);
  }
  const bool late = m_state == State::Asking && std::chrono::steady_clock::now() >= m_deadline;
  if (late || (m_state != State::Answered && !m_bus->isUp())) m_state = State::Failed;
  return m_state;
}

void PortalRequest::handle(DBusMessage& message) {
  switch (dbus_message_get_type(&message)) {
  case DBUS_MESSAGE_TYPE_METHOD_RETURN: handleReply(message); break;
  case DBUS_MESSAGE_TYPE_ERROR: {
    const std::uint32_t about = dbus_message_get_reply_serial(&message);
    if (about == m_helloSerial || about == m_callSerial) m_state = State::Failed;
    break;
  }
  case DBUS_MESSAGE_TYPE_SIGNAL: handleSignal(message); break;
  default: break;
  }
}

void PortalRequest::handleReply(DBusMessage& reply) {
  const std::uint32_t about = dbus_message_get_reply_serial(&reply);
  if (about == m_helloSerial && m_callSerial == 0) {
    if (!sendCall(firstText(reply, DBUS_TYPE_STRING))) m_state = State::Failed;
  } else if (about == m_callSerial) {
    // Old portals give the request another path.
    const std::string handle = firstText(reply, DBUS_TYPE_OBJECT_PATH);
    const bool heard = !handle.empty() && (handle == m_handle || listenTo(handle));
    m_state = heard ? State::Accepted : State::Failed;
  }
}

void PortalRequest::handleSignal(DBusMessage& signal) {
  if (dbus_message_is_signal(&signal, kRequestInterface, "Response") != FALSE) {
    if (dbus_message_has_path(&signal, m_handle.c_str()) != FALSE) takeAnswer(signal);
  } else if (dbus_message_is_signal(&signal, DBUS_INTERFACE_DBUS, "NameOwnerChanged") != FALSE) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* after = nullptr;
    if (dbus_message_get_args(&signal, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &before,
                              DBUS_TYPE_STRING, &after, DBUS_TYPE_INVALID) != FALSE &&
        std::string_view(name) == kPortal && *after == '\0') {
      m_state = State::Failed;
    }
  }
}

bool PortalRequest::listenTo(const std::string& handle) {
  m_handle = handle;
  const std::string rule = std::string("type='signal',sender='") + kPortal + "',interface='" +
                           kRequestInterface + "',member='Response',path='" + handle + "'";
  return m_bus->callBus("AddMatch", rule.c_str()) != 0;
}

bool PortalRequest::sendCall(const std::string& ownName) {
  const std::string expected = expectedHandle(ownName);
  const bool named = !ownName.empty() && dbus_validate_path(expected.c_str(), nullptr) != FALSE;
  if (!named || (m_call.handsOverFile && !m_bus->takesDescriptors())) return false;
  const std::string ownerRule =
      std::string("type='signal',sender='" DBUS_SERVICE_DBUS "',member='NameOwnerChanged',arg0='") +
      kPortal + "'";
  // Listening comes first: the answer may be quicker than the reply to the call.
  if (m_bus->callBus("AddMatch", ownerRule.c_str()) == 0 || !listenTo(expected)) {
    return false;
  }
  const std::string interface = std::string("org.freedesktop.portal.") + m_call.interface;
  const MessageRef call(
      dbus_message_new_method_call(kPortal, kPortalPath, interface.c_str(), m_call.method));
  if (call == nullptr) return false;
  MessageWriter writer(*call);
  m_call.writeArguments(writer);
  writer.array("{sv}", [this](MessageWriter& options) {
    options.option("handle_token", "s", [](MessageWriter& value) { value.text(kToken); });
    m_call.writeOptions(options);
  });
  if (!writer.ok()) return false;
  m_callSerial = m_bus->send(*call);
  return m_callSerial != 0;
}

void PortalRequest::takeAnswer(DBusMessage& response) {
  m_state = State::Answered;
  DBusMessageIter at;
  if (dbus_message_has_signature(&response, "ua{sv}") == FALSE) return;
  dbus_message_iter_init(&response, &at);
  std::uint32_t code = 0;
  dbus_message_iter_get_basic(&at, &code);
  m_answer = static_cast<Answer>(std::min(code, static_cast<std::uint32_t>(Answer::Other)));
  dbus_message_iter_next(&at);
  DBusMessageIter entry;
  dbus_message_iter_recurse(&at, &entry);
  for (; dbus_message_iter_get_arg_type(&entry) == DBUS_TYPE_DICT_ENTRY;
       dbus_message_iter_next(&entry)) {
    DBusMessageIter field;
    dbus_message_iter_recurse(&entry, &field);
    const char* name = nullptr;
    dbus_message_iter_get_basic(&field, &name);
    dbus_message_iter_next(&field);
    if (std::string_view(name) == "uris") readAddresses(field, m_paths);
  }
}

} // namespace qlx::platform
