// SPDX-License-Identifier: ISC
#include "tests/support/CommandRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

using namespace qlx::test;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

namespace {

Finished validate(const std::string& options, const std::string& fault = "") {
  return run("QLX_FAULT='" + fault +
             "' " SHELL_WORD(BREZAN) " validate " SHELL_WORD(FAULTY_EFFECT) " --seconds 0.2 " +
             options);
}

struct Fault {
  const char* name; ///< of the effect's switch
  const char* check;
  const char* reason;
};

void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }

class ValidateFault : public testing::TestWithParam<Fault> {};

TEST_P(ValidateFault, IsReportedByItsCheck) {
  const bool hangs = std::string(GetParam().reason).starts_with("no return");
  const Finished got = validate(
      std::string(hangs ? "--limit 2" : "") + " --only " + GetParam().check, GetParam().name);
  EXPECT_EQ(got.status, 1) << got.errors;
  EXPECT_THAT(got.output, testing::StartsWith("FAIL"));
  EXPECT_THAT(got.output, HasSubstr(GetParam().reason));
}

constexpr Fault kFaults[] = {
    {"file", "scan.home-alone", ".faulty"},
    {"screen", "scan.no-display", "crash: Aborted"},
    {"home", "scan.no-home", "exception"},
    {"thread", "scan.nothing-left", "thread"},
    {"id", "texts.identity", "ID is 0"},
    {"name", "texts.names", "effect name: 52 bytes were written"},
    {"label", "texts.parameters", "no end"},
    {"display", "texts.displays", "31 bytes were written"},
    {"pin", "texts.properties", "pin 0: a label has no end"},
    {"unknown", "calls.unknown", "opcode 333: a request that there is not was answered"},
    {"null", "calls.null", "crash: Aborted in dispatcher, opcode 51 (can do)"},
    {"index", "calls.indices", "crash"},
    {"able", "calls.can-do", "claimed"},
    {"bypass", "calls.anything", "opcode 44 (set bypass)"},
    {"uninitialized", "parameters.defaults", "other values"},
    {"range", "parameters.range", "not within 0 to 1"},
    {"outside", "parameters.outside", "output 0 is"},
    {"echo", "parameters.echo", "told back"},
    {"text", "parameters.strings", "parameter 0 has the value"},
    {"gain", "parameters.moving", "nan"},
    {"program", "programs.outside", "program -1 of 2: the current program is another"},
    {"program name", "programs.names", "64 bytes or more"},
    {"forgotten", "state.round-trip", "other values"},
    {"kept", "state.borrowed", "crash: Segmentation fault in processReplacing"},
    {"written", "state.borrowed", "crash: Segmentation fault in dispatcher, opcode 24 (set chunk)"},
    {"short state", "state.truncated", "crash: Segmentation fault"},
    {"unchecked", "state.random", "parameter"},
    {"half", "state.flipped", "refused and changed"},
    {"half", "state.reversed", "refused and changed"},
    {"state size", "state.sizes", "crash"},
    {"race", "state.thread", "crash: Aborted"},
    {"lock", "state.nested", "no return after 2 s in dispatcher"},
    {"rate", "audio.rates", "crash: Aborted in dispatcher, opcode 12 (mains changed)"},
    {"odd", "audio.blocks", "frame 0 of output 0 was not written"},
    {"beyond", "audio.blocks", "crash: Segmentation fault in processReplacing of 1 frames"},
    {"announced", "audio.larger", "was not written"},
    {"no frames", "audio.no-frames", "crash: Segmentation fault in processReplacing of 0 frames"},
    {"input", "audio.inputs", "memory that cannot be written"},
    {"cleared", "audio.in-place", "differs"},
    {"channels", "audio.crossed", "differs"},
    {"single", "audio.precision", "-60 dB"},
    {"gain", "audio.settings", "nan"},
    {"subnormal", "audio.subnormals", "subnormal"},
    {"stuck", "audio.recovery", "nan"},
    {"mode", "audio.fp-mode", "mode"},
    {"message", "midi.messages", "MIDI status 247"},
    {"late", "midi.fuzz", "crash: Segmentation fault in dispatcher, opcode 25"},
    {"no event", "midi.fuzz", "crash: Segmentation fault"},
    {"many", "midi.empty", "crash: Segmentation fault"},
    {"resumed", "lifecycle.order", "crash: Aborted"},
    {"block size", "lifecycle.odd-rates", "blocks of 0"},
    {"off", "lifecycle.not-started", "crash: Aborted"},
    {"shared", "lifecycle.instances", "it does not sound as one alone"},
    {"leak", "lifecycle.leaks", "bytes are lost in each life"},
    {"leak at load", "lifecycle.loads", "bytes are lost each time"},
    {"race", "threads.together", "crash: Aborted"},
    {"allocation", "realtime.allocations", "malloc during processReplacing"},
    {"mutex", "realtime.locks", "pthread_mutex_lock during processReplacing"},
    {"system call", "realtime.system-calls", "system call 24 during processReplacing"},
    {"no rate", "hosts.zeros", "crash: Aborted"},
    {"host rate", "hosts.ones", "crash: Aborted"},
    {"lock", "hosts.write-back", "no return after 2 s in dispatcher, opcode 25"},
    {"lock", "hosts.rates", "no return after 2 s in dispatcher, opcode 12"},
    {"size", "editor.size", "rectangle"},
    {"window left", "editor.open", "leaves a window behind"},
    {"opened twice", "editor.order", "opened twice"},
    {"idle", "editor.order", "opcode 19 (edit idle)"},
    {"key", "editor.keys", "opcode 59 (key down)"},
    {"window error", "editor.parent-first", "the program was ended with exit code 1"},
    {"no window", "editor.no-display", "claims to be open"},
};
INSTANTIATE_TEST_SUITE_P(All, ValidateFault, testing::ValuesIn(kFaults));

