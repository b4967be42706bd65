#include "tools/brezan/Commands.h"

#include "tools/brezan/Interrupt.h"
#include "tools/brezan/PluginLocation.h"
#include "tools/brezan/ProgressBar.h"
#include "tools/brezan/Table.h"
#include "tools/brezan/Workload.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <iostream>
#include <nlohmann/json.hpp>

namespace qlx::tools {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double kWarmUpSeconds = 0.5;
constexpr int kCreations = 9;

struct BenchOptions {
  std::string plugin;
  bool json = false;
  double seconds = 4.0;
};

struct Measured {
  WorkloadCase what;
  double cpuNs;    ///< processor time of a host sample, whatever else the machine does
  double medianNs; ///< time of a host sample of the median block, by the clock
  double worstNs;  ///< time of a host sample of the slowest block, by the clock
  double share() const { return cpuNs * 1e-9 * what.rate; }
};

double median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

Measured measure(const std::filesystem::path& plugin, const WorkloadCase& what, double seconds) {
  Workload work(plugin, what);
  for (long long i = work.stepsIn(kWarmUpSeconds); i > 0; --i) work.step();
  std::vector<double> blocks(static_cast<std::size_t>(work.stepsIn(seconds)));
  const std::clock_t begun = std::clock();
  for (double& block : blocks) {
    const auto begin = Clock::now();
    work.step();
    block = std::chrono::duration<double, std::nano>(Clock::now() - begin).count() /
            Workload::kBlockFrames;
  }
  const double cpu = 1e9 * static_cast<double>(std::clock() - begun) / CLOCKS_PER_SEC /
                     static_cast<double>(blocks.size()) / Workload::kBlockFrames;
  const double worst = *std::max_element(blocks.begin(), blocks.end());
  return {what, cpu, median(blocks), worst};
}

double creationMilliseconds(const std::filesystem::path& plugin) {
  const PluginHost loaded(plugin); // so that the library's own loading does not count
  std::vector<double> times(kCreations);
  for (double& time : times) {
    const auto begin = Clock::now();
    const PluginHost host(plugin);
    time = std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
  }
  return median(times);
}

void printTable(const std::vector<Measured>& all, double creation) {
  Table table({"rate", "mode", "use", "CPU ns/sample", "median", "worst block", "% of a core"});
  for (const Measured& m : all)
    table.add({fixed(m.what.rate, 0), m.what.modeName(), m.what.useName(), fixed(m.cpuNs, 1),
               fixed(m.medianNs, 1), fixed(m.worstNs, 1), fixed(100.0 * m.share(), 2)});
  table.print(std::cout);
  std::cout << "\nBlocks of " << Workload::kBlockFrames
            << " frames; median and worst block by the clock in ns per sample.\nCreating an "
               "instance takes "
            << fixed(creation, 2) << " ms.\n";
}

void printJson(const std::vector<Measured>& all, double creation) {
  nlohmann::ordered_json json = {{"blockFrames", Workload::kBlockFrames},
                                 {"creationMilliseconds", creation},
                                 {"cases", nlohmann::ordered_json::array()}};
  for (const Measured& m : all)
    json["cases"].push_back({{"rate", m.what.rate},
                             {"mode", m.what.modeName()},
                             {"use", m.what.useName()},
                             {"cpuNsPerSample", m.cpuNs},
                             {"medianNsPerSample", m.medianNs},
                             {"worstBlockNsPerSample", m.worstNs},
                             {"shareOfCore", m.share()}});
  std::cout << json.dump(2) << '\n';
}

void bench(const BenchOptions& options) {
  const std::filesystem::path plugin = locatePlugin(options.plugin);
  const std::vector<WorkloadCase> cases = workloadCases();
  std::vector<Measured> all;
  double creation = 0.0;
  {
    ProgressBar progress;
    creation = creationMilliseconds(plugin);
    for (const WorkloadCase& what : cases) {
      throwIfInterrupted();
      all.push_back(measure(plugin, what, options.seconds));
      progress.show(static_cast<double>(all.size()) / static_cast<double>(cases.size()));
    }
  }
  if (options.json)
    printJson(all, creation);
  else
    printTable(all, creation);
}

} // namespace

void addBenchCommand(CLI::App& program) {
  CLI::App* command = program.add_subcommand("bench", "Measure the plug-in's processor time");
  auto options = std::make_shared<BenchOptions>();
  addPluginOption(*command, options->plugin);
  command->add_option("--seconds", options->seconds, "Seconds of sound in each case (4)")
      ->check(CLI::Range(0.01, 600.0));
  command->add_flag("--json", options->json, "Print JSON instead of a table");
  command->callback([options] { bench(*options); });
}

} // namespace qlx::tools
