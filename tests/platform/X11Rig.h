// SPDX-License-Identifier: ISC
#pragma once

#include "platform/NativeWindow.h"
#include "tests/support/desktop/VirtualDisplay.h"
#include "tests/support/desktop/X11Host.h"

#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>

namespace qlx::test {
using namespace platform;

/// What a function of a library that a test stands in front of does itself.
template <typename F>
F* next(F* /*type*/, const char* name) {
  return reinterpret_cast<F*>(dlsym(RTLD_NEXT, name));
}

class Listener : public WindowListener {
 public:
  bool onWindowEvent(const WindowEvent& event) override {
    events.push_back(event);
    return usesKeys;
  }

  std::size_t count(WindowEventType type) const {
    return static_cast<std::size_t>(std::count_if(
        events.begin(), events.end(), [type](const WindowEvent& e) { return e.type == type; }));
  }
  const WindowEvent* last(WindowEventType type) const {
    for (auto event = events.rbegin(); event != events.rend(); ++event)
      if (event->type == type) return &*event;
    return nullptr;
  }

  std::vector<WindowEvent> events;
  bool usesKeys = true;
};

inline constexpr int kWidth = 120;
inline constexpr int kHeight = 80;

class X11Windows : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(display.isRunning()) << "Xvfb is needed"; }

  void open() {
    host = std::make_unique<X11Host>(PixelRect{100, 100, 400, 300});
    window = nativeWindowSystem().openChild(host->window(), kWidth, kHeight);
    ASSERT_NE(window, nullptr);
    window->setListener(&listener);
    window->show();
    pumpUntil([this] { return listener.count(WindowEventType::kExpose) > 0; });
    listener.events.clear();
  }

  // The display answers when it likes; two seconds are more than it ever takes.
  bool pumpUntil(const std::function<bool()>& done) {
    for (int i = 0; i < 400 && !done(); ++i) {
      if (window != nullptr) window->pump();
      if (other != nullptr) other->pump();
      if (!done()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return done();
  }
  bool comes(WindowEventType type) {
    return pumpUntil([this, type] { return listener.count(type) > 0; });
  }

  VirtualDisplay display;
  Listener listener;
  std::unique_ptr<X11Host> host;
  std::unique_ptr<NativeWindow> window;
  std::unique_ptr<NativeWindow> other;
};

inline std::vector<std::uint32_t> testPicture() {
  std::vector<std::uint32_t> pixels(kWidth * kHeight);
  for (std::size_t i = 0; i < pixels.size(); ++i)
    pixels[i] = 0xFF000000U | static_cast<std::uint32_t>(i * 2654435761U >> 8);
  return pixels;
}

/// Shows the test picture, or what there is to see of it.
inline void presentTestPicture(NativeWindow& window) {
  const std::vector<std::uint32_t> picture = testPicture();
  const std::array<PixelRect, 1> all{PixelRect{0, 0, kWidth, kHeight}};
  window.present({picture.data(), kWidth, kHeight}, all);
}

} // namespace qlx::test
