// SPDX-License-Identifier: ISC
#include "live/SessionClient.h"

#include <lo/lo.h>

#include <filesystem>
#include <stdexcept>
#include <string_view>

namespace qlx::live {

namespace {

constexpr int kVersionMajor = 1;
constexpr int kVersionMinor = 2;
// Error codes of the protocol.
constexpr int kNotNow = -8;
constexpr int kBadProject = -9;
constexpr int kCreateFailed = -10;

// The time stamp of a message that is to act at once; liblo's own is not C++.
constexpr lo_timetag kAtOnce{0U, 1U};

constexpr const char* kAnnounce = "/nsm/server/announce";
constexpr const char* kOpen = "/nsm/client/open";
constexpr const char* kSave = "/nsm/client/save";

SessionClient& self(void* data) { return *static_cast<SessionClient*>(data); }

/// Arguments lie in the message at multiples of four bytes, which is less than lo_arg asks for.
const char* text(const lo_arg* word) { return reinterpret_cast<const char*>(word); }

/// Of "osc.udp://HOST:PORT/"; null for anything else. (lo_address_new_from_url reads behind the end
/// of a URL that is cut off.)
lo_address addressOf(std::string_view url) {
  constexpr std::string_view kScheme = "osc.udp://";
  if (!url.starts_with(kScheme)) return nullptr;
  url.remove_prefix(kScheme.size());
  url = url.substr(0, url.find('/'));
  const std::size_t colon = url.rfind(':');
  if (colon == std::string_view::npos || colon == 0 || colon + 1 == url.size()) return nullptr;
  const std::string port(url.substr(colon + 1));
  url = url.substr(0, colon);
  if (url.starts_with('[') && url.ends_with(']')) url = url.substr(1, url.size() - 2);
  return lo_address_new(std::string(url).c_str(), port.c_str());
}

} // namespace

void SessionClient::FreeServer::operator()(lo_server server) const { lo_server_free(server); }
void SessionClient::FreeAddress::operator()(lo_address address) const { lo_address_free(address); }

SessionClient::SessionClient(const std::string& url, const std::string& name,
                             const std::string& executable, int processId)
    : m_manager(addressOf(url)), m_server(lo_server_new_with_proto(nullptr, LO_UDP, nullptr)) {
  if (!m_manager || !m_server)
    throw std::runtime_error("cannot reach the session manager at '" + url + "'");
  addMethod(kOpen, "sss",
            [](const char*, const char*, lo_arg** words, int, lo_message, void* data) {
              self(data).opens(text(words[0]), text(words[2]));
              return 0;
            });
  addMethod(kSave, "", [](const char*, const char*, lo_arg**, int, lo_message, void* data) {
    self(data).m_saveWanted = true;
    return 0;
  });
  addMethod("/error", "sis",
            [](const char*, const char*, lo_arg** words, int, lo_message, void* data) {
              if (std::string(text(words[0])) == kAnnounce) self(data).m_refusal = text(words[2]);
              return 0;
            });
  if (lo_send_from(m_manager.get(), m_server.get(), kAtOnce, kAnnounce, "sssiii", name.c_str(), "",
                   executable.c_str(), kVersionMajor, kVersionMinor, processId) < 0)
    throw std::runtime_error("cannot reach the session manager at '" + url + "'");
}

SessionClient::~SessionClient() = default;

void SessionClient::addMethod(const char* path, const char* types, lo_method_handler handler) {
  lo_server_add_method(m_server.get(), path, types, handler, this);
}

void SessionClient::reply(const char* request, const char* words) {
  lo_send_from(m_manager.get(), m_server.get(), kAtOnce, "/reply", "ss", request, words);
}

void SessionClient::replyError(const char* request, int code, const char* words) {
  lo_send_from(m_manager.get(), m_server.get(), kAtOnce, "/error", "sis", request, code, words);
}

void SessionClient::opens(const char* path, const char* id) {
  if (m_session) return replyError(kOpen, kNotNow, "one session is open; start again");
  if (!std::filesystem::path(path).is_absolute())
    return replyError(kOpen, kBadProject, "the session's path is not absolute");
  m_session = Session{path, id};
}

std::optional<SessionClient::Session>
SessionClient::awaitSession(std::chrono::milliseconds patience) {
  if (!m_session) lo_server_recv_noblock(m_server.get(), static_cast<int>(patience.count()));
  if (!m_refusal.empty())
    throw std::runtime_error("the session manager refuses the program: " + m_refusal);
  return m_session;
}

void SessionClient::tellOpened() { reply(kOpen, "open"); }

void SessionClient::tellFailed(const std::string& words) {
  replyError(kOpen, kBadProject, words.c_str());
}

void SessionClient::idle(const std::function<void()>& save) {
  while (lo_server_recv_noblock(m_server.get(), 0) > 0) {
  }
  if (!m_saveWanted) return;
  m_saveWanted = false;
  try {
    save();
    reply(kSave, "saved");
  } catch (const std::runtime_error& error) {
    replyError(kSave, kCreateFailed, error.what());
  }
}

} // namespace qlx::live
