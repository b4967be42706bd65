// SPDX-License-Identifier: ISC
#include "platform/offscreen/OffscreenWindow.h"

#include <algorithm>
#include <utility>

namespace qlx::platform {

OffscreenWindow::OffscreenWindow(int width, int height)
    : m_width(width), m_height(height),
      m_pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)), m_place{
                                                                                        0, 0, width,
                                                                                        height} {}

OffscreenWindow::~OffscreenWindow() {
  if (m_owner != nullptr) m_owner->m_popup = nullptr;
  if (m_system != nullptr && m_system->m_last == this) m_system->m_last = nullptr;
}

void OffscreenWindow::pump() {
  const std::vector<WindowEvent> events = std::exchange(m_queue, {});
  for (const WindowEvent& event : events) {
    const bool used = m_listener != nullptr && m_listener->onWindowEvent(event);
    if (!used && event.type == WindowEventType::kKeyDown) m_passedOn.push_back(event.key);
  }
  if (m_popup != nullptr) m_popup->pump();
}

void OffscreenWindow::present(const PixelView& picture, std::span<const PixelRect> areas) {
  if (!m_open) return;
  for (const PixelRect& area : areas) {
    for (int y = area.top; y < area.bottom; ++y) {
      const auto row = static_cast<std::ptrdiff_t>(y) * m_width;
      std::copy(picture.pixels + row + area.left, picture.pixels + row + area.right,
                m_pixels.begin() + row + area.left);
    }
    m_presented += static_cast<std::size_t>(area.width() * area.height());
  }
}

void OffscreenWindow::resize(int width, int height) {
  m_width = width;
  m_height = height;
  m_pixels.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0U);
  m_place = {m_place.left, m_place.top, m_place.left + width, m_place.top + height};
}

void OffscreenWindow::takeFocus() { m_focused = m_open; }
void OffscreenWindow::giveFocusBack() { m_focused = false; }

std::unique_ptr<NativeWindow> OffscreenWindow::openPopup(int x, int y, int width, int height) {
  if (!m_open || m_popup != nullptr) return nullptr;
  auto popup = std::make_unique<OffscreenWindow>(width, height);
  popup->m_owner = this;
  popup->m_place = {x, y, x + width, y + height};
  m_popup = popup.get();
  return popup;
}

void OffscreenWindow::offerText(Selection selection, std::string_view text) {
  m_selections[static_cast<std::size_t>(selection)] = text;
}

void OffscreenWindow::requestText(Selection selection) {
  WindowEvent event;
  event.type = WindowEventType::kSelectionText;
  event.text = m_selections[static_cast<std::size_t>(selection)];
  inject(std::move(event));
}

void OffscreenWindow::click(int x, int y) {
  WindowEvent event;
  event.type = WindowEventType::kMouseDown;
  event.x = x;
  event.y = y;
  event.button = kPointerLeft;
  event.buttons = kPointerLeft;
  inject(event);
  event.type = WindowEventType::kMouseUp;
  event.buttons = 0;
  inject(event);
}

void OffscreenWindow::destroyByOthers() {
  WindowEvent event;
  event.type = WindowEventType::kClosed;
  m_open = false;
  inject(std::move(event));
}

std::size_t OffscreenWindow::takePresentedPixels() { return std::exchange(m_presented, 0); }

std::unique_ptr<NativeWindow> OffscreenWindowSystem::openChild(std::uintptr_t parent, int width,
                                                               int height) const {
  return parent == 0 ? nullptr : openTopLevel(TopLevelLook{}, width, height);
}

std::unique_ptr<NativeWindow> OffscreenWindowSystem::openTopLevel(const TopLevelLook& /*look*/,
                                                                  int width, int height) const {
  auto window = std::make_unique<OffscreenWindow>(width, height);
  window->m_system = this;
  m_last = window.get();
  return window;
}

} // namespace qlx::platform
