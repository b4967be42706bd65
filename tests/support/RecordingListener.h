// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControl.h"
#include "gui/CControlListener.h"

#include <cmath>
#include <string>

namespace qlx::test {

/// Writes down what controls report: "(" and ")" around a gesture, between them the values in
/// thousandths.
struct RecordingListener : gui::CControlListener {
  std::string log;

  void valueChanged(gui::CControl& control) override {
    if (!log.empty() && log.back() != '(') log += ' ';
    log += std::to_string(std::lround(control.getValue() * 1000.0F));
  }
  void controlBeginEdit(gui::CControl& /*control*/) override { log += '('; }
  void controlEndEdit(gui::CControl& /*control*/) override { log += ')'; }
};

} // namespace qlx::test
