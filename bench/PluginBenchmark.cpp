// SPDX-License-Identifier: ISC
// Processor time of the plug-in through the interface that hosts use, over rates, modes and kinds
// of use: "any x86-64" with the code for every such processor, "this processor" with the best for
// the one at hand. "plain model" is the same sound from the scalar model that the tests hold
// against the plug-in. The plug-in file is named with --plugin=FILE, else looked for where hosts
// look.
#include "brezan/bench/Workload.h"
#include "brezan/plugin/PluginLocation.h"
#include "presets/format/PresetImage.h"
#include "presets/store/PersistentSettings.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/system/Scenario.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

using namespace qlx::tools;

constexpr double kWarmUpSeconds = 0.5;
constexpr double kSameSound = 1e-10; // -100 dB of power, coarser than a block's single precision
constexpr std::pair<const char*, const char*> kKernels[] = {{"any x86-64", "baseline"},
                                                            {"this processor", ""}};

std::string takePluginOption(int& argc, char** argv) {
  constexpr const char* kOption = "--plugin=";
  std::string plugin;
  char** end = std::remove_if(argv + 1, argv + argc, [&plugin](const char* argument) {
    if (std::strncmp(argument, kOption, std::strlen(kOption)) != 0) return false;
    plugin = argument + std::strlen(kOption);
    return true;
  });
  argc = static_cast<int>(end - argv);
  return plugin;
}

void count(benchmark::State& state, double rate) {
  const auto frames = static_cast<double>(state.iterations()) * Workload::kBlockFrames;
  using benchmark::Counter;
  state.counters["per frame"] = Counter(frames, Counter::kIsRate | Counter::kInvert);
  state.counters["per second"] = Counter(frames / rate, Counter::kIsRate | Counter::kInvert);
}

void processBlocks(benchmark::State& state, WorkloadPlan& plan, const WorkloadCase& what,
                   const char* kernels) {
  ::setenv("QLX_ISA", kernels, 1); // read when an instance is created
  Workload work(plan, what);
  for (long long i = work.stepsIn(kWarmUpSeconds); i > 0; --i) work.step();
  while (state.KeepRunning()) work.step();
  count(state, what.rate);
}

/// The plain model where a `Workload` of steadily fast use has the plug-in.
class PlainWorkload {
 public:
  PlainWorkload(WorkloadPlan& plan, const WorkloadCase& what)
      : m_player(qlx::test::plugInRecordings()), m_rate(static_cast<std::size_t>(what.rate)),
        m_chord(plan.chord(what.rate).begin(), plan.chord(what.rate).end()) {
    m_player.setParameter(plan.mode, plan.modeValue[what.brilliant ? 1 : 0]);
    m_player.setParameter(plan.lever, 1.0F);
    m_player.setSampleRate(static_cast<float>(what.rate));
    m_player.resume();
  }

  void step() {
    const double* in = m_chord.data() + m_frame % m_rate;
    m_player.process(in, in, left.data(), right.data(), Workload::kBlockFrames);
    m_frame += Workload::kBlockFrames;
  }

  std::array<double, Workload::kBlockFrames> left{}, right{};

 private:
  qlx::test::ReferencePlayer m_player;
  std::size_t m_rate;
  std::vector<double> m_chord;
  std::size_t m_frame = 0;
};

void processPlain(benchmark::State& state, WorkloadPlan& plan, const WorkloadCase& what) {
  PlainWorkload plain(plan, what);
  Workload work(plan, what);
  double power = 0.0, error = 0.0;
  for (long long i = work.stepsIn(kWarmUpSeconds); i > 0; --i) {
    plain.step();
    work.step();
    for (std::size_t k = 0; k < plain.left.size(); ++k)
      for (const auto& [model, plugin] : {std::pair(plain.left[k], work.output()[0][k]),
                                          std::pair(plain.right[k], work.output()[1][k])}) {
        power += model * model;
        error += (model - static_cast<double>(plugin)) * (model - static_cast<double>(plugin));
      }
  }
  if (!(error < kSameSound * power)) {
    state.SkipWithError("does not sound like the plug-in: the times can't be compared");
    return;
  }
  while (state.KeepRunning()) plain.step();
  count(state, what.rate);
}

/// While it lives the plug-in sees a settings folder of its own, empty at first.
class EmptySettings {
 public:
  EmptySettings() {
    if (const char* before = std::getenv(kVariable)) m_before = before;
    ::setenv(kVariable, m_folder.path().c_str(), 1);
  }
  ~EmptySettings() { ::setenv(kVariable, m_before.c_str(), 1); }
  EmptySettings(const EmptySettings&) = delete;
  EmptySettings& operator=(const EmptySettings&) = delete;

 private:
  static constexpr const char* kVariable = "XDG_CONFIG_HOME";
  qlx::test::TemporaryFolder m_folder;
  std::string m_before;
};

/// A default bank and a default preset for every new instance.
void storeDefaults(std::uint32_t fileId) {
  std::array<qlx::presets::PresetSlot, qlx::presets::kNumPresetSlots> slots;
  for (auto& slot : slots) slot.values.fill(0.5F);
  qlx::presets::ParameterSet all;
  all.set();
  qlx::presets::PersistentSettings settings(qlx::presets::openUserSettings());
  using qlx::presets::StoredImage;
  settings.writeImage(StoredImage::DefaultBank,
                      qlx::presets::makeBankImage(slots, 0, fileId, all, [](std::string_view) {}));
  settings.writeImage(StoredImage::DefaultPreset,
                      qlx::presets::makePresetImage(slots.front(), fileId, all));
}

void createInstance(benchmark::State& state, const std::filesystem::path& plugin, bool defaults) {
  const EmptySettings settings;
  const PluginHost loaded(plugin); // so that the library's own loading does not count
  if (defaults) storeDefaults(static_cast<std::uint32_t>(loaded.record().uniqueId));
  while (state.KeepRunning()) PluginHost host(plugin);
}

} // namespace

int main(int argc, char** argv) {
  try {
    const EmptySettings settings; // nobody's own defaults
    WorkloadPlan plan(locatePlugin(takePluginOption(argc, argv)));
    const auto title = [](const std::string& who, const WorkloadCase& what) {
      return who + "/" + std::to_string(static_cast<int>(what.rate)) + "/" + what.modeName() + "/" +
             what.useName();
    };
    for (const WorkloadCase& what : {WorkloadCase{44100.0, false, Use::SteadyFast},
                                     WorkloadCase{48000.0, true, Use::SteadyFast}})
      benchmark::RegisterBenchmark(
          title("plain model", what).c_str(),
          [&plan, what](benchmark::State& state) { processPlain(state, plan, what); });
    for (const auto& [who, kernels] : kKernels)
      for (const WorkloadCase& what : workloadCases())
        benchmark::RegisterBenchmark(title(who, what).c_str(),
                                     [&plan, what, kernels = kernels](benchmark::State& state) {
                                       processBlocks(state, plan, what, kernels);
                                     });
    for (const bool defaults : {false, true})
      benchmark::RegisterBenchmark(defaults ? "create instance/with stored defaults"
                                            : "create instance",
                                   [&plan, defaults](benchmark::State& state) {
                                     createInstance(state, plan.pluginFile, defaults);
                                   })
          ->Unit(benchmark::kMicrosecond);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "brezan_benchmark: %s\n", error.what());
    return 1;
  }
  return 0;
}
