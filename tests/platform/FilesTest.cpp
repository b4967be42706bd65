// SPDX-License-Identifier: ISC
#include "platform/Files.h"

#include <csignal>
#include <functional>
#include <random>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"

namespace {

// What was flushed, and what the file to be replaced held then.
std::vector<std::string> flushed;
std::string watched;

} // namespace

extern "C" int fsync(int file) {
  std::error_code error;
  const auto link = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file), error);
  if (!watched.empty())
    flushed.push_back(link.string() + " " +
                      std::to_string(std::filesystem::file_size(watched, error)));
  return static_cast<int>(::syscall(SYS_fsync, file));
}

namespace qlx::test {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

/// What the file holds before and what is saved over it.
struct Contents {
  Bytes before = Bytes(3000, 1);
  Bytes after = Bytes(42281, 2);
};

/// Runs `work` in a process of its own; whether it ended by answering true.
bool inChild(const std::function<bool()>& work) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work() ? 0 : 1);
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// The superuser may write everywhere; permissions count only for others.
void becomeOrdinaryUser() {
  constexpr unsigned kNobody = 65534;
  if (::geteuid() == 0 && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) ::_exit(2);
}

unsigned modeOf(const std::string& path) {
  struct stat status {};
  ::stat(path.c_str(), &status);
  return status.st_mode & 07777U;
}

class ReplaceFile : public testing::Test {
 protected:
  TemporaryFolder folder;
  Contents bytes;
};

TEST_F(ReplaceFile, WritesNewAndReplacesOldFiles) {
  ::umask(022);
  EXPECT_TRUE(platform::replaceFile(folder / "a", bytes.before));
  EXPECT_EQ(readBytes(folder / "a"), bytes.before);
  EXPECT_EQ(modeOf(folder / "a"), 0644U);
  EXPECT_TRUE(platform::replaceFile(folder / "a", bytes.after));
  EXPECT_TRUE(platform::replaceFile(folder / "empty", {}));
  EXPECT_EQ(readBytes(folder / "a"), bytes.after);
  EXPECT_EQ(folder.entries(), 2U);
}

// Otherwise a power cut could leave an empty file in the place of the old one.
TEST_F(ReplaceFile, IsOnTheDiskBeforeItTakesThePlace) {
  const std::string size = std::to_string(bytes.before.size());
  ASSERT_TRUE(platform::replaceFile(folder / "a", bytes.before));
  watched = folder / "a";
  ASSERT_TRUE(platform::replaceFile(folder / "a", bytes.after));
  watched.clear();
  ASSERT_EQ(flushed.size(), 2U) << "the file, then the folder";
  EXPECT_TRUE(flushed[0].ends_with(".part " + size)) << flushed[0];
  EXPECT_EQ(flushed[1], folder.path().string() + " " + std::to_string(bytes.after.size()));
}

TEST_F(ReplaceFile, KeepsPermissionsAndLinks) {
  fs::create_directory(folder / "real");
  fs::create_symlink("real/file", folder / "relative");
  fs::create_symlink(folder / "relative", folder / "absolute");
  for (const unsigned mode : {0600U, 0664U, 0755U}) {
    writeBytes(folder / "real/file", bytes.before);
    ::chmod((folder / "real/file").c_str(), mode);
    EXPECT_TRUE(platform::replaceFile(folder / "absolute", bytes.after));
    EXPECT_TRUE(fs::is_symlink(folder / "absolute") && fs::is_symlink(folder / "relative"));
    EXPECT_FALSE(fs::is_symlink(folder / "real/file"));
    EXPECT_EQ(readBytes(folder / "real/file"), bytes.after);
    EXPECT_EQ(modeOf(folder / "real/file"), mode);
  }
  EXPECT_EQ(folder.entries(), 3U);
}

TEST_F(ReplaceFile, DanglingLinkGetsItsTarget) {
  fs::create_symlink("later", folder / "link");
  EXPECT_TRUE(platform::replaceFile(folder / "link", bytes.after));
  EXPECT_EQ(readBytes(folder / "later"), bytes.after);
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
}

TEST_F(ReplaceFile, RefusesWhatIsNoFile) {
  fs::create_directory(folder / "folder");
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  fs::create_symlink("/dev/full", folder / "device");
  fs::create_symlink("loop", folder / "loop");
  fs::create_symlink("nowhere/file", folder / "dangling");
  for (const char* name : {"folder", "folder/", "pipe", "device", "loop", "dangling", "no/file"}) {
    EXPECT_FALSE(platform::replaceFile(folder / name, bytes.after)) << name;
    EXPECT_FALSE(platform::readFile(folder / name, 99999)) << name;
  }
  EXPECT_FALSE(platform::replaceFile("", bytes.after));
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
  EXPECT_EQ(folder.entries(), 5U);
}

