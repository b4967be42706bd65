// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControl.h"
#include "gui/CFrame.h"

#include <string>
#include <string_view>
#include <vector>

namespace qlx::editor {

/// The named controls of one part of the window in reading order.
struct ControlGroup {
  std::string_view name;
  std::vector<gui::CControl*> controls; ///< the frame's
};

/// All named controls by the parts of kPanels.
std::vector<ControlGroup> controlTree(const gui::CFrame& frame);

/// Those that the user works, one after the other.
std::vector<gui::CView*> walkOrder(const std::vector<ControlGroup>& tree);

/// The tree as text, a line for each: name, value in words, what kind of control it is.
std::string described(const std::vector<ControlGroup>& tree);

} // namespace qlx::editor
