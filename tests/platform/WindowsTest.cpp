// SPDX-License-Identifier: ISC
// What the plug-in asks of Windows beside its window: settings, files, programs, dialogs.
#include "platform/windows/Windows.h"
#include "platform/DocumentOpener.h"
#include "platform/FileSelector.h"
#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "platform/SettingsStore.h"
#include "platform/windows/Utf16.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThisSystem.h"

#include <chrono>
#include <functional>
#include <gmock/gmock.h>
#include <thread>

namespace qlx::test {
namespace {

using namespace platform;
using Bytes = std::vector<std::uint8_t>;

std::string utf8(const std::filesystem::path& path) { return toUtf8(path.native()); }

bool within(std::chrono::seconds most, const std::function<bool()>& isSo) {
  const auto end = std::chrono::steady_clock::now() + most;
  while (!isSo()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

class RegistryTest : public ::testing::Test {
 protected:
  RegistryTest() { keepSettingsIn(m_home.path()); }

  /// Type and bytes of a value as any program of this user finds them.
  static std::pair<DWORD, Bytes> raw(const wchar_t* name) {
    Bytes bytes(4096);
    DWORD type = 0;
    auto size = static_cast<DWORD>(bytes.size());
    HKEY key = nullptr;
    RegOpenKeyExW(HKEY_CURRENT_USER, L"SOFTWARE\\Vendor\\Product", 0, KEY_QUERY_VALUE, &key);
    if (RegQueryValueExW(key, name, nullptr, &type, bytes.data(), &size) != ERROR_SUCCESS) size = 0;
    RegCloseKey(key);
    bytes.resize(size);
    return {type, bytes};
  }

  TemporaryFolder m_home;
  std::unique_ptr<SettingsStore> store = openUserSettings("Vendor", "Product");
};

TEST_F(RegistryTest, ValuesHaveTheirTypesAndBytes) {
  EXPECT_FALSE(store->readBinary("A"));
  EXPECT_EQ(store->readText("T"), "");
  EXPECT_TRUE(store->remove("A"));
  EXPECT_FALSE(settingsWereWritten()); // nothing is made before there is a value
  EXPECT_TRUE(store->writeBinary("A", Bytes{0, 255, 10}));
  EXPECT_TRUE(store->writeText("T", "C:\\Größe\\"));
  EXPECT_EQ(raw(L"A"), std::pair(DWORD{REG_BINARY}, Bytes{0, 255, 10}));
  EXPECT_EQ(raw(L"T"), std::pair(DWORD{REG_SZ}, Bytes{'C',  0, ':',  0, '\\', 0, 'G',  0, 'r', 0,
                                                      0xF6, 0, 0xDF, 0, 'e',  0, '\\', 0, 0,   0}));
  EXPECT_EQ(store->readBinary("A"), (Bytes{0, 255, 10}));
  EXPECT_EQ(store->readText("T"), "C:\\Größe\\");
  EXPECT_FALSE(store->readBinary("T")); // neither is the other
  EXPECT_EQ(store->readText("A"), "");
  EXPECT_TRUE(store->remove("A"));
  EXPECT_FALSE(store->readBinary("A"));
}

TEST_F(RegistryTest, WhatIsTooLongIsNoValue) {
  EXPECT_FALSE(store->writeBinary("A", Bytes(SettingsStore::kMaxValueBytes + 1)));
  EXPECT_TRUE(store->writeBinary("A", Bytes(42281, 7)));
  EXPECT_EQ(store->readBinary("A"), Bytes(42281, 7));
}

class WindowsFilesTest : public ::testing::Test {
 protected:
  std::string path(const std::wstring& name) const { return utf8(m_folder.path() / name); }
  TemporaryFolder m_folder;
};

TEST_F(WindowsFilesTest, EveryNameOfTheSystemCanBeUsed) {
  const std::string file = path(L"Größe 日本.qlx");
  EXPECT_FALSE(fileExists(file));
  EXPECT_TRUE(replaceFile(file, Bytes{1, 2, 3}));
  EXPECT_TRUE(fileExists(file));
  EXPECT_EQ(readFile(file, 3), (Bytes{1, 2, 3}));
  EXPECT_FALSE(readFile(file, 2));
  EXPECT_FALSE(readFile(utf8(m_folder.path()), 100));
  EXPECT_FALSE(readFile("NUL", 100));
  const auto entries = listFolder(utf8(m_folder.path()));
  ASSERT_TRUE(entries);
  ASSERT_EQ(entries->size(), 1U);
  EXPECT_EQ(entries->front().name, "Größe 日本.qlx");
  EXPECT_FALSE(entries->front().isFolder);
  EXPECT_FALSE(listFolder(file));
}

TEST_F(WindowsFilesTest, AFileIsReplacedAsAWholeOrNotAtAll) {
  const std::string file = path(L"a.qlx");
  ASSERT_TRUE(replaceFile(file, Bytes(3000, 1)));
  EXPECT_TRUE(replaceFile(file, Bytes(42281, 2)));
  EXPECT_EQ(readFile(file, 50000), Bytes(42281, 2));
  {
    // Held open by somebody who lets nobody write or remove it.
    const HANDLE held = CreateFileW(toUtf16(file).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    EXPECT_FALSE(replaceFile(file, Bytes(10, 3)));
    CloseHandle(held);
  }
  SetFileAttributesW(toUtf16(file).c_str(), FILE_ATTRIBUTE_READONLY);
  EXPECT_FALSE(replaceFile(file, Bytes(10, 3)));
  SetFileAttributesW(toUtf16(file).c_str(), FILE_ATTRIBUTE_NORMAL);
  EXPECT_FALSE(replaceFile(utf8(m_folder.path()), Bytes(10, 3)));
  EXPECT_FALSE(replaceFile(path(L"none\\a.qlx"), Bytes(10, 3)));
  EXPECT_EQ(readFile(file, 50000), Bytes(42281, 2));
  EXPECT_EQ(m_folder.entries(), 1U); // nothing unfinished is left
}

TEST_F(WindowsFilesTest, WhatKilledProcessesLeftBehindGoes) {
  const auto old = m_folder / ".~saving-1-2-3.part";
  const auto fresh = m_folder / ".~saving-4-5-6.part";
  for (const auto& file : {old, fresh}) writeBytes(file, Bytes{1});
  std::filesystem::last_write_time(old, std::filesystem::file_time_type::clock::now() -
                                            std::chrono::hours(1));
  EXPECT_TRUE(replaceFile(path(L"a.qlx"), Bytes{1}));
  EXPECT_FALSE(std::filesystem::exists(old));
  EXPECT_TRUE(std::filesystem::exists(fresh)); // another process may be about to finish it
}

TEST_F(WindowsFilesTest, PathsAreCutAndJoinedWithBothSeparators) {
  const std::string here = currentDirectory();
  EXPECT_EQ(here.back(), '\\');
  struct Case {
    const char* path;
    std::string directory;
    const char* name;
  };
  for (const Case& c : {Case{"C:\\a\\b.qlx", "C:\\a\\", "b.qlx"}, Case{"C:/a/b", "C:\\a\\", "b"},
                        Case{"b.qlx", here, "b.qlx"}, Case{"C:\\", "C:\\", ""}}) {
    const SplitPath split = splitPath(c.path);
    EXPECT_EQ(split.directory, c.directory) << c.path;
    EXPECT_EQ(split.name, c.name) << c.path;
  }
  EXPECT_EQ(asDirectory("C:\\a\\..\\b"), "C:\\b\\");
  EXPECT_EQ(asDirectory(""), here);
  EXPECT_EQ(pathIn("C:\\a\\", "b.qlx"), "C:\\a\\b.qlx");
  for (const char* const whole : {"D:\\b.qlx", "\\\\server\\b.qlx", "/b.qlx"})
    EXPECT_EQ(pathIn("C:\\a\\", whole), whole);
}

TEST(ShellTest, TellsHowOpeningWent) {
  using Outcome = DocumentOpener::Outcome;
  TemporaryFolder folder;
  writeBytes(folder / "manual.qlx-no-program", Bytes{1});
  const auto opener = desktopDocumentOpener();
  for (const auto& [name, expected] : {std::pair{"manual.qlx-no-program", Outcome::NoProgram},
                                       std::pair{"missing.txt", Outcome::Failed}}) {
    std::optional<Outcome> outcome;
    ASSERT_TRUE(opener->open(utf8(folder / name), 0));
    EXPECT_FALSE(opener->open(utf8(folder / name), 0)); // one at a time
    EXPECT_TRUE(
        within(std::chrono::seconds(20), [&] { return (outcome = opener->poll()).has_value(); }));
    EXPECT_EQ(outcome, expected) << name;
    EXPECT_FALSE(opener->poll());
  }
}

/// This process's dialogs of the given title.
HWND dialog(const wchar_t* title) {
  const HWND found = FindWindowW(L"#32770", title);
  DWORD process = 0;
  GetWindowThreadProcessId(found, &process);
  return process == GetCurrentProcessId() ? found : nullptr;
}

class CommonDialogTest : public ::testing::Test {
 protected:
  FileRequest request(FileRequest::Style style) const {
    return {style, "Save it", utf8(m_folder.path()), "Größe", {{"QLX Preset", "qlx"}}, 0};
  }
  static bool shown() { return dialog(L"Save it") != nullptr; }

  TemporaryFolder m_folder;
  std::unique_ptr<FileSelector> selector = desktopFileSelector();
};

TEST_F(CommonDialogTest, TheAnswerIsAWholePathWithItsExtension) {
  for (const WPARAM button : {IDOK, IDCANCEL}) {
    ASSERT_TRUE(selector->open(request(FileRequest::Style::Save)));
    EXPECT_FALSE(selector->open(request(FileRequest::Style::Save))); // one at a time
    ASSERT_TRUE(within(std::chrono::seconds(30), shown));
    std::optional<FileSelector::Paths> answer;
    const auto answered = [&] {
      PostMessageW(dialog(L"Save it"), WM_COMMAND, button, 0);
      return (answer = selector->poll()).has_value();
    };
    ASSERT_TRUE(within(std::chrono::seconds(20), answered));
    if (button == IDOK)
      EXPECT_THAT(*answer, ::testing::ElementsAre(utf8(m_folder.path() / L"Größe.qlx")));
    else
      EXPECT_TRUE(answer->empty());
    EXPECT_FALSE(selector->poll());
    EXPECT_FALSE(selector->hasFailed());
  }
}

TEST_F(CommonDialogTest, DismissedItGoesWheneverItWouldHaveCome) {
  ASSERT_TRUE(selector->open(request(FileRequest::Style::Open)));
  selector->cancel(); // most probably before there is a window
  EXPECT_FALSE(selector->poll());
  ASSERT_TRUE(selector->open(request(FileRequest::Style::Save)));
  ASSERT_TRUE(within(std::chrono::seconds(30), shown));
  selector.reset();
  EXPECT_TRUE(within(std::chrono::seconds(20), [] { return !shown(); }));
}

TEST(MessageBoxTest, StaysInFrontOfItsOwnerUntilItIsRead) {
  EXPECT_FALSE(showMessageBox(1, "T", "text")); // no such window
  const HWND owner = CreateWindowW(L"STATIC", L"owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 50,
                                   90, 60, nullptr, nullptr, nullptr, nullptr);
  ASSERT_TRUE(showMessageBox(reinterpret_cast<std::uintptr_t>(owner), "Größe", "text"));
  const auto answered = [](UINT message) {
    return [message] {
      MSG next;
      while (PeekMessageW(&next, nullptr, 0, 0, PM_REMOVE) != 0) DispatchMessageW(&next);
      const HWND box = dialog(L"Größe");
      if (message != 0) PostMessageW(box, message, IDOK, 0);
      return (box == nullptr) == (message != 0);
    };
  };
  ASSERT_TRUE(within(std::chrono::seconds(30), answered(0)));
  EXPECT_EQ(GetWindow(dialog(L"Größe"), GW_OWNER), owner);
  EXPECT_TRUE(within(std::chrono::seconds(20), answered(WM_COMMAND)));
  DestroyWindow(owner);
}

} // namespace
} // namespace qlx::test
