// SPDX-License-Identifier: ISC
#pragma once

#include "platform/NativeWindow.h"

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace qlx::platform {

class OffscreenWindowSystem;

/// A window without a screen: events are put in by hand and arrive at the next pump, the presented
/// picture can be read back, time stands still until it is moved. For tests and for pictures made
/// where there is no display.
class OffscreenWindow final : public NativeWindow {
 public:
  OffscreenWindow(int width, int height);
  ~OffscreenWindow() override;

  void setListener(WindowListener* listener) override { m_listener = listener; }
  void pump() override;
  void present(const PixelView& picture, std::span<const PixelRect> areas) override;
  void show() override { m_shown = true; }
  bool isOpen() const override { return m_open; }
  std::uintptr_t handle() const override { return 1; }
  void takeFocus() override;
  void giveFocusBack() override;
  void setPointerShape(PointerShape shape) override { m_pointerShape = shape; }
  std::unique_ptr<NativeWindow> openPopup(int x, int y, int width, int height) override;
  void resize(int width, int height) override;
  PixelRect place() const override { return m_place; }
  void offerText(Selection selection, std::string_view text) override;
  void requestText(Selection selection) override;
  std::unique_ptr<TextBox> openTextBox(const TextBoxLook& look) override {
    return m_textBoxes ? m_textBoxes(look) : nullptr;
  }
  std::chrono::milliseconds now() const override { return m_now; }

  /// Queues an event.
  void inject(WindowEvent event) { m_queue.push_back(std::move(event)); }

  /// Queues a press and release of the left button.
  void click(int x, int y);

  /// The window is gone, as when its parent is destroyed.
  void destroyByOthers();

  /// From now on it has text boxes, as the windows of some systems.
  void setTextBoxes(std::function<std::unique_ptr<TextBox>(const TextBoxLook&)> make) {
    m_textBoxes = std::move(make);
  }

  void advance(std::chrono::milliseconds by) { m_now += by; }

  /// The picture as presented so far.
  PixelView picture() const { return {m_pixels.data(), m_width, m_height}; }

  /// Pixels presented since the last call.
  std::size_t takePresentedPixels();

  bool isShown() const { return m_shown; }
  bool hasFocus() const { return m_focused; }
  PointerShape pointerShape() const { return m_pointerShape; }

  /// The keys pressed since the last call that the listener did not use.
  std::vector<VirtualKey> takePassedOn() { return std::exchange(m_passedOn, {}); }

  /// The popup that is open over this window, or null.
  OffscreenWindow* popup() const { return m_popup; }

  /// What has been offered to other programs.
  const std::string& offered(Selection selection) const {
    return m_selections[static_cast<std::size_t>(selection)];
  }

 private:
  friend class OffscreenWindowSystem;

  int m_width;
  int m_height;
  std::vector<std::uint32_t> m_pixels;
  std::vector<WindowEvent> m_queue;
  std::vector<VirtualKey> m_passedOn;
  std::array<std::string, 2> m_selections;
  std::function<std::unique_ptr<TextBox>(const TextBoxLook&)> m_textBoxes;
  WindowListener* m_listener = nullptr;
  const OffscreenWindowSystem* m_system = nullptr;
  OffscreenWindow* m_owner = nullptr;
  OffscreenWindow* m_popup = nullptr;
  PixelRect m_place;
  std::chrono::milliseconds m_now{0};
  std::size_t m_presented = 0;
  bool m_open = true;
  bool m_shown = false;
  bool m_focused = false;
  PointerShape m_pointerShape = PointerShape::kArrow;
};

/// Makes offscreen windows; outlives them. The last one made can be looked at while it lives.
class OffscreenWindowSystem final : public WindowSystem {
 public:
  std::unique_ptr<NativeWindow> openChild(std::uintptr_t parent, int width,
                                          int height) const override;
  std::unique_ptr<NativeWindow> openTopLevel(const TopLevelLook& look, int width,
                                             int height) const override;

  OffscreenWindow* lastWindow() const { return m_last; }

 private:
  friend class OffscreenWindow;

  mutable OffscreenWindow* m_last = nullptr;
};

} // namespace qlx::platform
