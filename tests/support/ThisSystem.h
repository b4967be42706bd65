// SPDX-License-Identifier: ISC
#pragma once

#include <filesystem>
#include <string>

/// What tests need of the system that they run on.
namespace qlx::test {

/// From now on this process's settings are kept in `folder`; on Windows under a key for it alone,
/// which goes with the process.
void keepSettingsIn(const std::filesystem::path& folder);

#ifdef _WIN32
/// That key's path below the user's part of the registry, as other programs find it.
std::wstring keyOfSettings();
#endif

/// Whether anything was written there since.
bool settingsWereWritten();

/// From now on installed documents are those in `folder`; on Windows only those beside the program.
void keepDocumentsIn(const std::filesystem::path& folder);

/// From now on no window can be opened, where the environment names the display.
void forgetDisplay();

/// Whether this process has a shared library loaded.
bool isLoaded(const std::filesystem::path& library);

/// Full path of something that can be opened like a file, but is a device.
std::filesystem::path device();

/// A page of memory behind which nothing can be touched.
class GuardedPage {
 public:
  GuardedPage();
  ~GuardedPage();
  GuardedPage(const GuardedPage&) = delete;
  GuardedPage& operator=(const GuardedPage&) = delete;

  /// The last T of the page.
  template <class T>
  T* last() const {
    return reinterpret_cast<T*>(m_pages + m_size) - 1;
  }

 private:
  char* m_pages;
  std::size_t m_size;
};

} // namespace qlx::test
