#include "tests/tools/TemporaryFolder.h"

#include <gmock/gmock.h>

using namespace qlx::tests;
using testing::HasSubstr;

namespace {

class Install : public testing::Test {
 protected:
  Install() {
    std::filesystem::create_directories(m_folder / "tree/build/release");
    write(m_folder / "tree/build/release/QLXBrezan.so", "first build");
  }
  Finished install(const std::string& options) {
    return run("HOME=" + (m_folder / "home").string() + " bash " INSTALL_SCRIPT " " +
               (m_folder / "tree").string() + " " + options);
  }
  bool exists(const std::string& name) { return std::filesystem::exists(m_folder / name); }

  TemporaryFolder m_folder;
};

} // namespace

TEST_F(Install, takesBackExactlyWhatItPutThere) {
  std::filesystem::create_directories(m_folder / "home/.vst");
  write(m_folder / "home/.vst/Other.so", "another maker's");
  ASSERT_EQ(install("").status, 0);
  EXPECT_EQ(contents(m_folder / "home/.vst/QLXBrezan.so"), "first build");
  write(m_folder / "tree/build/release/QLXBrezan.so", "second build");
  ASSERT_EQ(install("").status, 0) << "a newer build replaces an older one";
  EXPECT_EQ(contents(m_folder / "home/.vst/QLXBrezan.so"), "second build");
  ASSERT_EQ(install("--uninstall").status, 0);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder / "home/.vst"), {}), 1);
  EXPECT_TRUE(exists("home/.vst/Other.so"));
}

TEST_F(Install, aFolderItMadeGoesWithIt) {
  const std::string there = "--prefix " + (m_folder / "plug ins").string();
  const std::string quoted = "--prefix '" + (m_folder / "plug ins").string() + "'";
  EXPECT_NE(install(there).status, 0) << "a stray word";
  ASSERT_EQ(install(quoted).status, 0);
  ASSERT_EQ(install(quoted).status, 0);
  EXPECT_TRUE(exists("plug ins/QLXBrezan.so"));
  ASSERT_EQ(install(quoted + " --uninstall").status, 0);
  EXPECT_FALSE(exists("plug ins"));
  EXPECT_FALSE(exists("home"));
}

TEST_F(Install, leavesForeignAndChangedFilesAlone) {
  std::filesystem::create_directories(m_folder / "home/.vst");
  write(m_folder / "home/.vst/QLXBrezan.so", "by hand");
  const Finished refused = install("");
  EXPECT_NE(refused.status, 0);
  EXPECT_THAT(refused.errors, HasSubstr("was not installed from here"));
  EXPECT_EQ(contents(m_folder / "home/.vst/QLXBrezan.so"), "by hand");
  EXPECT_NE(install("--uninstall").status, 0);
  std::filesystem::remove(m_folder / "home/.vst/QLXBrezan.so");
  ASSERT_EQ(install("").status, 0);
  write(m_folder / "home/.vst/QLXBrezan.so", "changed since");
  const Finished kept = install("--uninstall");
  EXPECT_NE(kept.status, 0);
  EXPECT_THAT(kept.errors, HasSubstr("changed since"));
  EXPECT_EQ(contents(m_folder / "home/.vst/QLXBrezan.so"), "changed since");
}

TEST_F(Install, saysWhatIsWrong) {
  EXPECT_THAT(install("--prefix").errors, HasSubstr("--prefix needs a folder"));
  EXPECT_THAT(install("--everything").errors, HasSubstr("unknown option '--everything'"));
  std::filesystem::remove(m_folder / "tree/build/release/QLXBrezan.so");
  EXPECT_THAT(install("").errors, HasSubstr("is not built"));
}
