// SPDX-License-Identifier: ISC
#include "brezan/Interrupt.h"
#include "brezan/ProgressBar.h"
#include "brezan/Table.h"
#include "brezan/commands/Commands.h"
#include "brezan/plugin/PluginLocation.h"
#include "brezan/sound/PendingFile.h"
#include "brezan/validate/Report.h"
#include "brezan/validate/host/VirtualScreen.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <set>

namespace qlx::tools {

namespace {

using validate::Check;
using validate::CheckResult;

struct ValidateOptions {
  std::string plugin;
  validate::Settings settings;
  std::vector<std::string> only;
  std::string json;
  bool list = false;
  bool verbose = false;
};

std::string fullName(const Check& check) { return std::string(check.group) + '.' + check.name; }

/// Checks of the level or, named one by one, of any; throws CLI::ValidationError for a name that is
/// none.
std::vector<Check> chosenChecks(const ValidateOptions& options) {
  std::vector<Check> chosen;
  std::set<std::string> unknown(options.only.begin(), options.only.end());
  for (const Check& check : validate::allChecks()) {
    const auto named = [&](const std::string& name) {
      if (std::find(options.only.begin(), options.only.end(), name) == options.only.end())
        return false;
      unknown.erase(name);
      return true;
    };
    const bool group = named(check.group);
    const bool single = named(fullName(check));
    if (single || ((group || options.only.empty()) && check.level <= options.settings.level))
      chosen.push_back(check);
  }
  if (!unknown.empty())
    throw CLI::ValidationError("--only", "there is no group or check '" + *unknown.begin() +
                                             "'; --list tells all");
  return chosen;
}

void listChecks() {
  Table table({"check", "from level", "what is tried"});
  for (const Check& check : validate::allChecks())
    table.add({fullName(check), std::to_string(check.level), check.about});
  table.print(std::cout);
}

std::vector<CheckResult> runChecks(const std::vector<Check>& checks, const ValidateOptions& options,
                                   std::ostream& words) {
  std::optional<validate::VirtualScreen> screen;
  if (std::any_of(checks.begin(), checks.end(), [](const Check& c) { return c.opensWindow; }))
    screen.emplace();
  validate::CheckRunner runner(options.settings, screen ? screen->display() : "", !options.verbose);
  std::vector<CheckResult> results;
  for (const Check& check : checks) {
    std::optional<ProgressBar> progress(std::in_place);
    results.push_back(runner.run(check, [&] {
      throwIfInterrupted();
      progress->show(static_cast<double>(results.size()) / static_cast<double>(checks.size()));
    }));
    progress.reset(); // before the line, which may go to the same terminal
    words << validate::resultLine(results.back()) << std::endl;
  }
  return results;
}

void validatePlugin(ValidateOptions& options) {
  if (options.list) {
    listChecks();
    return;
  }
  try {
    options.settings.plugin = locatePlugin(options.plugin);
  } catch (const std::runtime_error& error) {
    throw CLI::ValidationError("PLUGIN", error.what());
  }
  const std::vector<Check> checks = chosenChecks(options);
  std::optional<PendingFile> json; // now, so that what cannot be written costs no run
  if (!options.json.empty()) json.emplace(options.json);
  std::ostream& words = json && isStandardOutput(options.json) ? std::cerr : std::cout;
  const std::vector<CheckResult> results = runChecks(checks, options, words);
  const validate::Totals sum = validate::totals(results);
  words << sum.passed << " passed, " << sum.failed << " failed, " << sum.skipped
        << " skipped; level " << options.settings.level << ", seed " << options.settings.seed
        << ", " << fixed(sum.cpuSeconds, 1) << " s of processor time\n";
  if (json) {
    writeFile(json->path(), validate::jsonReport(options.settings, results));
    json->commit();
  }
  if (sum.failed > 0)
    throw std::runtime_error(std::to_string(sum.failed) + " of " + std::to_string(results.size()) +
                             " checks failed");
}

} // namespace

void addValidateCommand(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "validate", "Try whether a plug-in stands all that hosts do; for any VST 2.4 effect");
  auto options = std::make_shared<ValidateOptions>();
  command->add_option("PLUGIN", options->plugin,
                      "Plug-in file; by default " + pluginFileName() + ", as in other commands");
  command->add_option("--level", options->settings.level, "From 1, a look, to 10, thorough (5)")
      ->check(CLI::Range(1, 10));
  command->add_option("--seed", options->settings.seed,
                      "Chooses the random numbers; the same seed tries the same (1)");
  command->add_option("--seconds", options->settings.seconds, "Seconds of sound in a check (1)")
      ->check(CLI::Range(0.01, 3600.0));
  command
      ->add_option("--limit", options->settings.limit,
                   "Seconds after which a call counts as hung (60)")
      ->check(CLI::Range(1.0, 86400.0));
  command
      ->add_option("--only", options->only,
                   "A group (audio) or check (audio.rates); may be given several times")
      ->allow_extra_args(false);
  command->add_option("--json", options->json,
                      "Write the results into this file, too; - is standard output");
  command->add_flag("--list", options->list, "List the checks and end");
  command->add_flag("--verbose", options->verbose, "Show what the plug-in prints");
  command->footer(
      "Each check runs in a process of its own: a crash or a hang of the plug-in fails that "
      "check.\n"
      "The plug-in has an empty home folder and, for its window, an X server of its own (Xvfb).\n"
      "Exit code 0: nothing failed, 1: a check failed, 2: the command line was wrong.");
  command->callback([options] { validatePlugin(*options); });
}

} // namespace qlx::tools
