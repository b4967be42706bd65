// SPDX-License-Identifier: ISC
#pragma once

#include "tests/support/EditorRig.h"

#include <gtest/gtest.h>

namespace qlx::test {

/// An effect whose editor is open in a window that only remembers what is drawn.
class OpenEditor : public testing::Test {
 protected:
  OpenEditor() {
    rig.open();
    rig.editor->idle();
  }

  /// What reached the host since the last call.
  std::string heard() { return std::exchange(rig.effect.log, {}); }

  EditorRig rig;
};

} // namespace qlx::test
