// SPDX-License-Identifier: ISC
#include "brezan/Interrupt.h"
#include "brezan/ProgressBar.h"
#include "brezan/Table.h"
#include "brezan/bench/BlockTimes.h"
#include "brezan/bench/Growth.h"
#include "brezan/commands/Commands.h"
#include "brezan/pictures/PngFile.h"
#include "brezan/plugin/PluginLocation.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace qlx::tools {

namespace {

struct BenchOptions {
  std::string plugin;
  bool json = false;
  bool growth = false;
  std::string picture;
  double seconds = 4.0;
};

struct Measured {
  WorkloadCase what;
  BlockTimes times;
  double share() const { return times.cpuNs * 1e-9 * what.rate; }
  double unevenness() const { return times.worstUs / times.medianUs; }
};

struct Report {
  std::vector<Measured> cases;
  double creationMs;
  std::optional<std::size_t> instanceBytes;
};

void printTable(const Report& report) {
  Table table({"rate", "mode", "use", "CPU ns/sample", "% of a core", "median block us",
               "worst block us", "worst/median"});
  for (const Measured& m : report.cases)
    table.add({fixed(m.what.rate, 0), m.what.modeName(), m.what.useName(), fixed(m.times.cpuNs, 1),
               fixed(100.0 * m.share(), 2), fixed(m.times.medianUs, 2), fixed(m.times.worstUs, 2),
               fixed(m.unevenness(), 2)});
  table.print(std::cout);
  std::cout << "\nBlocks of " << Workload::kBlockFrames
            << " frames, each the shortest of several identical runs.\n";
  for (const Measured& m : report.cases)
    if (m.what.use == Use::GeometryRebuilt)
      std::cout << "Worst block while the geometry is rebuilt, " << fixed(m.what.rate, 0) << " Hz "
                << m.what.modeName() << ": " << fixed(m.times.worstUs / 1000.0, 3) << " ms.\n";
  std::cout << "Creating an instance takes " << fixed(report.creationMs, 2) << " ms; its memory is "
            << (report.instanceBytes
                    ? fixed(static_cast<double>(*report.instanceBytes) / 1e6, 2) + " MB"
                    : std::string("not known"))
            << ".\n";
}

void printJson(const Report& report) {
  nlohmann::ordered_json json = {{"blockFrames", Workload::kBlockFrames},
                                 {"creationMilliseconds", report.creationMs},
                                 {"instanceBytes", nullptr},
                                 {"cases", nlohmann::ordered_json::array()}};
  if (report.instanceBytes) json["instanceBytes"] = *report.instanceBytes;
  for (const Measured& m : report.cases)
    json["cases"].push_back({{"rate", m.what.rate},
                             {"mode", m.what.modeName()},
                             {"use", m.what.useName()},
                             {"cpuNsPerSample", m.times.cpuNs},
                             {"shareOfCore", m.share()},
                             {"medianBlockMicroseconds", m.times.medianUs},
                             {"worstBlockMicroseconds", m.times.worstUs},
                             {"worstOverMedian", m.unevenness()}});
  std::cout << json.dump(2) << '\n';
}

Report measureCases(WorkloadPlan& plan, double seconds) {
  ProgressBar progress;
  Report report;
  // First of all, while no freed memory lies about for the instances to be had without growing.
  report.instanceBytes = instanceBytes(plan);
  report.creationMs = creationMilliseconds(plan.pluginFile);
  const std::vector<WorkloadCase> cases = workloadCases();
  for (const WorkloadCase& what : cases) {
    const auto played = [&](double part) {
      throwIfInterrupted();
      progress.show((static_cast<double>(report.cases.size()) + part) /
                    static_cast<double>(cases.size()));
    };
    const BlockTimes times = measureBlocks(plan, what, seconds, played);
    report.cases.push_back({what, times});
  }
  return report;
}

Growth measureGrowthVisibly(WorkloadPlan& plan, double seconds) {
  ProgressBar progress;
  return measureGrowth(plan, seconds, [&progress](double part) {
    throwIfInterrupted();
    progress.show(part);
  });
}

void bench(const BenchOptions& options) {
  if (!options.picture.empty()) checkPictureName(options.picture);
  WorkloadPlan plan(locatePlugin(options.plugin));
  if (options.growth) {
    const Growth growth = measureGrowthVisibly(plan, options.seconds);
    printGrowth(growth, std::cout); // first: a picture that can't be written costs no numbers
    if (!options.picture.empty()) drawGrowth(growth, options.picture);
    return;
  }
  const Report report = measureCases(plan, options.seconds);
  options.json ? printJson(report) : printTable(report);
}

} // namespace

void addBenchCommand(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "bench", "Measure the plug-in's processor time, over rates, modes and kinds of use");
  auto options = std::make_shared<BenchOptions>();
  addPluginOption(*command, options->plugin);
  command->add_option("--seconds", options->seconds, "Seconds of sound in each case (4)")
      ->check(CLI::Range(0.01, 600.0));
  CLI::Option* json = command->add_flag("--json", options->json, "Print JSON instead of a table");
  CLI::Option* growth = command
                            ->add_flag("--growth", options->growth,
                                       "Measure instead how it grows: 1 to 64 instances on one "
                                       "core and on two, block sizes, sample rates")
                            ->excludes(json);
  command->add_option("--picture", options->picture, "With --growth: draw it into this PNG file")
      ->needs(growth);
  command->footer(
      "QLX_ISA=baseline in the environment makes the plug-in use the code for every "
      "x86-64 processor instead of the best for this one; avx2 and avx512 name others.");
  command->callback([options] { bench(*options); });
}

} // namespace qlx::tools
