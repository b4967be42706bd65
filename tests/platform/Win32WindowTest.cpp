// SPDX-License-Identifier: ISC
#include "platform/NativeWindow.h"
#include "platform/WindowRobot.h"
#include "platform/windows/Windows.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <thread>

namespace qlx::test {
namespace {

using namespace platform;
using Type = WindowEventType;

struct Listener final : WindowListener {
  bool onWindowEvent(const WindowEvent& event) override {
    if (event.type == Type::kTick)
      ++ticks;
    else
      events.push_back(event);
    return usesKeys;
  }
  const WindowEvent* last(Type type) const {
    const auto found = std::find_if(events.rbegin(), events.rend(),
                                    [type](const WindowEvent& e) { return e.type == type; });
    return found == events.rend() ? nullptr : &*found;
  }
  std::vector<WindowEvent> events;
  int ticks = 0;
  bool usesKeys = true;
};

/// A host: a top-level window with a loop, and our window in it.
class Win32WindowTest : public ::testing::Test {
 protected:
  static constexpr int kWidth = 60;
  static constexpr int kHeight = 40;

  Win32WindowTest() {
    hostKeys().clear();
    WNDCLASSW description{};
    description.lpfnWndProc = hostProcedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = L"TestHost";
    RegisterClassW(&description);
    host = CreateWindowW(L"TestHost", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 50, 300, 200,
                         nullptr, nullptr, description.hInstance, nullptr);
    window =
        nativeWindowSystem().openChild(reinterpret_cast<std::uintptr_t>(host), kWidth, kHeight);
    window->setListener(&listener);
    window->show();
    turn();
    listener.events.clear();
  }
  ~Win32WindowTest() override {
    window.reset();
    DestroyWindow(host);
  }

  static std::vector<WPARAM>& hostKeys() {
    static std::vector<WPARAM> keys;
    return keys;
  }
  static LRESULT CALLBACK hostProcedure(HWND at, UINT message, WPARAM word, LPARAM details) {
    if (message == WM_KEYDOWN) hostKeys().push_back(word);
    return DefWindowProcW(at, message, word, details);
  }

  /// The host's loop until nothing is left to be done.
  static void messages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }
  void turn() {
    messages();
    window->pump();
    messages();
  }
  HWND own() const { return reinterpret_cast<HWND>(window->handle()); }
  void post(UINT message, WPARAM word, int x, int y) {
    PostMessageW(own(), message, word, MAKELPARAM(x, y));
  }

  HWND host = nullptr;
  Listener listener;
  std::unique_ptr<NativeWindow> window;
};

TEST_F(Win32WindowTest, ShowsThePartsThatArePresented) {
  std::vector<std::uint32_t> pixels(kWidth * kHeight, 0xFF204060U);
  const PixelView picture{pixels.data(), kWidth, kHeight};
  const PixelRect all{0, 0, kWidth, kHeight};
  window->present(picture, {&all, 1});
  std::fill(pixels.begin(), pixels.end(), 0xFFFF0000U);
  const PixelRect part{50, 30, 500, 500}; // more than there is
  window->present(picture, {&part, 1});
  messages();
  const auto seen = openWindowRobot()->picture(window->handle(), 0);
  ASSERT_TRUE(seen);
  ASSERT_EQ(seen->width, kWidth);
  ASSERT_EQ(seen->height, kHeight);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      ASSERT_EQ(seen->pixels[static_cast<std::size_t>(y * kWidth + x)],
                x >= 50 && y >= 30 ? 0xFFFF0000U : 0xFF204060U)
          << x << ", " << y;
}

TEST_F(Win32WindowTest, PointerMessagesBecomeEvents) {
  post(WM_MOUSEMOVE, 0, 1, 1);
  post(WM_MOUSEMOVE, 0, 3, 4); // both are told as one
  post(WM_LBUTTONDOWN, MK_LBUTTON, 3, 4);
  post(WM_LBUTTONUP, 0, -5, 70);
  post(WM_LBUTTONDBLCLK, MK_LBUTTON, 3, 4);
  post(WM_LBUTTONUP, 0, 3, 4);
  turn();
  std::vector<WindowEvent> seen;
  for (const WindowEvent& event : listener.events)
    if (event.type <= Type::kMouseMove) seen.push_back(event);
  ASSERT_GE(seen.size(), 5U);
  EXPECT_EQ(seen[0].type, Type::kMouseMove);
  EXPECT_EQ(seen[0].x, 3);
  EXPECT_EQ(seen[1].type, Type::kMouseDown);
  EXPECT_EQ(seen[1].button, kPointerLeft);
  EXPECT_FALSE(seen[1].doubleClick);
  EXPECT_EQ(seen[2].type, Type::kMouseUp);
  EXPECT_EQ(seen[2].x, -5);
  EXPECT_EQ(seen[2].y, 70);
  EXPECT_TRUE(seen[3].doubleClick);

  POINT where{10, 20};
  ClientToScreen(own(), &where);
  post(WM_MOUSEWHEEL, static_cast<WPARAM>(static_cast<std::uint32_t>(-60) << 16), where.x, where.y);
  turn();
  const WindowEvent* wheel = listener.last(Type::kWheel);
  ASSERT_NE(wheel, nullptr);
  EXPECT_EQ(wheel->distance, -0.5F);
  EXPECT_EQ(wheel->x, 10);
  EXPECT_EQ(wheel->y, 20);
}

TEST_F(Win32WindowTest, APressHoldsThePointerUntilItsReleaseOrItsLoss) {
  post(WM_LBUTTONDOWN, MK_LBUTTON, 3, 4);
  turn();
  EXPECT_EQ(GetCapture(), own());
  SetCapture(host);
  turn();
  ASSERT_NE(listener.last(Type::kMouseUp), nullptr);
  EXPECT_EQ(listener.last(Type::kMouseUp)->button, kPointerLeft);
  ReleaseCapture();
}

TEST_F(Win32WindowTest, UnusedKeysGoOnToTheWindowThatHadTheFocus) {
  SetForegroundWindow(host);
  SetFocus(host);
  turn();
  window->takeFocus();
  ASSERT_EQ(GetFocus(), own());
  for (const bool used : {true, false}) {
    listener.usesKeys = used;
    PostMessageW(own(), WM_KEYDOWN, 'A', 0x001E0001);
    PostMessageW(own(), WM_KEYUP, 'A', static_cast<LPARAM>(0xC01E0001));
    turn();
    const WindowEvent* key = listener.last(Type::kKeyDown);
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(key->text, "a");
    EXPECT_EQ(hostKeys().size(), used ? 0U : 1U);
  }
  window->giveFocusBack();
  EXPECT_EQ(GetFocus(), host);
}

class TextBoxTest : public Win32WindowTest {
 protected:
  static constexpr PixelRect kField{5, 10, 55, 30};

