// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CControl.h"
#include "gui/CFrame.h"
#include "platform/offscreen/OffscreenWindow.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace qlx::test {
using namespace gui;

/// The product's glyphs, read once.
inline std::shared_ptr<CTypeface> testTypeface() {
  static const auto packs = [] {
    std::array<std::vector<std::uint8_t>, kGlyphPacks> read;
    std::size_t i = 0;
    for (const char* const scale : {"", "_1_5", "_2", "_3", "_others"}) {
      std::ifstream file(QLX_TEST_GLYPHS + std::string(scale) + ".bin", std::ios::binary);
      read[i++].assign(std::istreambuf_iterator<char>(file), {});
    }
    return read;
  }();
  static const auto typeface =
      CTypeface::create(std::vector<std::span<const std::uint8_t>>(packs.begin(), packs.end()));
  return typeface;
}

/// A strip of frames of one colour each: frame n has red 10 + 20 n.
inline CBitmapRef testStrip(int width, int frameHeight, int frames) {
  PixelBuffer pixels(width, frameHeight * frames);
  for (int y = 0; y < pixels.height; ++y)
    for (int x = 0; x < width; ++x)
      pixels.row(y)[x] = 0xFF000000U | static_cast<std::uint32_t>(10 + 20 * (y / frameHeight))
                                           << 16;
  return std::make_shared<const CBitmap>(std::move(pixels));
}

/// Writes down what controls tell.
class Recorder : public CControlListener {
 public:
  void valueChanged(CControl& control) override {
    log +=
        "v" + std::to_string(static_cast<int>(control.getValue() * 100.0F + 1000.5F) - 1000) + " ";
  }
  void controlBeginEdit(CControl& /*control*/) override { log += "begin "; }
  void controlEndEdit(CControl& /*control*/) override { log += "end "; }
  std::string take() { return std::exchange(log, {}); }

  std::string log;
};

/// A frame of 200 x 100 on a window without a screen.
class FrameFixture : public testing::Test {
 public:
  FrameFixture() {
    auto headless = std::make_unique<platform::OffscreenWindow>(200, 100);
    window = headless.get();
    frame = std::make_unique<CFrame>(CRect{0, 0, 200, 100}, std::move(headless), testTypeface());
    frame->open();
  }

  /// Which frame of a testStrip the window shows there.
  int shownFrame(int x, int y) const {
    const platform::PixelView picture = window->picture();
    return (static_cast<int>(picture.pixels[y * picture.width + x] >> 16 & 0xFF) - 10) / 20;
  }

  std::vector<std::uint32_t> shown() const {
    const platform::PixelView picture = window->picture();
    return {picture.pixels, picture.pixels + picture.width * picture.height};
  }

  std::vector<std::uint32_t> redrawnWhole() const {
    PixelBuffer whole(window->picture().width, window->picture().height);
    CDrawContext context(whole, frame->getTypeface(), frame->getScale());
    frame->draw(context);
    return whole.pixels;
  }

  // What a user does, in window pixels; arrives at once.
  void mouse(platform::WindowEventType type, int x, int y,
             std::uint32_t button = platform::kPointerLeft, std::uint32_t modifiers = 0,
             bool doubleClick = false) {
    mouseOn(*window, type, x, y, button, modifiers, doubleClick);
  }
  void mouseOn(platform::OffscreenWindow& target, platform::WindowEventType type, int x, int y,
               std::uint32_t button = platform::kPointerLeft, std::uint32_t modifiers = 0,
               bool doubleClick = false) {
    platform::WindowEvent event;
    event.type = type;
    event.x = x;
    event.y = y;
    event.button = button;
    event.buttons = button;
    event.modifiers = modifiers;
    event.doubleClick = doubleClick;
    target.inject(event);
    frame->idle();
  }
  void press(int x, int y, std::uint32_t button = platform::kPointerLeft,
             std::uint32_t modifiers = 0) {
    mouse(platform::WindowEventType::kMouseDown, x, y, button, modifiers);
  }
  void release(int x, int y, std::uint32_t button = platform::kPointerLeft) {
    mouse(platform::WindowEventType::kMouseUp, x, y, button);
  }
  void drag(int x, int y, std::uint32_t modifiers = 0) {
    mouse(platform::WindowEventType::kMouseMove, x, y, platform::kPointerLeft, modifiers);
  }
  void hover(int x, int y) { mouse(platform::WindowEventType::kMouseMove, x, y, 0); }
  void click(int x, int y) {
    press(x, y);
    release(x, y);
  }
  void key(VirtualKey virtualKey, std::uint32_t modifiers = 0) {
    platform::WindowEvent event;
    event.type = platform::WindowEventType::kKeyDown;
    event.key = virtualKey;
    event.modifiers = modifiers;
    window->inject(event);
    frame->idle();
  }
  void type(std::string_view text, std::uint32_t modifiers = 0) {
    for (const char c : text) {
      platform::WindowEvent event;
      event.type = platform::WindowEventType::kKeyDown;
      event.character = static_cast<unsigned char>(c);
      event.text = c;
      event.modifiers = modifiers;
      window->inject(event);
    }
    frame->idle();
  }
  void happens(platform::WindowEventType type) {
    platform::WindowEvent event;
    event.type = type;
    window->inject(event);
    frame->idle();
  }

  platform::OffscreenWindow* window = nullptr;
  Recorder recorder;
  std::unique_ptr<CFrame> frame;
};

} // namespace qlx::test