TEST(Validate, FindsNothingWhereNothingIsWrong) {
  const Finished got = validate("--level 7");
  EXPECT_EQ(got.status, 0) << got.output << got.errors;
  EXPECT_THAT(got.output, Not(HasSubstr("FAIL")));
  for (const Fault& fault : kFaults) {
    const std::string name = fault.check;
    const auto dot = name.find('.');
    EXPECT_THAT(got.output,
                ContainsRegex("ok +" + name.substr(0, dot) + " +" + name.substr(dot + 1) + " "));
  }
}

TEST(Validate, RepeatsWhatTheSeedSaysAndTellsItToPrograms) {
  const TemporaryFolder folder;
  const auto report = [&](int seed, const std::string& fault) {
    const std::string file = (folder / "report.json").string();
    validate("--only state.random --level 10 --seed " + std::to_string(seed) + " --json " + file,
             fault);
    return contents(file);
  };
  const auto reason = [&](const std::string& text) { return text.substr(text.find("\"reason\"")); };
  const std::string first = report(3, "unchecked");
  EXPECT_THAT(first, HasSubstr("\"seed\": 3"));
  EXPECT_THAT(first, HasSubstr("\"result\": \"FAIL\""));
  EXPECT_EQ(reason(first), reason(report(3, "unchecked")));
  EXPECT_NE(reason(first), reason(report(4, "unchecked")));
}

TEST(Validate, ItsCommandLineIsTold) {
  const TemporaryFolder folder;
  const struct {
    const char* options;
    int status;
    const char* errors;
    const char* output;
  } cases[] = {
      {"missing.so", 2, "no plug-in file 'missing.so'", ""},
      {SHELL_WORD(FAULTY_EFFECT) " --only audio.loud", 2, "no group or check 'audio.loud'", ""},
      {SHELL_WORD(FAULTY_EFFECT) " --level 11", 2, "--level", ""},
      {SHELL_WORD(FAULTY_EFFECT) " --json none/file", 1, "cannot write 'none/file'", ""},
      {SHELL_WORD(BREZAN) " --only scan.cold", 1, "1 of 1 checks failed", "cannot load"},
      {"--list", 0, "", "audio.rates "},
      {SHELL_WORD(FAULTY_EFFECT) " --only scan.cold --json -", 0, "ok ", "{\n"},
  };
  for (const auto& c : cases) {
    const Finished got = run(SHELL_WORD(BREZAN) " validate " + std::string(c.options));
    EXPECT_EQ(got.status, c.status) << c.options;
    EXPECT_THAT(got.errors, HasSubstr(c.errors)) << c.options;
    EXPECT_THAT(got.output, HasSubstr(c.output)) << c.options;
  }
}

TEST(Validate, AnInterruptEndsTheCheckAndLeavesNothing) {
  const TemporaryFolder folder;
  const Finished got =
      run("export TMPDIR=" + folder.path().string() +
          " QLX_FAULT=lock; " SHELL_WORD(BREZAN) " validate " SHELL_WORD(
              FAULTY_EFFECT) " --only state.nested & sleep 0.5; kill -TERM $!; wait $!; status=$?;"
                             " pgrep -f -- '" FAULTY_EFFECT " --only state.nested$'; exit $status");
  EXPECT_EQ(got.status, 128 + 15) << got.output;
  EXPECT_EQ(got.output, "");
  EXPECT_EQ(folder.entries(), 0U);
}

} // namespace
