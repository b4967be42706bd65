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
  return run("QLX_FAULT='" + fault + "' " BREZAN " validate " FAULTY_EFFECT " --seconds 0.2 " +
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
  const Finished got =
      validate(std::string("--limit 5 --only ") + GetParam().check, GetParam().name);
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

} // namespace
