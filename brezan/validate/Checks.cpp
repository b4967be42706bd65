// SPDX-License-Identifier: ISC
#include "brezan/validate/Check.h"

namespace qlx::validate {

std::vector<Check> allChecks() {
  std::vector<Check> all;
  for (const auto group :
       {scanChecks(), textChecks(), callChecks(), parameterChecks(), programChecks(), stateChecks(),
        audioChecks(), midiChecks(), lifecycleChecks(), threadChecks(), realTimeChecks(),
        hostChecks(), editorChecks()})
    all.insert(all.end(), group.begin(), group.end());
  return all;
}

} // namespace qlx::validate
