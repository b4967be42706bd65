// SPDX-License-Identifier: ISC
#include "tests/support/ThisSystem.h"

#include "platform/windows/Windows.h"

#include <new>

namespace qlx::test {

void keepSettingsIn(const std::filesystem::path& folder) {
  RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
  const std::wstring path = L"Software\\QLXTest\\" + std::to_wstring(hash_value(folder));
  HKEY own = nullptr;
  RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                  nullptr, &own, nullptr);
  RegOverridePredefKey(HKEY_CURRENT_USER, own);
  RegCloseKey(own);
}

bool settingsWereWritten() {
  DWORD keys = 0;
  const LSTATUS state =
      RegQueryInfoKeyW(HKEY_CURRENT_USER, nullptr, nullptr, nullptr, &keys, nullptr, nullptr,
                       nullptr, nullptr, nullptr, nullptr, nullptr);
  return state != ERROR_SUCCESS || keys > 0;
}

bool isLoaded(const std::filesystem::path& library) {
  return GetModuleHandleW(library.c_str()) != nullptr;
}

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
