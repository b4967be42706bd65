// SPDX-License-Identifier: ISC
#include "platform/WindowRobot.h"

#include "platform/windows/Windows.h"

#include <algorithm>

namespace qlx::platform {
namespace {

class Win32Robot final : public WindowRobot {
 public:
  std::optional<Picture> picture(std::uintptr_t number, int margin) override {
    const auto window = reinterpret_cast<HWND>(number);
    RECT inside{};
    POINT origin{0, 0};
    if (IsWindowVisible(window) == 0 || GetClientRect(window, &inside) == 0) return std::nullopt;
    ClientToScreen(window, &origin);
    const int left = std::max(0, static_cast<int>(origin.x) - margin);
    const int top = std::max(0, static_cast<int>(origin.y) - margin);
    const int right =
        std::min(GetSystemMetrics(SM_CXSCREEN), static_cast<int>(origin.x + inside.right) + margin);
    const int bottom = std::min(GetSystemMetrics(SM_CYSCREEN),
                                static_cast<int>(origin.y + inside.bottom) + margin);
    if (right <= left || bottom <= top) return std::nullopt;
    Picture result{right - left, bottom - top, {}};

    BITMAPINFO format{};
    format.bmiHeader.biSize = sizeof format.bmiHeader;
    format.bmiHeader.biWidth = result.width;
    format.bmiHeader.biHeight = -result.height; // rows from the top
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    void* pixels = nullptr;
    const HBITMAP bitmap = CreateDIBSection(memory, &format, DIB_RGB_COLORS, &pixels, nullptr, 0);
    const HGDIOBJ before = SelectObject(memory, bitmap);
    const bool copied = bitmap != nullptr && BitBlt(memory, 0, 0, result.width, result.height,
                                                    screen, left, top, SRCCOPY) != 0;
    if (copied) {
      GdiFlush();
      const auto* first = static_cast<const std::uint32_t*>(pixels);
      result.pixels.assign(first,
                           first + static_cast<std::ptrdiff_t>(result.width) * result.height);
      for (std::uint32_t& pixel : result.pixels) pixel |= 0xFF000000U;
    }
    SelectObject(memory, before);
    if (bitmap != nullptr) DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    if (!copied) return std::nullopt;
    return result;
  }

  bool click(std::uintptr_t number, int x, int y) override {
    auto window = reinterpret_cast<HWND>(number);
    if (IsWindow(window) == 0) return false;
    POINT at{x, y};
    const auto innerAt = [&] { return ChildWindowFromPointEx(window, at, CWP_SKIPINVISIBLE); };
    for (HWND inner = innerAt(); inner != nullptr && inner != window; inner = innerAt()) {
      MapWindowPoints(window, inner, &at, 1);
      window = inner;
    }
    const LPARAM where = MAKELPARAM(at.x, at.y);
    PostMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, where);
    PostMessageW(window, WM_LBUTTONUP, 0, where);
    return true;
  }
};

} // namespace

std::unique_ptr<WindowRobot> openWindowRobot() { return std::make_unique<Win32Robot>(); }

} // namespace qlx::platform
