// SPDX-License-Identifier: ISC
#include "tests/support/ThisSystem.h"

#include "platform/windows/Windows.h"

#include <new>
#include <stdexcept>

namespace qlx::test {

namespace {

constexpr const wchar_t* kKeysOfTests = L"Software\\QLXTest";

/// A key that takes the user's place for this process, and goes with it.
class OwnKey {
 public:
  ~OwnKey() { remove(); }
  const std::wstring& path() const { return m_path; }
  void become(const std::wstring& path) {
    remove();
    m_path = path;
    RegDeleteTreeW(HKEY_CURRENT_USER, path.c_str()); // of a process that was ended
    HKEY own = nullptr;
    if (RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_ALL_ACCESS, nullptr, &own, nullptr) != ERROR_SUCCESS)
      throw std::runtime_error("no key of its own for the test");
    RegOverridePredefKey(HKEY_CURRENT_USER, own);
    RegCloseKey(own);
  }

 private:
  void remove() {
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    if (m_path.empty()) return;
    RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str());
    RegDeleteKeyW(HKEY_CURRENT_USER, kKeysOfTests); // unless another test is running
  }

  std::wstring m_path;
};

} // namespace

namespace {

OwnKey& ownKey() {
  static OwnKey key;
  return key;
}

} // namespace

std::wstring keyOfSettings() { return ownKey().path(); }

void keepSettingsIn(const std::filesystem::path& folder) {
  ownKey().become(std::wstring(kKeysOfTests) + L'\\' + std::to_wstring(hash_value(folder)));
}

bool settingsWereWritten() {
  HKEY software = nullptr;
  if (RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, &software) != ERROR_SUCCESS)
    return false;
  RegCloseKey(software);
  return true;
}

void forgetDisplay() {}

void keepDocumentsIn(const std::filesystem::path& /*folder*/) {}

bool isLoaded(const std::filesystem::path& library) {
  return GetModuleHandleW(library.c_str()) != nullptr;
}

std::filesystem::path device() { return R"(\\.\NUL)"; }

GuardedPage::GuardedPage() : m_pages(nullptr), m_size(0) {
  SYSTEM_INFO system{};
  GetSystemInfo(&system);
  m_size = system.dwPageSize;
  m_pages = static_cast<char*>(
      VirtualAlloc(nullptr, 2 * m_size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
  DWORD before = 0;
  if (m_pages == nullptr || VirtualProtect(m_pages + m_size, m_size, PAGE_NOACCESS, &before) == 0)
    throw std::bad_alloc();
}

GuardedPage::~GuardedPage() { VirtualFree(m_pages, 0, MEM_RELEASE); }

} // namespace qlx::test
