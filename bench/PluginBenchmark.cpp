// Processor time of the plug-in through the interface that hosts use, over rates, modes and kinds
// of use. The plug-in file is named with --plugin=FILE, else looked for where hosts look.
#include "presets/PersistentSettings.h"
#include "presets/PresetImage.h"
#include "tests/platform/TemporaryFolder.h"
#include "tools/brezan/PluginLocation.h"
#include "tools/brezan/Workload.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

using namespace qlx::tools;

constexpr double kWarmUpSeconds = 0.5;

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

void processBlocks(benchmark::State& state, const std::filesystem::path& plugin,
                   const WorkloadCase& what) {
  Workload work(plugin, what);
  for (long long i = work.stepsIn(kWarmUpSeconds); i > 0; --i) work.step();
  while (state.KeepRunning()) work.step();
  const auto frames = static_cast<double>(state.iterations()) * Workload::kBlockFrames;
  using benchmark::Counter;
  state.counters["per frame"] = Counter(frames, Counter::kIsRate | Counter::kInvert);
  state.counters["per second"] = Counter(frames / what.rate, Counter::kIsRate | Counter::kInvert);
}

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
  const qlx::test::TemporaryFolder home;
  ::setenv("XDG_CONFIG_HOME", home.path().c_str(), 1);
  const PluginHost loaded(plugin); // so that the library's own loading does not count
  if (defaults) storeDefaults(static_cast<std::uint32_t>(loaded.record().uniqueId));
  while (state.KeepRunning()) PluginHost host(plugin);
}

} // namespace

int main(int argc, char** argv) {
  try {
    const std::filesystem::path plugin = locatePlugin(takePluginOption(argc, argv));
    for (const WorkloadCase& what : workloadCases())
      benchmark::RegisterBenchmark(
          (std::to_string(static_cast<int>(what.rate)) + "/" + what.modeName() + "/" +
           what.useName())
              .c_str(),
          [plugin, what](benchmark::State& state) { processBlocks(state, plugin, what); });
    for (const bool defaults : {false, true})
      benchmark::RegisterBenchmark(
          defaults ? "create instance/with stored defaults" : "create instance",
          [plugin, defaults](benchmark::State& state) { createInstance(state, plugin, defaults); })
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
