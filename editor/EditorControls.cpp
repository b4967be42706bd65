// SPDX-License-Identifier: ISC
#include "editor/EditorControls.h"

#include "editor/controls/CAbout.h"
#include "editor/controls/CBrezanParamDisplay.h"
#include "editor/controls/CClickKickButton.h"
#include "editor/controls/QLXOnOffButton.h"
#include "editor/controls/QLXVerticalSwitch.h"
#include "gui/controls/CMovieBitmap.h"
#include "plugin/parameters/ParameterFormatter.h"
#include "presets/panel/CPSRockerSwitch.h"
#include "presets/panel/LoadBitmap.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qlx::editor {

namespace {

// The lever follows the pointer over this part of its height.
constexpr QLXVerticalSwitch::Travel kLeverTravel{38.0F, 152.0F};
constexpr WheelStep kLeverWheel{0.15F, 0.1F};
// A rotor's light passes its slot once a turn, from beyond the right end to beyond the left one,
// and stands in the middle when the rotor looks to the front.
constexpr QLXMarker::Travel kMarkerTravel{{-120.0, 0.0}, 0.5F, 298.0};
constexpr gui::CPoint kVersionPoint = gui::CRect::of(layout::kAboutVersion).topLeft();

} // namespace

/// What building needs; the bitmaps are kept until it is done, each control keeps its own.
struct EditorControls::Builder {
  gui::CFrame& frame;
  gui::CControlListener& listener;
  plugin::ParameterFormatter* formatter;
  const ParameterValue& valueOf;
  std::map<int, gui::CBitmapRef> bitmaps{};

  const gui::CBitmapRef& bitmap(int number) {
    gui::CBitmapRef& found = bitmaps[number];
    if (found == nullptr) found = presets::loadBitmap(number);
    return found;
  }

  std::unique_ptr<gui::CControl> make(const ControlPlace& place);
};

std::unique_ptr<gui::CControl> EditorControls::Builder::make(const ControlPlace& p) {
  const gui::CRect place = gui::CRect::of(p.place);
  const gui::CBitmapRef& picture = bitmap(p.bitmap);
  const gui::CCoord height = presets::frameHeight(picture, p.frames);
  switch (p.kind) {
  case ControlPlace::kOnOff:
    return std::make_unique<QLXOnOffButton>(place, &listener, p.tag, picture);
  case ControlPlace::kKick:
    return std::make_unique<CClickKickButton>(place, &listener, p.tag, height, picture);
  case ControlPlace::kLever: {
    auto lever =
        std::make_unique<QLXVerticalSwitch>(place, &listener, p.tag, picture, kLeverTravel);
    lever->setWheelStep(kLeverWheel);
    return lever;
  }
  case ControlPlace::kMarker:
    return std::make_unique<QLXMarker>(place, &listener, p.tag, kMarkerTravel, bitmap(p.handle),
                                       picture);
  case ControlPlace::kAbout:
    return std::make_unique<CAbout>(place, &listener, p.tag, picture,
                                    gui::CRect::of(layout::kAbout), gui::CPoint{}, kVersionPoint);
  case ControlPlace::kRocker:
    return std::make_unique<presets::CPSRockerSwitch>(place, &listener, p.tag, height, picture);
  case ControlPlace::kMovie: break;
  }
  return std::make_unique<gui::CMovieBitmap>(place, &listener, p.tag, p.frames, height, picture);
}

EditorControls::EditorControls(gui::CFrame& frame, gui::CControlListener& listener,
                               plugin::ParameterFormatter* formatter, const ParameterValue& valueOf,
                               ParameterText textOf)
    : m_textOf(std::move(textOf)) {
  Builder builder{frame, listener, formatter, valueOf};
  for (const KnobPlace& knob : kHornKnobs) buildKnob(knob, builder);
  for (const ControlPlace& control : kLeverControls) buildControl(control, builder);
  for (const KnobPlace& knob : kOtherKnobs) buildKnob(knob, builder);
  for (const ControlPlace& control : kOtherControls) buildControl(control, builder);
}

