// SPDX-License-Identifier: ISC
#include "platform/SettingsStore.h"

#include "platform/windows/Utf16.h"
#include "platform/windows/Windows.h"

#include <algorithm>

namespace qlx::platform {
namespace {

/// An open key of this user's part of the registry, with no more rights than are needed.
class Key {
 public:
  static Key open(const std::wstring& path, REGSAM rights) {
    HKEY key = nullptr;
    RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, rights, &key);
    return Key(key);
  }
  static Key create(const std::wstring& path) {
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE,
                    nullptr, &key, nullptr);
    return Key(key);
  }
  ~Key() {
    if (m_key != nullptr) RegCloseKey(m_key);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;

  explicit operator bool() const { return m_key != nullptr; }
  HKEY get() const { return m_key; }

 private:
  explicit Key(HKEY key) : m_key(key) {}

  HKEY m_key; ///< null when there is no such key
};

/// The values of one key: binary ones as they are, texts as UTF-16 with their terminating zero.
class RegistrySettingsStore final : public SettingsStore {
 public:
  explicit RegistrySettingsStore(std::wstring path) : m_path(std::move(path)) {}

  std::optional<std::vector<std::uint8_t>> readBinary(std::string_view name) const override {
    return read(name, REG_BINARY);
  }

  bool writeBinary(std::string_view name, std::span<const std::uint8_t> value) override {
    return write(name, REG_BINARY, value.data(), value.size());
  }

  std::string readText(std::string_view name) const override {
    const auto bytes = read(name, REG_SZ);
    if (!bytes) return {};
    std::wstring text(bytes->size() / sizeof(wchar_t), L'\0');
    std::copy_n(bytes->data(), text.size() * sizeof(wchar_t),
                reinterpret_cast<std::uint8_t*>(text.data()));
    return toUtf8(std::wstring_view(text).substr(0, text.find(L'\0')));
  }

  bool writeText(std::string_view name, std::string_view value) override {
    const std::wstring text = toUtf16(value);
    return write(name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
  }

  bool remove(std::string_view name) override {
    const Key key = Key::open(m_path, KEY_SET_VALUE);
    if (!key) return true;
    const LSTATUS removed = RegDeleteValueW(key.get(), toUtf16(name).c_str());
    return removed == ERROR_SUCCESS || removed == ERROR_FILE_NOT_FOUND;
  }

 private:
  std::optional<std::vector<std::uint8_t>> read(std::string_view name, DWORD wanted) const {
    const Key key = Key::open(m_path, KEY_QUERY_VALUE);
    if (!key || name.empty()) return std::nullopt;
    const std::wstring value = toUtf16(name);
    std::vector<std::uint8_t> bytes;
    DWORD size = 0;
    // Somebody may write a longer one between both questions.
    for (LSTATUS state = ERROR_MORE_DATA; state == ERROR_MORE_DATA;) {
      DWORD type = 0;
      if (RegQueryValueExW(key.get(), value.c_str(), nullptr, &type, nullptr, &size) !=
              ERROR_SUCCESS ||
          type != wanted || size > kMaxValueBytes)
        return std::nullopt;
      bytes.resize(size);
      state = RegQueryValueExW(key.get(), value.c_str(), nullptr, &type, bytes.data(), &size);
      if (state == ERROR_SUCCESS && type == wanted) break;
      if (state != ERROR_MORE_DATA) return std::nullopt;
    }
    bytes.resize(size);
    return bytes;
  }

  bool write(std::string_view name, DWORD type, const void* data, std::size_t size) const {
    if (name.empty() || size > kMaxValueBytes) return false;
    const Key key = Key::create(m_path);
    return key &&
           RegSetValueExW(key.get(), toUtf16(name).c_str(), 0, type, static_cast<const BYTE*>(data),
                          static_cast<DWORD>(size)) == ERROR_SUCCESS;
  }

  std::wstring m_path;
};

} // namespace

std::unique_ptr<SettingsStore> openUserSettings(std::string_view vendor, std::string_view product) {
  return std::make_unique<RegistrySettingsStore>(L"SOFTWARE\\" + toUtf16(vendor) + L'\\' +
                                                 toUtf16(product));
}

} // namespace qlx::platform
