// SPDX-License-Identifier: ISC
#include "resources/recordings/MachineRecordings.h"

namespace qlx::recordings {

MachineRecordings recordMachine() {
  return {recordHornSlow(), recordHornFast(), recordDrumSlow(), recordDrumFast(),
          recordStartStop()};
}

} // namespace qlx::recordings
