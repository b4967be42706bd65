// SPDX-License-Identifier: ISC
// What is measured, and that all of it is reported; not how fast it is.
#include "brezan/bench/Workload.h"
#include "tests/support/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <set>
#include <thread>

namespace qlx::test {
using namespace tools;
namespace {

class Bench : public testing::Test {
 protected:
  Bench() { setenv("XDG_CONFIG_HOME", m_folder.path().c_str(), 1); }

  Finished bench(const std::string& options) const {
    return run(SHELL_WORD(BREZAN) " bench --plugin " SHELL_WORD(PLUGIN) " --seconds 0.01 " +
               options);
  }

  TemporaryFolder m_folder;
};

using Sound = std::vector<float>; // left and right in turn

Sound play(WorkloadPlan& plan, Use use, double seconds) {
  Workload work(plan, {48000.0, true, use});
  Sound sound;
  for (long long i = work.stepsIn(seconds); i > 0; --i) {
    work.step();
    for (std::size_t k = 0; k < Workload::kBlockFrames; ++k)
      for (const auto& channel : work.output()) sound.push_back(channel[k]);
  }
  return sound;
}

// Frames from `from` seconds on in which the cabinet is muted: one channel goes in, and only the
// microphones make two of it.
long long mutedFrames(const Sound& sound, double from) {
  long long muted = 0;
  for (auto i = 2 * static_cast<std::size_t>(48000.0 * from); i < sound.size(); i += 2)
    if (sound[i] != 0.0F && sound[i] == sound[i + 1]) ++muted;
  return muted;
}

} // namespace

TEST_F(Bench, EachUseIsAnotherWork) {
  WorkloadPlan plan(PLUGIN);
  std::set<Sound> sounds;
  for (const Use use :
       {Use::SteadyFast, Use::LeverMoving, Use::ParametersAutomated, Use::GeometryRebuilt}) {
    const Sound sound = play(plan, use, 1.2);
    EXPECT_TRUE(sounds.insert(sound).second);
    EXPECT_EQ(mutedFrames(sound, 0.4) > 100, use == Use::GeometryRebuilt);
  }
}

TEST_F(Bench, ReportsEveryCase) {
  const Finished got = bench("--json");
  ASSERT_EQ(got.status, 0) << got.errors;
  const auto report = nlohmann::json::parse(got.output);
  std::set<std::string> names;
  for (const auto& measured : report["cases"]) {
    names.insert(measured["rate"].dump() + measured["mode"].dump() + measured["use"].dump());
    EXPECT_GT(measured["cpuNsPerSample"], 0.0) << measured;
    EXPECT_GT(measured["medianBlockMicroseconds"], 0.0) << measured;
    EXPECT_GE(measured["worstOverMedian"], 1.0) << measured;
  }
  EXPECT_EQ(names.size(), workloadCases().size());
  EXPECT_GT(report["creationMilliseconds"], 0.0);
  // Rings, tables and filters: neither nothing nor the recordings once more.
  EXPECT_GT(report["instanceBytes"], 100'000);
  EXPECT_LT(report["instanceBytes"], 40'000'000);
}

TEST_F(Bench, GrowthHasAllItsRowsAndAPicture) {
  const auto picture = m_folder / "growth.png";
  const Finished got = bench("--growth --picture " + picture.string());
  ASSERT_EQ(got.status, 0) << got.errors;
  std::multiset<std::string> rows; // "instances cores block rate mode"
  std::istringstream lines(got.output);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    long long instances = 0, cores = 0, block = 0, rate = 0;
    std::string mode;
    double cost = 0.0;
    if (words >> instances >> cores >> block >> rate >> mode >> cost && cost > 0.0)
      rows.insert(std::to_string(instances) + ' ' + std::to_string(cores) + ' ' +
                  std::to_string(block) + ' ' + std::to_string(rate) + ' ' + mode);
  }
  const std::size_t onTwoCores = std::thread::hardware_concurrency() > 1 ? 1 : 0;
  EXPECT_EQ(rows.size(), 7 + 6 * onTwoCores + 2 * 9 + 2 * 6) << got.output;
  EXPECT_EQ(rows.count("64 1 64 48000 Brilliant"), 1U);
  EXPECT_EQ(rows.count("64 2 64 48000 Brilliant"), onTwoCores);
  for (const char* mode : {"LowCPU", "Brilliant"}) {
    EXPECT_EQ(rows.count(std::string("1 1 4096 48000 ") + mode), 1U);
    EXPECT_EQ(rows.count(std::string("1 1 64 192000 ") + mode), 1U);
  }
  EXPECT_TRUE(std::filesystem::exists(picture));
}

} // namespace qlx::test
