// SPDX-License-Identifier: ISC
#pragma once

#include <lo/lo.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

namespace qlx::test {

/// A session manager on a port of its own: writes down what it hears.
class SessionManager {
 public:
  SessionManager() : m_server(lo_server_new(nullptr, nullptr), lo_server_free) {
    lo_server_add_method(
        m_server.get(), nullptr, nullptr,
        [](const char* path, const char* types, lo_arg** words, int count, lo_message message,
           void* data) {
          auto& self = *static_cast<SessionManager*>(data);
          self.m_heard += path;
          for (int i = 0; i < count; ++i) {
            const char* const word = reinterpret_cast<const char*>(words[i]);
            std::int32_t number = 0;
            std::memcpy(&number, word, sizeof number);
            self.m_heard += ' ' + (types[i] == 's' ? word : std::to_string(number));
          }
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

} // namespace qlx::test
