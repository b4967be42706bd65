// SPDX-License-Identifier: ISC
#include "editor/RotaryEditor.h"

#include "editor/ControlTree.h"
#include "editor/HostKey.h"
#include "editor/MyFrame.h"
#include "editor/ScaleChoice.h"
#include "gui/dialogs/CMessageBox.h"
#include "gui/drawing/CTypeface.h"
#include "platform/offscreen/OffscreenWindow.h"
#include "presets/store/CPresetSystemEffect.h"
#include "resources/images/Images.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace qlx::editor {

namespace {

constexpr int kBackground = 4000;
constexpr gui::CRect kWindow = gui::CRect::of(layout::kWindow);
/// From one position of the MIDI channel's display to the next.
constexpr float kMidiChannelStep = 1.0F / 18.0F;

std::shared_ptr<gui::CTypeface> makeTypeface() {
  std::array<std::span<const std::uint8_t>, gui::kGlyphPacks> packs;
  for (std::size_t i = 0; i < packs.size(); ++i) {
    const auto pack = resources::editorGlyphs(i);
    packs[i] = {reinterpret_cast<const std::uint8_t*>(pack.data()), pack.size()};
  }
  return gui::CTypeface::create(packs);
}

/// The typeface of all windows, whose packs are inflated once.
std::shared_ptr<gui::CTypeface> loadTypeface() {
  static const auto typeface = makeTypeface();
  return typeface;
}

/// The scale of a window of this size in pixels of the screen; nothing when none has it.
std::optional<double> scaleOfSize(int width, int height) {
  for (const double scale : gui::kWindowScales)
    if (gui::CFrame::windowSize(kWindow, scale) == gui::CPoint{1.0 * width, 1.0 * height})
      return scale;
  return std::nullopt;
}

/// A rotor's phase as its marker's value.
float markerValue(double turns) {
  if (turns > 1.0) {
    turns -= 1.0;
  } else if (turns < 0.0) {
    turns += 1.0;
  }
  return static_cast<float>(turns);
}

} // namespace

RotaryEditor::RotaryEditor(presets::CPresetSystemEffect& effect, const EffectReadout& readout,
                           Desktop desktop)
    : CPresetSystemEditor(effect, std::move(desktop.settings), std::move(desktop.files),
                          std::move(desktop.documents)),
      m_readout(readout), m_windows(desktop.windows),
      m_background(presets::loadBitmap(kBackground)) {
  setRectangle(1.0);
}

// A name that is being typed would go into presets that are about to be gone.
RotaryEditor::~RotaryEditor() { dropWindow(); }

void RotaryEditor::setRectangle(double scale) {
  const gui::CPoint size = gui::CFrame::windowSize(kWindow, scale);
  m_rectangle.right = static_cast<std::int16_t>(size.x);
  m_rectangle.bottom = static_cast<std::int16_t>(size.y);
}

double RotaryEditor::scaleToOpenWith() const {
  ScaleWishes wishes;
  if (const char* text = std::getenv("QLX_SCALE")) wishes.environment = scaleFromText(text);
  wishes.host = m_hostScale;
  wishes.stored = scaleFromText(settings().readScale());
  if (!wishes.environment && !wishes.host && !wishes.stored)
    wishes.desktop = m_screenScale ? m_screenScale : m_windows.scale();
  return chosenScale(wishes);
}

void RotaryEditor::setHostScale(double scale) {
  m_hostScale = scale;
  if (m_controls != nullptr) m_scaleToCome = scaleToOpenWith();
}

// The user has moved the window, so a host that makes no room is no news.
void RotaryEditor::followScreen(double scale) {
  m_screenScale = scale;
  m_scaleToCome = scaleToOpenWith();
  m_scaleIsScreens = true;
}

// Between events, and only if the host makes room.
void RotaryEditor::followScale() {
  if (!m_scaleToCome || m_controls == nullptr) return;
  const double scale = *std::exchange(m_scaleToCome, std::nullopt);
  const bool screens = std::exchange(m_scaleIsScreens, false);
  const auto frame = getFrame();
  const double before = frame->getScale();
  if (scale == before) return;
  setRectangle(scale); // hosts ask for it meanwhile
  const bool roomy = presetStore().sizeWindow(m_rectangle.right, m_rectangle.bottom);
  if (getFrame() != frame) return; // a host may open the window anew instead
  if (roomy) return frame->setScale(scale);
  setRectangle(before);
  if (screens) return;
  gui::CMessageBox::show(*frame, "Size of the window",
                         "The new size shows when the window is opened again.", {"OK"},
                         [](int /*button*/) {});
}

// --- Menu of the right button and the menu key ---

void RotaryEditor::openContextMenu(const gui::CView* view, const gui::CPoint& where) {
  m_contextMenu->closePopup();
  m_menuToCome.clear();
  menuClosed();
  const auto* control = dynamic_cast<const gui::CControl*>(view);
  const std::int32_t tag = control == nullptr ? -1 : control->getTag();
  m_menuPlace = where;
  m_hostMenu.parameter = tag >= 0 && tag < plugin::kNumHostParameters ? tag : -1;
  std::vector<gui::ContextMenu::Item> items = askHost(sdk::EditorMenu::kOpening);
  m_hostMenuOpen = !items.empty();
  for (const double scale : gui::kWindowScales) {
    items.push_back({"Size: " + std::to_string(std::lround(scale * 100.0)) + " %",
                     scale == getFrame()->getScale(), [this, scale] { chooseScale(scale); }});
  }
  showMenu(std::move(items));
}