void EditorControls::buildKnob(const KnobPlace& p, Builder& builder) {
  const gui::CBitmapRef& strip = builder.bitmap(kKnobStrip);
  auto& shown = m_shown[static_cast<std::size_t>(p.tag)];
  auto knob = std::make_unique<CAnimKnob3>(gui::CRect::of(p.place.knob), &builder.listener, p.tag,
                                           kKnobFrames, presets::frameHeight(strip, kKnobFrames),
                                           strip, gui::CPoint{}, p.steps);
  knob->setDefaultValue(p.defaultValue);
  knob->setWheelStep(p.wheelStep, kKnobWheelFineFactor);
  knob->setDragFactor(p.dragFactor);
  shown[0] = &builder.frame.addView(std::move(knob));
  gui::CControl& turned = *shown[0];
  turned.setName(p.name);
  turned.setValueText([&p, formatter = builder.formatter](float value) {
    std::string words;
    for (const auto convert : {p.converter, p.detailConverter}) {
      std::array<char, gui::kDisplayTextSize> text{};
      if (convert != nullptr) convert(value, text.data(), formatter);
      if (!words.empty() && text.front() != '\0') words += ' ';
      words += text.data();
    }
    return words;
  });
  const auto addDisplay = [&builder](const layout::PixelRect& pixels,
                                     gui::CParamDisplayConverter converter) {
    const gui::CRect place = gui::CRect::of(pixels);
    auto display = std::make_unique<CBrezanParamDisplay>(place, builder.frame.getBackground());
    display->setBackOffset(place.topLeft());
    display->setStringConvert(converter, builder.formatter);
    return &builder.frame.addView(std::move(display));
  };
  shown[1] = addDisplay(p.place.display, p.converter);
  if (p.detailConverter != nullptr) {
    shown[2] = addDisplay(layout::kSetupDetail, p.detailConverter);
  }
  showParameter(p.tag, builder.valueOf(p.tag));
}

void EditorControls::nameControl(gui::CControl& control, const ControlPlace& p) {
  control.setName(p.name);
  const auto parameterText = [this](std::int32_t index) {
    return [this, index](float /*value*/) { return m_textOf(index); };
  };
  if (p.tag == kMidiChannelRockerTag) control.setValueText(parameterText(plugin::kMIDIchl));
  if (p.tag < plugin::kNumHostParameters && p.kind != ControlPlace::kKick)
    control.setValueText(parameterText(p.tag));
  if (p.tag == kModulationLampTag || p.tag == kSustainLampTag)
    control.setValueText([](float value) { return value >= 0.5F ? "lit" : "dark"; });
}

void EditorControls::buildControl(const ControlPlace& p, Builder& builder) {
  gui::CControl& control = builder.frame.addView(builder.make(p));
  nameControl(control, p);
  switch (p.tag) {
  case kHornMarkerTag: m_hornMarker = &control; break;
  case kDrumMarkerTag: m_drumMarker = &control; break;
  case kModulationLampTag: m_modulationLamp = &control; break;
  case kSustainLampTag: m_sustainLamp = &control; break;
  case kMidiChannelRockerTag: m_midiChannelRocker = &control; break;
  case kAboutTag: m_about = &control; break;
  case plugin::kSpeed: control.setValue(builder.valueOf(p.tag)); break;
  default:
    m_shown[static_cast<std::size_t>(p.tag)][0] = &control;
    showParameter(p.tag, builder.valueOf(p.tag));
    break;
  }
}

void EditorControls::showParameter(std::int32_t index, float value) {
  for (gui::CControl* control : m_shown[static_cast<std::size_t>(index)]) {
    if (control != nullptr) control->setValue(value);
  }
}

} // namespace qlx::editor
