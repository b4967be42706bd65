// SPDX-License-Identifier: ISC
#include "editor/ControlTree.h"

#include "editor/Layout.h"

#include <algorithm>
#include <utility>

namespace qlx::editor {

namespace {

/// Controls whose middles lie no farther apart than this are in one row.
constexpr gui::CCoord kRowTolerance = 8.0;

constexpr std::pair<std::string_view, std::string_view> kRoles[]{
    {"CKnob", "knob"},           {"COnOffButton", "switch"},     {"CKickButton", "button"},
    {"CRockerSwitch", "rocker"}, {"QLXVerticalSwitch", "lever"}, {"COptionMenu", "menu"},
    {"CTextEdit", "text field"}, {"CSplashScreen", "button"},    {"CControl", "indicator"},
};

std::string_view roleOf(const gui::CControl& control) {
  const auto found = std::ranges::find_if(
      kRoles, [&control](const auto& role) { return control.isTypeOf(role.first); });
  return found->second;
}

gui::CCoord middleOf(const gui::CControl* control) { return control->getViewSize().centre().y; }
gui::CCoord leftOf(const gui::CControl* control) { return control->getViewSize().left; }

void sortForReading(std::vector<gui::CControl*>& controls) {
  std::ranges::stable_sort(controls, {}, middleOf);
  for (auto row = controls.begin(); row != controls.end();) {
    auto next = row + 1;
    while (next != controls.end() && middleOf(*next) - middleOf(next[-1]) <= kRowTolerance) ++next;
    std::stable_sort(row, next, [](const auto* a, const auto* b) { return leftOf(a) < leftOf(b); });
    row = next;
  }
}

} // namespace

std::vector<ControlGroup> controlTree(const gui::CFrame& frame) {
  std::vector<ControlGroup> tree;
  for (const Panel& panel : kPanels) {
    ControlGroup group{panel.name, {}};
    for (const auto& view : frame.getViews()) {
      auto* const control = dynamic_cast<gui::CControl*>(view.get());
      const bool inside = gui::CRect::of(panel.place).contains(view->getViewSize().centre());
      if (inside && control != nullptr && !control->getName().empty())
        group.controls.push_back(control);
    }
    sortForReading(group.controls);
    tree.push_back(std::move(group));
  }
  return tree;
}

std::vector<gui::CView*> walkOrder(const std::vector<ControlGroup>& tree) {
  std::vector<gui::CView*> order;
  for (const ControlGroup& group : tree)
    for (gui::CControl* control : group.controls)
      if (roleOf(*control) != "indicator") order.push_back(control);
  return order;
}

std::string described(const std::vector<ControlGroup>& tree) {
  std::string text = "QLX Brezan\n";
  for (const ControlGroup& group : tree) {
    text.append("  ").append(group.name).append("\n");
    for (const gui::CControl* control : group.controls) {
      const std::string value = control->getValueText();
      text.append("    ").append(control->getName()).append(": ");
      text.append(value.empty() ? "empty" : value);
      text.append(" (").append(roleOf(*control)).append(")\n");
    }
  }
  return text;
}

} // namespace qlx::editor