void RotaryEditor::showMenu(std::vector<gui::ContextMenu::Item> items) {
  m_contextMenu->openAt(m_menuPlace, std::move(items));
  if (!m_contextMenu->isPopupOpen()) menuClosed();
}

std::vector<gui::ContextMenu::Item> RotaryEditor::askHost(sdk::EditorMenu::Event event,
                                                          std::int32_t chosen) {
  m_hostMenu.byteSize = sizeof m_hostMenu;
  m_hostMenu.event = event;
  m_hostMenu.chosen = chosen;
  m_hostMenu.itemCount = 0;
  std::vector<gui::ContextMenu::Item> items;
  if (!presetStore().askEditorMenu(m_hostMenu)) return items;
  const std::int32_t count = std::min(m_hostMenu.itemCount, sdk::EditorMenu::kMostItems);
  for (std::int32_t i = 0; i < count; ++i) {
    const auto& title = m_hostMenu.titles[static_cast<std::size_t>(i)];
    const auto end = std::ranges::find(title, '\0');
    items.push_back({std::string(title.begin(), end), false, [this, i] { hostItemChosen(i); }});
  }
  return items;
}

// The menu that is closing is gone at the next idle.
void RotaryEditor::hostItemChosen(std::int32_t item) {
  m_menuToCome = askHost(sdk::EditorMenu::kChosen, item);
  m_hostMenuOpen = !m_menuToCome.empty();
  if (m_hostMenuOpen) getFrame()->takeKeyboardFocus(); // else its loss closes the next menu
}

void RotaryEditor::menuClosed() {
  if (std::exchange(m_hostMenuOpen, false)) askHost(sdk::EditorMenu::kClosed);
}

void RotaryEditor::watchHostMenu() {
  if (m_contextMenu == nullptr || !m_hostMenuOpen) return;
  if (!m_menuToCome.empty()) showMenu(std::exchange(m_menuToCome, {}));
  m_hostMenu.event = sdk::EditorMenu::kIdle;
  if (m_hostMenuOpen && !presetStore().askEditorMenu(m_hostMenu)) m_contextMenu->closePopup();
}

void RotaryEditor::chooseScale(double scale) {
  storedSettings().writeScale(textOfScale(scale));
  m_scaleToCome = scale;
}

bool RotaryEditor::getRect(sdk::EditRectangle** rectangle) {
  if (m_controls == nullptr) setRectangle(scaleToOpenWith());
  *rectangle = &m_rectangle;
  return true;
}

bool RotaryEditor::open(void* parent) { return openIn(m_windows, parent, scaleToOpenWith()); }

bool RotaryEditor::openIn(const platform::WindowSystem& windows, void* parent, double scale) {
  if (m_background == nullptr || parent == nullptr) return false;
  close();
  setRectangle(scale);
  auto window = windows.openChild(reinterpret_cast<std::uintptr_t>(parent), m_rectangle.right,
                                  m_rectangle.bottom);
  if (window == nullptr) return false;
  const auto frame = std::make_shared<MyFrame>(kWindow, std::move(window), loadTypeface(), scale);
  frame->setBackground(m_background);
  setFrame(frame);
  m_mirror.clear();
  m_controls = std::make_unique<EditorControls>(
      *frame, *this, m_formatter,
      [this](std::int32_t index) { return getEffect()->getParameter(index); },
      [this](std::int32_t index) { return parameterText(index); });
  m_contextMenu = &frame->addView(std::make_unique<gui::ContextMenu>());
  CPresetSystemEditor::open(parent); // the preset panel lies on top
  m_contextMenu->onClosed([this] { menuClosed(); });
  frame->setWalkOrder(walkOrder(controlTree(*frame)));
  frame->onScaleChanged([this](double screens) { followScreen(screens); });
  frame->onContextMenu(
      [this](const gui::CView* view, const gui::CPoint& where) { openContextMenu(view, where); });
  frame->open();
  return true;
}

void RotaryEditor::close() {
  acceptTypedName();
  dropWindow();
}

void RotaryEditor::dropWindow() {
  CPresetSystemEditor::close();
  m_controls = nullptr;
  m_scaleToCome.reset();
  if (m_contextMenu != nullptr) m_contextMenu->closePopup();
  m_contextMenu = nullptr;
  m_menuToCome.clear();
  menuClosed();
  setFrame(nullptr);
}

void RotaryEditor::idle() {
  if (m_controls == nullptr) return;
  showMirrored();
  CPresetSystemEditor::idle();
  if (m_controls != nullptr) showReadout();
  watchHostMenu();
  followScale();
}

void RotaryEditor::showMirrored() {
  m_mirror.takeAll(
      [this](std::int32_t index, float value) { m_controls->showParameter(index, value); });
}

