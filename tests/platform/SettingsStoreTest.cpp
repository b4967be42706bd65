// SPDX-License-Identifier: ISC
#include "platform/SettingsStore.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/files/XdgSettingsStore.h"
#include "tests/support/MemorySettingsStore.h"
#include "tests/support/TemporaryFolder.h"

namespace qlx::test {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using platform::XdgSettingsStore;

TEST(SettingsStore, StoresKeepValuesAlike) {
  TemporaryFolder folder;
  XdgSettingsStore files(folder / "vendor/product");
  MemorySettingsStore memory;
  for (platform::SettingsStore* store : {static_cast<platform::SettingsStore*>(&files),
                                         static_cast<platform::SettingsStore*>(&memory)}) {
    EXPECT_FALSE(store->readBinary("A"));
    EXPECT_EQ(store->readText("T"), "");
    EXPECT_TRUE(store->remove("A"));
    EXPECT_TRUE(store->writeBinary("A", Bytes{0, 255, 10}));
    EXPECT_TRUE(store->writeText("T", "Größe /x/"));
    EXPECT_EQ(store->readBinary("A"), (Bytes{0, 255, 10}));
    EXPECT_EQ(store->readText("T"), "Größe /x/");
    EXPECT_TRUE(store->writeBinary("A", Bytes{}));
    EXPECT_EQ(store->readBinary("A"), Bytes{});
    EXPECT_TRUE(store->remove("A"));
    EXPECT_FALSE(store->readBinary("A"));
  }
}

TEST(SettingsStore, IsAFileAValueUnderTheConfigurationHome) {
  struct Case {
    bool configured;
    std::string place; ///< XDG_CONFIG_HOME, below the temporary folder unless it is "relative"
    std::string folder;
  };
  for (const Case& test : {Case{true, "config", "config/Vendor/Product"},
                           Case{true, "relative", "home/.config/Vendor/Product"},
                           Case{false, "", "home/.config/Vendor/Product"}}) {
    TemporaryFolder folder;
    ::setenv("HOME", (folder / "home").c_str(), 1);
    ::unsetenv("XDG_CONFIG_HOME");
    const std::string place =
        test.place == "relative" ? test.place : (folder / test.place).string();
    if (test.configured) ::setenv("XDG_CONFIG_HOME", place.c_str(), 1);
    const auto store = platform::openUserSettings("Vendor", "Product");
    EXPECT_EQ(store->readText("Value"), "");
    EXPECT_EQ(folder.entries(), 0U); // nothing is made before there is a value
    EXPECT_TRUE(store->writeText("Value", "text"));
    EXPECT_EQ(readBytes(folder / (test.folder + "/Value")), (Bytes{'t', 'e', 'x', 't'}));
    EXPECT_EQ(fs::status(folder / test.folder).permissions(), fs::perms::owner_all);
  }
  ::setenv("HOME", "", 1);
  ::unsetenv("XDG_CONFIG_HOME");
  const auto nowhere = platform::openUserSettings("Vendor", "Product");
  EXPECT_FALSE(nowhere->writeText("Value", "text"));
  EXPECT_FALSE(nowhere->readBinary("Value"));
  EXPECT_FALSE(nowhere->remove("Value"));
}

TEST(SettingsStore, HandWrittenTextsLoseTheirLineEnd) {
  TemporaryFolder folder;
  XdgSettingsStore store(folder.path());
  for (const char* end : {"", "\n", "\r\n"}) {
    store.writeText("ManualPath", std::string("/doc/manual.pdf") + end);
    EXPECT_EQ(store.readText("ManualPath"), "/doc/manual.pdf");
  }
}

TEST(SettingsStore, OddFoldersAreSilent) {
  TemporaryFolder folder;
  fs::create_directories(folder / "store/Value");
  fs::create_symlink("nowhere/at/all", folder / "store/Link");
  fs::create_symlink("missing", folder / "dangling");
  writeBytes(folder / "file", Bytes{1});
  XdgSettingsStore store(folder / "store");
  for (const char* name : {"Value", "Link", "../file", ".hidden", "a/b", ""}) {
    EXPECT_FALSE(store.readBinary(name)) << name;
    EXPECT_EQ(store.readText(name), "") << name;
    EXPECT_FALSE(store.writeText(name, "x")) << name;
  }
  EXPECT_FALSE(store.remove("Value"));
  EXPECT_TRUE(fs::is_directory(folder / "store/Value"));
  for (const char* place : {"dangling", "dangling/below", "file", "file/below"}) {
    XdgSettingsStore odd(folder / place);
    EXPECT_FALSE(odd.writeText("Value", "x")) << place;
    EXPECT_FALSE(odd.readBinary("Value")) << place;
  }
  EXPECT_EQ(readBytes(folder / "file"), Bytes{1});
}

TEST(SettingsStore, AValueIsReplacedNotOverwritten) {
  const TemporaryFolder folder;
  XdgSettingsStore store(folder.path().string());
  store.writeText("Value", "old");
  std::ifstream reader(folder / "Value");
  store.writeText("Value", "a new one");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), "old");
  EXPECT_EQ(folder.entries(), 1U);
}

TEST(SettingsStore, ValuesAboveOneMebibyteAreIgnored) {
  const TemporaryFolder folder;
  const XdgSettingsStore store(folder.path().string());
  writeBytes(folder / "Value", Bytes(std::size_t{1} << 20));
  EXPECT_TRUE(store.readBinary("Value"));
  writeBytes(folder / "Value", Bytes((std::size_t{1} << 20) + 1));
  EXPECT_FALSE(store.readBinary("Value"));
}

TEST(SettingsStore, ReadOnlyHomeIsRead) {
  TemporaryFolder folder;
  const std::string home = folder / "config/product";
  XdgSettingsStore store(home);
  store.writeText("Value", "kept");
  ::chmod((home + "/Value").c_str(), 0444);
  const std::array<std::string, 3> folders{home, folder / "config", folder.path()};
  for (const auto& place : folders) ::chmod(place.c_str(), 0555);
  const pid_t child = ::fork();
  if (child == 0) {
    if (::geteuid() == 0 && ::setuid(65534) != 0) ::_exit(2);
    XdgSettingsStore elsewhere(folder / "other/product");
    const bool refused = !store.writeText("Value", "x") && !store.writeText("New", "x") &&
                         !store.remove("Value") && !elsewhere.writeText("Value", "x");
    ::_exit(refused && store.readText("Value") == "kept" ? 0 : 1);
  }
  int status = 1;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(store.readText("Value"), "kept");
  for (const auto& place : folders) ::chmod(place.c_str(), 0755);
}

} // namespace
} // namespace qlx::test
