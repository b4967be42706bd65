// SPDX-License-Identifier: ISC
#include "tests/support/desktop/DesktopRig.h"

#include <unistd.h>

namespace qlx::test {
namespace {

TEST_F(DesktopDialogs, DocumentsOpenOrSayWhyNot) {
  const struct {
    std::optional<Manner> manner; ///< none: no portal
    int code;                     ///< the portal's response
    const char* command;          ///< null: not there
    Outcome outcome;
  } cases[]{
      {Manner::Accepts, 0, "exit 4", Outcome::Opened},
      {Manner::Accepts, 1, "exit 4", Outcome::Opened},
      {Manner::Accepts, 2, "exit 0", Outcome::Opened},
      {Manner::Accepts, 2, "exit 3", Outcome::NoProgram},
      {Manner::Refuses, 0, "exit 0", Outcome::Opened},
      {std::nullopt, 0, "exit 0", Outcome::Opened},
      {std::nullopt, 0, "exit 2", Outcome::Failed},
      {std::nullopt, 0, "exit 3", Outcome::NoProgram},
      {std::nullopt, 0, "exit 4", Outcome::Failed},
      {std::nullopt, 0, "kill -9 $$", Outcome::Failed},
      {std::nullopt, 0, nullptr, Outcome::NoProgram},
  };
  TemporaryFolder folder;
  const std::string manual = folder / "the manual.pdf";
  writeBytes(manual, std::vector<std::uint8_t>{'m', 'a', 'n'});
  startPortal(std::nullopt);
  for (const auto& c : cases) {
    if (c.manner) portal.emplace(*bus, *c.manner);
    if (c.command != nullptr)
      programs.write("xdg-open", std::string("echo \"$1\" >$HERE/told; ") + c.command);
    ASSERT_TRUE(opener->open(manual, 0x99));
    EXPECT_FALSE(opener->open(manual, 0x99)) << "one at a time";
    std::optional<Outcome> outcome;
    bool responded = false;
    EXPECT_TRUE(until([&] {
      outcome = opener->poll();
      if (c.manner == Manner::Accepts && !responded && !portal->requests().empty()) {
        portal->respond(static_cast<std::uint32_t>(c.code));
        responded = true;
      }
      return outcome.has_value();
    }));
    EXPECT_EQ(outcome, c.outcome) << (c.command == nullptr ? "no command" : c.command);
    if (c.manner) {
      EXPECT_EQ(portal->requests().at(0).method, "OpenURI.OpenFile");
      EXPECT_EQ(portal->requests().at(0).parent, "x11:99");
      EXPECT_EQ(portal->requests().at(0).document, "man");
    }
    if (c.command != nullptr && (c.code == 2 || c.manner != Manner::Accepts)) {
      EXPECT_EQ(programs.read("told"), manual + "\n");
    }
    programs.removeAll();
    portal.reset();
  }
  EXPECT_FALSE(opener->open(folder / "missing.pdf", 0));
  EXPECT_FALSE(opener->open(folder.path(), 0)) << "a folder is no document";
}

TEST_F(DesktopDialogs, AReaderOutlivesWhoAskedForIt) {
  TemporaryFolder folder;
  writeBytes(folder / "manual.pdf", {});
  const auto readerStarts = [&] {
    programs.removeAll();
    programs.write("xdg-open", "echo $$ >$HERE/pid; exec /bin/sleep 3600");
    std::string pid;
    EXPECT_TRUE(opener->open(folder / "manual.pdf", 0));
    EXPECT_TRUE(until([&] { return (pid = programs.read("pid")).ends_with('\n'); }));
    return static_cast<pid_t>(std::stoi(pid));
  };
  const pid_t first = readerStarts();
  std::optional<Outcome> outcome;
  EXPECT_TRUE(until([&] { return (outcome = opener->poll()).has_value(); }));
  EXPECT_EQ(outcome, Outcome::Opened) << "a reader that stays is a reader";
  const pid_t second = readerStarts();
  opener.reset();
  EXPECT_TRUE(isAlive(first));
  EXPECT_TRUE(isAlive(second));
  EXPECT_NE(::getpgid(second), ::getpgid(0)) << "nor does it go with the host's terminal";
  ::kill(first, SIGKILL);
  ::kill(second, SIGKILL);
}

} // namespace
} // namespace qlx::test