void RotaryEditor::showReadout() {
  if (m_controls->about().getValue() != 0.0F) return;
  // With the amplifier alone no rotor is heard, so the lights stay out of their slots.
  constexpr float kOutOfSight = 0.5F;
  const bool bypassed = m_readout.speakersBypassed();
  const auto now = std::chrono::steady_clock::now();
  m_controls->hornMarker().setValue(bypassed ? kOutOfSight : markerValue(m_readout.hornPhase(now)));
  m_controls->drumMarker().setValue(bypassed ? kOutOfSight : markerValue(m_readout.drumPhase(now)));
  m_controls->modulationLamp().setValue(m_readout.modWheelActivity());
  m_controls->sustainLamp().setValue(static_cast<float>(m_readout.sustainState()));
}

void RotaryEditor::setParameter(std::int32_t index, float value) {
  if (index == kMidiChannelRockerTag) {
    // The rocker's own press, which comes back here by way of the host.
    if (isWindowThread()) stepMidiChannel();
    return;
  }
  m_mirror.put(index, value);
  if (isWindowThread()) showMirrored();
}

void RotaryEditor::stepMidiChannel() {
  const float side = m_controls->midiChannelRocker().getValue();
  if (side == 0.0F) return;
  const float channel = getEffect()->getParameter(plugin::kMIDIchl);
  const float next = side > 0.0F ? std::min(channel + kMidiChannelStep, 1.0F)
                                 : std::max(channel - kMidiChannelStep, 0.0F);
  getEffect()->setParameterAutomated(plugin::kMIDIchl, next);
}

void RotaryEditor::valueChanged(gui::CControl& control) {
  CPresetSystemEditor::valueChanged(control);
  if (control.getTag() == plugin::kSpeed) {
    if (control.getValue() >= 0.5F) toggleLever();
  } else {
    getEffect()->setParameterAutomated(control.getTag(), control.getValue());
  }
  control.invalid();
}

std::string RotaryEditor::parameterText(std::int32_t index) const {
  constexpr std::size_t kRoom = 256; // hosts give as much
  std::array<char, kRoom> display{};
  std::array<char, kRoom> unit{};
  getEffect()->getParameterDisplay(index, display.data());
  getEffect()->getParameterLabel(index, unit.data());
  std::string text = std::string(display.data()) + " " + unit.data();
  text.resize(text.find_last_not_of(' ') + 1); // units of words are blanks
  return text;
}

void RotaryEditor::toggleLever() {
  const bool fast = getEffect()->getParameter(plugin::kLever) >= 0.5F;
  getEffect()->setParameterAutomated(plugin::kLever, fast ? 0.0F : 1.0F);
}

// Speed moves the lever: a host that records by gestures has to see the lever's, too.
void RotaryEditor::controlBeginEdit(gui::CControl& control) {
  presetStore().beginEdit(control.getTag());
  if (control.getTag() == plugin::kSpeed) presetStore().beginEdit(plugin::kLever);
}

void RotaryEditor::controlEndEdit(gui::CControl& control) {
  if (control.getTag() == plugin::kSpeed) presetStore().endEdit(plugin::kLever);
  presetStore().endEdit(control.getTag());
}

bool RotaryEditor::picture(const sdk::EditorPicture& request) {
  const auto scale = scaleOfSize(request.width, request.height);
  const bool fits =
      request.pixels != nullptr && scale && (request.clickCount <= 0 || request.clicks != nullptr);
  const platform::OffscreenWindowSystem windows;
  if (!fits || m_controls != nullptr || !openIn(windows, this, *scale)) return false;
  idle();
  for (std::int32_t i = 0; i < request.clickCount && windows.lastWindow() != nullptr; ++i) {
    const gui::CPoint at{request.clicks[i].x * *scale, request.clicks[i].y * *scale};
    windows.lastWindow()->click(static_cast<int>(at.x), static_cast<int>(at.y));
    idle();
  }
  idle(); // what the last one read from the effect
  const platform::OffscreenWindow* window = windows.lastWindow();
  if (window == nullptr) return false; // the host closed it on hearing of a click
  const platform::PixelView shown = window->picture();
  std::copy_n(shown.pixels, shown.width * shown.height, request.pixels);
  close();
  return true;
}

std::string RotaryEditor::description() {
  const platform::OffscreenWindowSystem windows;
  const bool wasOpen = m_controls != nullptr;
  if (!wasOpen && !openIn(windows, this, 1.0)) return {};
  idle();
  if (m_controls == nullptr) return {};
  std::string text = described(controlTree(*getFrame()));
  if (!wasOpen) close();
  return text;
}

bool RotaryEditor::onKeyDown(const sdk::KeyCode& key) {
  const auto frame = getFrame();
  return frame != nullptr && frame->platformOnKeyDown(HostKey(key).code());
}

bool RotaryEditor::onKeyUp(const sdk::KeyCode& key) {
  const auto frame = getFrame();
  return frame != nullptr && frame->platformOnKeyUp(HostKey(key).code());
}

} // namespace qlx::editor
