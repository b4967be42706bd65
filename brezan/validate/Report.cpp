// SPDX-License-Identifier: ISC
#include "brezan/validate/Report.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace qlx::validate {

namespace {

const char* outcomeName(Outcome outcome) {
  switch (outcome) {
  case Outcome::Passed: return "ok";
  case Outcome::Skipped: return "skip";
  default: return "FAIL";
  }
}

} // namespace

std::string resultLine(const CheckResult& result) {
  char head[128];
  std::snprintf(head, sizeof head, "%-4s  %-10s  %-15s %7.2f s", outcomeName(result.outcome),
                result.check->group, result.check->name, result.seconds);
  return head + (result.reason.empty() ? "" : "  " + result.reason);
}

Totals totals(const std::vector<CheckResult>& results) {
  Totals sum;
  for (const CheckResult& result : results) {
    ++(result.outcome == Outcome::Passed    ? sum.passed
       : result.outcome == Outcome::Skipped ? sum.skipped
                                            : sum.failed);
    sum.cpuSeconds += result.cpuSeconds;
  }
  return sum;
}

std::string jsonReport(const Settings& settings, const std::vector<CheckResult>& results) {
  const Totals sum = totals(results);
  nlohmann::ordered_json json = {{"plugin", settings.plugin.string()},
                                 {"level", settings.level},
                                 {"seed", settings.seed},
                                 {"seconds", settings.seconds},
                                 {"passed", sum.passed},
                                 {"failed", sum.failed},
                                 {"skipped", sum.skipped},
                                 {"checks", nlohmann::ordered_json::array()}};
  for (const CheckResult& result : results)
    json["checks"].push_back({{"group", result.check->group},
                              {"name", result.check->name},
                              {"result", outcomeName(result.outcome)},
                              {"seconds", result.seconds},
                              {"cpuSeconds", result.cpuSeconds},
                              {"reason", result.reason}});
  // What an effect says of itself need not be UTF-8.
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

} // namespace qlx::validate
