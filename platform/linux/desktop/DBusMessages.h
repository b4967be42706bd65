// SPDX-License-Identifier: ISC
#pragma once

#include <dbus/dbus.h>

#include <cstdint>
#include <memory>
#include <string>

namespace qlx::platform {

struct MessageRelease {
  void operator()(DBusMessage* message) const noexcept { dbus_message_unref(message); }
};
using MessageRef = std::unique_ptr<DBusMessage, MessageRelease>;

/// Appends arguments to a message, or to a container in one. A failure (no memory, or a text that
/// is not UTF-8, which no bus takes) is kept: nothing more is written.
class MessageWriter {
 public:
  explicit MessageWriter(DBusMessage& message) { dbus_message_iter_init_append(&message, &m_at); }

  bool ok() const { return m_ok; }

  void text(const std::string& value) {
    const char* const bytes = value.c_str();
    m_ok = m_ok && dbus_validate_utf8(bytes, nullptr) != FALSE;
    append(DBUS_TYPE_STRING, &bytes);
  }
  void number(std::uint32_t value) { append(DBUS_TYPE_UINT32, &value); }
  void truth(bool value) {
    const dbus_bool_t truth = value ? TRUE : FALSE;
    append(DBUS_TYPE_BOOLEAN, &truth);
  }
  /// The bus gets a duplicate.
  void descriptor(int value) { append(DBUS_TYPE_UNIX_FD, &value); }

  /// An array of bytes: the text and a terminating zero. Any bytes will do.
  void pathBytes(const std::string& path) {
    array("y", [&path](MessageWriter& bytes) {
      for (std::size_t i = 0; i <= path.size(); ++i) bytes.append(DBUS_TYPE_BYTE, path.c_str() + i);
    });
  }

  /// A container that `fill` writes into.
  template <typename Fill>
  void array(const char* elements, const Fill& fill) {
    container(DBUS_TYPE_ARRAY, elements, fill);
  }
  template <typename Fill>
  void structure(const Fill& fill) {
    container(DBUS_TYPE_STRUCT, nullptr, fill);
  }
  /// One entry of an array of named variants.
  template <typename Fill>
  void option(const char* name, const char* signature, const Fill& fill) {
    container(DBUS_TYPE_DICT_ENTRY, nullptr, [&](MessageWriter& entry) {
      entry.text(name);
      entry.container(DBUS_TYPE_VARIANT, signature, fill);
    });
  }

 private:
  MessageWriter() = default;

  void append(int type, const void* value) {
    m_ok = m_ok && dbus_message_iter_append_basic(&m_at, type, value) != FALSE;
  }
  template <typename Fill>
  void container(int type, const char* signature, const Fill& fill) {
    MessageWriter inner;
    if (!m_ok || dbus_message_iter_open_container(&m_at, type, signature, &inner.m_at) == FALSE) {
      m_ok = false;
      return;
    }
    fill(inner);
    if (inner.m_ok) {
      m_ok = dbus_message_iter_close_container(&m_at, &inner.m_at) != FALSE;
    } else {
      dbus_message_iter_abandon_container(&m_at, &inner.m_at);
      m_ok = false;
    }
  }

  DBusMessageIter m_at{};
  bool m_ok = true;
};

} // namespace qlx::platform
