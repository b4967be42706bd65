// SPDX-License-Identifier: ISC
#include "tests/support/CommandRun.h"

#include <gmock/gmock.h>

namespace qlx::test {

using testing::HasSubstr;

namespace {

constexpr const char* kPlugin = "home/.vst/QLXBrezan.so";
constexpr const char* kManual = "home/.local/share/doc/qlx-brezan/manual.pdf";
constexpr const char* kMenuEntry = "home/.local/share/applications/brezan.desktop";

/// Staged files and a user's home of this test's own.
class Install : public testing::Test {
 protected:
  Install() {
    put("staged/share/doc/qlx-brezan/manual.pdf", "paper");
    put("staged/lib/lv2/qlx-brezan.lv2/manifest.ttl", "lv2");
    put("staged/share/applications/brezan.desktop", "TryExec=brezan\nExec=brezan edit\n");
    build("first build");
    std::filesystem::create_directory(m_folder / "staged/bin");
    std::filesystem::copy_file(BREZAN, m_folder / "staged/bin/brezan");
    std::filesystem::create_directory(m_folder / "home");
  }
  void build(const std::string& plugin) { put("staged/lib/vst/QLXBrezan.so", plugin); }

  void put(const std::string& name, const std::string& text) {
    std::filesystem::create_directories((m_folder / name).parent_path());
    write(m_folder / name, text);
  }
  std::string at(const std::string& name) { return contents(m_folder / name); }

  Finished asUser(const std::string& command) {
    return run("unset XDG_DATA_HOME XDG_CONFIG_HOME; export XDG_DATA_DIRS=/nowhere; cd " +
               m_folder.path().string() + "; HOME=$PWD/home " + command);
  }
  Finished install(const std::string& options = "") {
    return asUser("bash " SHELL_WORD(INSTALL_SCRIPT) " \"$PWD/staged\" " + options);
  }
  /// What the plug-in's manual button would open.
  std::string manual(const std::string& brezan = BREZAN) {
    const std::string path = asUser("\"" + brezan + "\" manual").output;
    return path.substr(0, path.find('\n'));
  }

  /// Every file and folder of the user's with the files' contents.
  std::vector<std::string> home() {
    std::vector<std::string> entries;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder / "home"))
      entries.push_back(entry.path().string() +
                        (entry.is_regular_file() ? ' ' + std::to_string(entry.file_size()) + ": " +
                                                       contents(entry.path()).substr(0, 100)
                                                 : ""));
    std::ranges::sort(entries);
    return entries;
  }

  TemporaryFolder m_folder;
};

} // namespace

TEST_F(Install, TakesBackExactlyWhatItPutThere) {
  for (const std::vector<const char*>& foreign :
       {std::vector<const char*>{},
        {"home/.vst/Other.so", "home/.local/share/qlx-brezan/my notes", "home/.local/bin/other"}}) {
    for (const char* name : foreign) put(name, "another's");
    const auto before = home();
    ASSERT_EQ(install().status, 0);
    EXPECT_EQ(at(kPlugin), "first build");
    EXPECT_EQ(manual(), m_folder / kManual);
    EXPECT_EQ(at(kManual), "paper");
    EXPECT_EQ(at("home/.lv2/qlx-brezan.lv2/manifest.ttl"), "lv2");
    const std::string program = m_folder / "home/.local/bin/brezan";
    EXPECT_EQ(at(kMenuEntry), "TryExec=" + program + "\nExec=" + program + " edit\n");
    build("second build");
    ASSERT_EQ(install().status, 0) << "a newer build replaces an older one";
    EXPECT_EQ(at(kPlugin), "second build");
    build("first build");
    ASSERT_EQ(install("--uninstall").status, 0);
    EXPECT_EQ(home(), before);
    EXPECT_THAT(install("--uninstall").errors, HasSubstr("nothing was installed"));
  }
}

TEST_F(Install, PrefixIsATreeOfItsOwn) {
  const auto before = home();
  const std::string other = "--prefix 'home/my plug ins/64 bit'";
  EXPECT_NE(install("--prefix home/my plug ins").status, 0) << "stray words";
  ASSERT_EQ(install(other).status, 0);
  const auto one = home();
  const std::filesystem::path tree = m_folder / "home/my plug ins/64 bit";
  EXPECT_EQ(contents(tree / "lib/vst/QLXBrezan.so"), "first build");
  EXPECT_EQ(manual((tree / "bin/brezan").string()), tree / "share/doc/qlx-brezan/manual.pdf");
  EXPECT_THAT(asUser("'" + (tree / "bin/brezan").string() + "' info").errors,
              HasSubstr((tree / "lib/vst/QLXBrezan.so").string()))
      << "the program takes the plug-in of its own tree";
  EXPECT_EQ(manual(), "") << "another program does not know this tree";
  ASSERT_EQ(install().status, 0);
  ASSERT_EQ(install("--uninstall").status, 0);
  EXPECT_EQ(home(), one);
  ASSERT_EQ(install(other + " --uninstall").status, 0);
  EXPECT_EQ(home(), before);
}