  void open(const char* text) {
    SetForegroundWindow(host);
    SetFocus(host);
    window->takeFocus();
    const std::vector<std::uint32_t> green(50 * 20, 0xFF00FF00U);
    box = window->openTextBox({.text = text,
                               .field = kField,
                               .background = {green.data(), 50, 20},
                               .colour = 0x0000FF,
                               .fontHeight = 11,
                               .align = TextBoxLook::Align::Centre,
                               .limit = 5});
    ASSERT_NE(box, nullptr);
    edit = GetFocus();
    turn();
    listener.events.clear();
  }
  void type(wchar_t letter) {
    PostMessageW(edit, WM_CHAR, letter, 1);
    turn();
  }

  std::unique_ptr<TextBox> box;
  HWND edit = nullptr;
};

TEST_F(TextBoxTest, LiesInTheMiddleOfTheFieldAndShowsItsBackground) {
  open("Größe");
  EXPECT_NE(edit, own());
  EXPECT_EQ(GetParent(edit), own());
  EXPECT_EQ(window->openTextBox(TextBoxLook{}), nullptr); // one at a time
  RECT place{};
  GetClientRect(edit, &place);
  MapWindowPoints(edit, own(), reinterpret_cast<POINT*>(&place), 2);
  EXPECT_EQ(place.left, kField.left);
  EXPECT_EQ(place.right, kField.right);
  EXPECT_LE(std::abs((place.top + place.bottom) - (kField.top + kField.bottom)), 1);
  DWORD from = 0;
  DWORD to = 0;
  SendMessageW(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
  EXPECT_EQ(from, 0U);
  EXPECT_EQ(to, 5U);
  box->setText("");
  messages();
  const auto seen = openWindowRobot()->picture(reinterpret_cast<std::uintptr_t>(edit), 0);
  ASSERT_TRUE(seen);
  EXPECT_EQ(seen->pixels[5], 0xFF00FF00U);
}

TEST_F(TextBoxTest, TellsTextEndAndLossOfTheKeyboard) {
  open("old");
  type(L'ä');
  type(L'日');
  ASSERT_NE(listener.last(Type::kTextBoxChanged), nullptr);
  EXPECT_EQ(listener.last(Type::kTextBoxChanged)->text, "ä日");
  EXPECT_EQ(box->text(), "ä日");
  for (int i = 0; i < 5; ++i) type(L'x');
  EXPECT_EQ(box->text(), "ä日xxx");
  for (const auto& [key, virtualKey] :
       {std::pair{VK_RETURN, VirtualKey::kReturn}, std::pair{VK_ESCAPE, VirtualKey::kEscape},
        std::pair{VK_TAB, VirtualKey::kTab}}) {
    listener.events.clear();
    PostMessageW(edit, WM_KEYDOWN, static_cast<WPARAM>(key), 1);
    turn();
    ASSERT_NE(listener.last(Type::kKeyDown), nullptr);
    EXPECT_EQ(listener.last(Type::kKeyDown)->key, virtualKey);
  }
  EXPECT_EQ(box->text(), "ä日xxx");
  EXPECT_EQ(listener.last(Type::kFocusLost), nullptr);
  SetFocus(host);
  turn();
  EXPECT_NE(listener.last(Type::kFocusLost), nullptr);
}

TEST_F(TextBoxTest, ItsEndLeavesTheKeyboardToTheWindow) {
  open("a");
  box.reset();
  EXPECT_EQ(GetFocus(), own());
  EXPECT_EQ(IsWindow(edit), 0);
  turn();
  EXPECT_EQ(listener.last(Type::kFocusLost), nullptr);
  window->giveFocusBack();
  EXPECT_EQ(GetFocus(), host);

  open("b");
  SetFocus(host);
  box.reset();
  EXPECT_EQ(GetFocus(), host); // it had lost it

  open("c");
  DestroyWindow(host);
  EXPECT_EQ(box->text(), "");
  box->setText("d");
  box.reset();
}

TEST_F(Win32WindowTest, APopupTakesNoFocusAndStaysOnTheScreen) {
  SetFocus(host);
  const HWND before = GetFocus();
  auto popup = window->openPopup(-5000, 5, 30, 20);
  ASSERT_NE(popup, nullptr);
  EXPECT_EQ(window->openPopup(0, 0, 5, 5), nullptr); // one at a time
  popup->show();
  turn();
  EXPECT_EQ(GetFocus(), before);
  RECT place{};
  GetWindowRect(reinterpret_cast<HWND>(popup->handle()), &place);
  EXPECT_EQ(place.left, 0);
  EXPECT_EQ(place.right, 30);
  EXPECT_EQ(popup->place().width(), 30);
  EXPECT_EQ(listener.last(Type::kPressOutside), nullptr);
  ShowWindow(host, SW_HIDE);
  turn();
  EXPECT_NE(listener.last(Type::kPressOutside), nullptr);
}

TEST_F(Win32WindowTest, TextGoesThroughTheClipboard) {
  window->offerText(Selection::kClipboard, "Größe 日本");
  window->requestText(Selection::kClipboard);
  turn();
  ASSERT_NE(listener.last(Type::kSelectionText), nullptr);
  EXPECT_EQ(listener.last(Type::kSelectionText)->text, "Größe 日本");
}

TEST_F(Win32WindowTest, TicksComeOnlyWhileNobodyPumps) {
  const auto countedTicks = [this](bool pumping) {
    listener.ticks = 0;
    for (int i = 0; i < 100; ++i) {
      messages();
      if (pumping) window->pump();
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return listener.ticks;
  };
  const int pumped = countedTicks(true);
  EXPECT_GT(countedTicks(false), pumped);
}

TEST_F(Win32WindowTest, AWindowThatHasGoneAcceptsEveryCall) {
  DestroyWindow(host);
  turn();
  EXPECT_FALSE(window->isOpen());
  EXPECT_NE(listener.last(Type::kClosed), nullptr);
  const std::uint32_t pixel = 0;
  const PixelRect all{0, 0, 1, 1};
  window->present({&pixel, 1, 1}, {&all, 1});
  window->show();
  window->takeFocus();
  window->setPointerShape(PointerShape::kHand);
  EXPECT_EQ(window->openPopup(0, 0, 5, 5), nullptr);
}

TEST(Win32WindowSystem, AChildNeedsAParent) {
  EXPECT_EQ(nativeWindowSystem().openChild(0, 5, 5), nullptr);
  EXPECT_EQ(nativeWindowSystem().openChild(0x7FFF0, 5, 5), nullptr);
}

TEST(Win32WindowSystem, ATopLevelWindowHasItsTitleAndSize) {
  const std::uint32_t icon[4] = {};
  const auto window =
      nativeWindowSystem().openTopLevel({"Größe", "brezan", {icon, 2, 2}}, 270, 130);
  ASSERT_NE(window, nullptr);
  const auto own = reinterpret_cast<HWND>(window->handle());
  wchar_t title[32]{};
  GetWindowTextW(own, title, 32);
  EXPECT_EQ(std::wstring(title), L"Größe");
  RECT inside{};
  GetClientRect(own, &inside);
  EXPECT_EQ(inside.right, 270);
  EXPECT_EQ(inside.bottom, 130);
  Listener listener;
  window->setListener(&listener);
  PostMessageW(own, WM_CLOSE, 0, 0); // nobody but the window itself fetches it
  window->pump();
  EXPECT_NE(listener.last(Type::kClosed), nullptr);
  EXPECT_TRUE(window->isOpen()); // that is for its owner to decide
}

} // namespace
} // namespace qlx::test
