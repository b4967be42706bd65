// SPDX-License-Identifier: ISC
#pragma once

#include "editor/Layout.h"
#include "editor/controls/QLXMarker.h"
#include "gui/CFrame.h"

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace qlx::plugin {
class ParameterFormatter;
}

namespace qlx::editor {

/// The controls of the open window, built from the tables of Layout.h. They belong to the frame,
/// which outlives this.
class EditorControls {
 public:
  /// The value that a parameter has now.
  using ParameterValue = std::function<float(std::int32_t index)>;

  /// A parameter's value in words, with its unit.
  using ParameterText = std::function<std::string(std::int32_t index)>;

  /// Builds them into the frame. The displays get `formatter`, which may be null, as user data.
  EditorControls(gui::CFrame& frame, gui::CControlListener& listener,
                 plugin::ParameterFormatter* formatter, const ParameterValue& valueOf,
                 ParameterText textOf);

  /// Shows the value of a parameter on all controls that show it. Indices without one are passed
  /// over. The Speed button shows its own press only.
  void showParameter(std::int32_t index, float value);

  gui::CControl& hornMarker() const { return *m_hornMarker; }
  gui::CControl& drumMarker() const { return *m_drumMarker; }
  gui::CControl& modulationLamp() const { return *m_modulationLamp; }
  gui::CControl& sustainLamp() const { return *m_sustainLamp; }
  gui::CControl& midiChannelRocker() const { return *m_midiChannelRocker; }
  /// Value 0 while the about screen isn't shown.
  gui::CControl& about() const { return *m_about; }

 private:
  struct Builder;

  void nameControl(gui::CControl& control, const ControlPlace& place);
  void buildKnob(const KnobPlace& knob, Builder& builder);
  void buildControl(const ControlPlace& control, Builder& builder);

  static constexpr std::size_t kMostPerParameter = 3; ///< a knob and two displays

  ParameterText m_textOf;
  std::array<std::array<gui::CControl*, kMostPerParameter>, plugin::kNumHostParameters> m_shown{};
  gui::CControl* m_hornMarker = nullptr;
  gui::CControl* m_drumMarker = nullptr;
  gui::CControl* m_modulationLamp = nullptr;
  gui::CControl* m_sustainLamp = nullptr;
  gui::CControl* m_midiChannelRocker = nullptr;
  gui::CControl* m_about = nullptr;
};

} // namespace qlx::editor