TEST_F(Install, ReplacesAnEarlierVersionsFiles) {
  // The list as an earlier version left it, with a plug-in elsewhere and a manual at another place.
  put("home/.local/share/qlx-brezan/manual.pdf", "old");
  put("home/elsewhere/QLXBrezan.so", "old");
  const std::string sum = asUser("printf old | sha256sum | cut -d' ' -f1 | tr -d '\\n'").output;
  put("home/.local/share/qlx-brezan/installed",
      "file " + sum + " " + (m_folder / "home/elsewhere/QLXBrezan.so").string() + "\nfile " + sum +
          " " + (m_folder / "home/.local/share/qlx-brezan/manual.pdf").string() + "\n");
  ASSERT_EQ(
      asUser(SHELL_WORD(BREZAN) " manual --set home/.local/share/qlx-brezan/manual.pdf").status, 0);
  ASSERT_EQ(install().status, 0);
  EXPECT_EQ(manual(), m_folder / kManual);
  EXPECT_FALSE(exists(m_folder / "home/.local/share/qlx-brezan/manual.pdf"));
  EXPECT_EQ(at("home/elsewhere/QLXBrezan.so"), "old");
  ASSERT_EQ(install("--uninstall").status, 0);
  EXPECT_FALSE(exists(m_folder / "home/elsewhere/QLXBrezan.so"));
}

TEST_F(Install, LeavesForeignAndChangedFilesAlone) {
  for (const char* file : {kPlugin, kManual}) {
    put(file, "by hand");
    const auto before = home();
    EXPECT_THAT(install().errors, HasSubstr("move it away first"));
    EXPECT_EQ(home(), before);
    EXPECT_NE(install("--uninstall").status, 0);
    std::filesystem::remove(m_folder / file);
    ASSERT_EQ(install().status, 0);
    put(file, "changed since");
    EXPECT_THAT(install().errors, HasSubstr("move it away first"));
    const Finished kept = install("--uninstall");
    EXPECT_NE(kept.status, 0);
    EXPECT_THAT(kept.errors, HasSubstr("changed since"));
    EXPECT_EQ(at(file), "changed since");
    std::filesystem::remove(m_folder / file);
  }
}

TEST_F(Install, LeavesTheUsersOwnManualAlone) {
  put("home/mine.pdf", "mine");
  const std::string mine = m_folder / "home/mine.pdf";
  const auto choose = [this] {
    EXPECT_EQ(asUser(SHELL_WORD(BREZAN) " manual --set home/mine.pdf").status, 0);
  };
  for (const bool before : {true, false}) {
    if (before) choose();
    ASSERT_EQ(install().status, 0);
    EXPECT_EQ(manual() == mine, before);
    if (!before) choose();
    ASSERT_EQ(install("--uninstall").status, 0);
    EXPECT_EQ(manual(), mine);
    ASSERT_EQ(asUser(SHELL_WORD(BREZAN) " manual --forget home/mine.pdf").status, 0);
    EXPECT_EQ(manual(), "");
  }
}

TEST_F(Install, LeavesNothingHalfDone) {
  const struct {
    const char* options;
    const char* obstacle; // a file where a folder is wanted
    const char* error;
  } cases[] = {
      {"--prefix /proc/plug-ins", "home/nothing", "cannot make the folder /proc/plug-ins"},
      {"", "home/.vst", "cannot make the folder"},
      {"", "home/.local", "cannot make the folder"},
      {"", "home/.local/share/applications", "cannot make the folder"},
  };
  for (const auto& [options, obstacle, error] : cases) {
    put(obstacle, "");
    const auto before = home();
    const Finished refused = install(options);
    EXPECT_NE(refused.status, 0) << obstacle;
    EXPECT_THAT(refused.errors, HasSubstr(error));
    EXPECT_EQ(home(), before);
    std::filesystem::remove(m_folder / obstacle);
  }
  ASSERT_EQ(install().status, 0);
  const auto before = home();
  build("second build");
  // Some files have taken their places already when one cannot.
  put("fake/mv", "#!/bin/sh\ncase $3 in *manual.pdf.new) exit 1 ;; esac\nexec /bin/mv \"$@\"\n");
  permissions(m_folder / "fake/mv", std::filesystem::perms::owner_all);
  EXPECT_NE(asUser("PATH=$PWD/fake:$PATH bash " SHELL_WORD(INSTALL_SCRIPT) " staged").status, 0);
  EXPECT_EQ(home(), before) << "an earlier installation";
}

TEST_F(Install, SaysWhatIsWrong) {
  EXPECT_THAT(install("--prefix").errors, HasSubstr("--prefix needs a folder"));
  EXPECT_THAT(install("--everything").errors, HasSubstr("unknown option '--everything'"));
  EXPECT_THAT(asUser(SHELL_WORD(BREZAN) " manual --set nowhere").errors, HasSubstr("no manual"));
  for (const char* file : {"bin/brezan", "lib/vst/QLXBrezan.so"}) {
    std::filesystem::remove(m_folder / "staged" / file);
    EXPECT_THAT(install().errors, HasSubstr(std::string(file) + " is not built"));
  }
}

} // namespace qlx::test