TEST_F(ReplaceFile, FailureKeepsTheOldFile) {
  struct Case {
    const char* title;
    std::function<void()> prepare; ///< in the process that saves
  };
  const std::string path = folder / "file";
  const std::vector<Case> cases{
      {"read-only folder",
       [&] {
         ::chmod(folder.path().c_str(), 0555);
         becomeOrdinaryUser();
       }},
      {"protected file",
       [&] {
         ::chmod(folder.path().c_str(), 0777);
         ::chmod(path.c_str(), 0444);
         becomeOrdinaryUser();
       }},
      // A full disk fails in the middle of writing, as this limit does, which brings a signal
      // besides.
      {"no room",
       [] {
         const rlimit limit{20000, 20000};
         ::setrlimit(RLIMIT_FSIZE, &limit);
       }},
      {"no more open files",
       [] {
         const rlimit limit{0, 0};
         ::setrlimit(RLIMIT_NOFILE, &limit);
       }},
  };
  for (const Case& test : cases) {
    writeBytes(path, bytes.before);
    EXPECT_TRUE(inChild([&] {
      test.prepare();
      return !platform::replaceFile(path, bytes.after);
    })) << test.title;
    EXPECT_EQ(readBytes(path), bytes.before) << test.title;
    EXPECT_EQ(folder.entries(), 1U) << test.title;
  }
}

TEST_F(ReplaceFile, KilledSaverLeavesOldOrNewAndNoHeap) {
  const std::string path = folder / "bank.qlb";
  writeBytes(path, bytes.before);
  std::mt19937 random(20);
  std::size_t mostEntries = 0;
  for (int round = 0; round < 200; ++round) {
    const pid_t saver = ::fork();
    if (saver == 0) {
      for (bool flip = false;; flip = !flip) {
        platform::replaceFile(path, flip ? bytes.before : bytes.after);
      }
    }
    ::usleep(std::uniform_int_distribution<useconds_t>(0, 8000)(random));
    ::kill(saver, SIGKILL);
    ::waitpid(saver, nullptr, 0);
    const Bytes found = readBytes(path);
    ASSERT_TRUE(found == bytes.before || found == bytes.after) << round << ": " << found.size();
    mostEntries = std::max(mostEntries, folder.entries());
  }
  EXPECT_LE(mostEntries, 2U);
  EXPECT_TRUE(platform::replaceFile(path, bytes.before));
  EXPECT_EQ(folder.entries(), 1U);
}

TEST_F(ReplaceFile, ManyAtOnceLeaveOneWholeFile) {
  std::vector<pid_t> savers;
  for (std::uint8_t number = 1; number <= 6; ++number) {
    savers.push_back(::fork());
    if (savers.back() != 0) continue;
    const Bytes mine(std::size_t{1000} * number, number);
    bool good = true;
    for (int i = 0; i < 30; ++i) good = platform::replaceFile(folder / "shared", mine) && good;
    ::_exit(good ? 0 : 1);
  }
  for (const pid_t saver : savers) {
    int status = 0;
    ::waitpid(saver, &status, 0);
    EXPECT_EQ(status, 0);
  }
  const Bytes found = readBytes(folder / "shared");
  ASSERT_FALSE(found.empty());
  EXPECT_EQ(found, Bytes(std::size_t{1000} * found[0], found[0]));
  EXPECT_EQ(folder.entries(), 1U);
}

TEST_F(ReplaceFile, ReadingStopsAtTheLimit) {
  writeBytes(folder / "file", bytes.before);
  EXPECT_EQ(platform::readFile(folder / "file", bytes.before.size()), bytes.before);
  EXPECT_FALSE(platform::readFile(folder / "file", bytes.before.size() - 1));
}

TEST(SplitPath, IsAbsoluteAndEndsDirectoriesInASeparator) {
  TemporaryFolder folder;
  const auto before = fs::current_path();
  EXPECT_TRUE(platform::changeDirectory(folder.path()));
  const std::string here = folder.path().string() + "/";
  struct Case {
    std::string path, directory, name;
  };
  for (const Case& test : {Case{"/a/b.qlx", "/a/", "b.qlx"}, Case{"/b.qlx", "/", "b.qlx"},
                           Case{"b.qlx", here, "b.qlx"}, Case{"a/b", here + "a/", "b"},
                           Case{"/a/", "/a/", ""}, Case{"\xFF", here, "\xFF"}}) {
    const auto split = platform::splitPath(test.path);
    EXPECT_EQ(split.directory, test.directory);
    EXPECT_EQ(split.name, test.name);
  }
  EXPECT_EQ(platform::currentDirectory(), here);
  fs::current_path(before);
}

} // namespace
} // namespace qlx::test
