// SPDX-License-Identifier: ISC
#include "platform/NativeWindow.h"
#include "tests/support/ProcessResources.h"
#include "tests/support/VirtualDisplay.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <thread>

namespace {

// In words, as of a display that takes no more (0: what it says itself), and the largest sent.
std::uint32_t requestLimit = 0;
std::uint32_t largestPicture = 0;

template <typename F>
F* next(F* /*type*/, const char* name) {
  return reinterpret_cast<F*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" std::uint32_t xcb_get_maximum_request_length(xcb_connection_t* xcb) {
  return requestLimit != 0
             ? requestLimit
             : next(&xcb_get_maximum_request_length, "xcb_get_maximum_request_length")(xcb);
}

extern "C" xcb_void_cookie_t xcb_put_image(xcb_connection_t* xcb, std::uint8_t format,
                                           xcb_drawable_t to, xcb_gcontext_t gc,
                                           std::uint16_t width, std::uint16_t height,
                                           std::int16_t x, std::int16_t y, std::uint8_t pad,
                                           std::uint8_t depth, std::uint32_t length,
                                           const std::uint8_t* data) {
  constexpr std::uint32_t kHead = sizeof(xcb_put_image_request_t) / 4;
  largestPicture = std::max(largestPicture, kHead + length / 4);
  return next(&xcb_put_image, "xcb_put_image")(xcb, format, to, gc, width, height, x, y, pad, depth,
                                               length, data);
}

namespace qlx::test {
using namespace platform;

namespace {

template <typename T>
std::unique_ptr<T, void (*)(void*)> owned(T* reply) {
  return {reply, std::free};
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

// Plays the host: a connection of its own and a window that editors are put into.
class Host {
 public:
  Host() : m_xcb(xcb_connect(nullptr, nullptr)) {
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_xcb)).data;
    m_window = xcb_generate_id(m_xcb);
    const std::array<std::uint32_t, 2> values{1, XCB_EVENT_MASK_KEY_PRESS |
                                                     XCB_EVENT_MASK_KEY_RELEASE};
    xcb_create_window(m_xcb, XCB_COPY_FROM_PARENT, m_window, m_screen->root, 100, 100, 300, 200, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
    xcb_map_window(m_xcb, m_window);
    sync();
  }
  ~Host() { xcb_disconnect(m_xcb); }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  xcb_connection_t* xcb() const { return m_xcb; }
  xcb_window_t window() const { return m_window; }
  xcb_window_t root() const { return m_screen->root; }

  void sync() { owned(xcb_get_input_focus_reply(m_xcb, xcb_get_input_focus(m_xcb), nullptr)); }
  void focus(xcb_window_t window) {
    xcb_set_input_focus(m_xcb, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    sync();
  }
  xcb_window_t focused() {
    return owned(xcb_get_input_focus_reply(m_xcb, xcb_get_input_focus(m_xcb), nullptr))->focus;
  }
  void destroyWindow() {
    xcb_destroy_window(m_xcb, m_window);
    sync();
  }
  void moveWindow(std::uint32_t x, std::uint32_t y) {
    const std::array<std::uint32_t, 2> place{x, y};
    xcb_configure_window(m_xcb, m_window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place.data());
    sync();
  }
  void warp(std::int16_t x, std::int16_t y) {
    xcb_warp_pointer(m_xcb, XCB_NONE, m_window, 0, 0, 0, 0, x, y);
    sync();
  }
  std::vector<std::uint32_t> pixels(xcb_window_t window, std::uint16_t width,
                                    std::uint16_t height) {
    const auto image = owned(xcb_get_image_reply(
        m_xcb, xcb_get_image(m_xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0, width, height, ~0U),
        nullptr));
    if (image == nullptr) return {};
    const auto* words = reinterpret_cast<const std::uint32_t*>(xcb_get_image_data(image.get()));
    std::vector<std::uint32_t> result(words, words + width * height);
    for (std::uint32_t& pixel : result) pixel |= 0xFF000000U;
    return result;
  }
  std::size_t children(xcb_window_t window) {
    const auto tree = owned(xcb_query_tree_reply(m_xcb, xcb_query_tree(m_xcb, window), nullptr));
    return tree == nullptr ? 0
                           : static_cast<std::size_t>(xcb_query_tree_children_length(tree.get()));
  }
  // The button and key records have one layout.
  void send(std::uintptr_t to, std::uint8_t type, std::uint8_t detail, std::int16_t x,
            std::int16_t y, std::uint16_t state, xcb_timestamp_t time = 0,
            std::uint32_t toWhoAskedFor = XCB_EVENT_MASK_NO_EVENT) {
    xcb_button_press_event_t event{};
    event.response_type = type;
    event.detail = detail;
    event.time = time;
    event.root = root();
    event.event = static_cast<xcb_window_t>(to);
    event.event_x = x;
    event.event_y = y;
    event.state = state;
    event.same_screen = 1;
    xcb_send_event(m_xcb, 0, event.event, toWhoAskedFor, reinterpret_cast<const char*>(&event));
    sync();
  }
  // The keys that came to the window since the last call: "+code" pressed, "-code" released.
  std::string keys() {
    sync();
    std::string all;
    while (const auto event = owned(xcb_poll_for_event(m_xcb))) {
      const auto type = event->response_type & 0x7F;
      if (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE) continue;
      const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(*event);
      EXPECT_EQ(key.event, m_window);
      all += (type == XCB_KEY_PRESS ? " +" : " -") + std::to_string(key.detail);
    }
    return all;
  }

 private:
  xcb_connection_t* m_xcb;
  const xcb_screen_t* m_screen;
  xcb_window_t m_window;
};

constexpr int kWidth = 120;
constexpr int kHeight = 80;

class X11Windows : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(display.isRunning()) << "Xvfb is needed"; }

  void open() {
    host = std::make_unique<Host>();
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
  std::unique_ptr<Host> host;
  std::unique_ptr<NativeWindow> window;
  std::unique_ptr<NativeWindow> other;
};

std::vector<std::uint32_t> testPicture() {
  std::vector<std::uint32_t> pixels(kWidth * kHeight);
  for (std::size_t i = 0; i < pixels.size(); ++i)
    pixels[i] = 0xFF000000U | static_cast<std::uint32_t>(i * 2654435761U >> 8);
  return pixels;
}

void expectPictureArrives(const std::vector<std::string>& serverArguments) {
  const VirtualDisplay display(serverArguments);
  ASSERT_TRUE(display.isRunning());
  Host host;
  const auto window = nativeWindowSystem().openChild(host.window(), kWidth, kHeight);
  ASSERT_NE(window, nullptr);
  window->show();
  std::vector<std::uint32_t> picture = testPicture();
  const PixelView view{picture.data(), kWidth, kHeight};
  const std::array<PixelRect, 1> all{PixelRect{0, 0, kWidth, kHeight}};
  window->present(view, all);
  window->giveFocusBack(); // waits for the display
  const auto number = static_cast<xcb_window_t>(window->handle());
  EXPECT_EQ(host.pixels(number, kWidth, kHeight), picture);
  std::vector<std::uint32_t> expected = picture;
  for (std::uint32_t& pixel : picture) pixel ^= 0xFFFFFFU;
  const std::array<PixelRect, 2> parts{PixelRect{3, 5, 40, 9}, PixelRect{100, 60, 500, 500}};
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      if ((x >= 3 && x < 40 && y >= 5 && y < 9) || (x >= 100 && y >= 60))
        expected[static_cast<std::size_t>(y * kWidth + x)] ^= 0xFFFFFFU;
  window->present(view, parts);
  window->giveFocusBack();
  EXPECT_EQ(host.pixels(number, kWidth, kHeight), expected);
}

TEST(X11Picture, ArrivesThroughSharedMemory) { expectPictureArrives({}); }
TEST(X11Picture, ArrivesThroughTheConnection) { expectPictureArrives({"-extension", "MIT-SHM"}); }

TEST(X11Picture, NoRequestIsLargerThanTheDisplayTakes) {
  constexpr std::uint32_t kNotQuiteNineRows = 9 * kWidth;
  requestLimit = kNotQuiteNineRows;
  largestPicture = 0;
  expectPictureArrives({"-extension", "MIT-SHM"});
  EXPECT_LE(largestPicture, requestLimit);
  EXPECT_GT(largestPicture, 8U * kWidth) << "as many rows as go into one";
  requestLimit = 0;
}

TEST(X11NoDisplay, GivesNoWindow) {
  unsetenv("DISPLAY");
  EXPECT_EQ(nativeWindowSystem().openChild(1234, kWidth, kHeight), nullptr);
  EXPECT_EQ(nativeWindowSystem().openTopLevel({"x"}, kWidth, kHeight), nullptr);
}

TEST_F(X11Windows, NoSuchParentGivesNoWindow) {
  EXPECT_EQ(nativeWindowSystem().openChild(0, kWidth, kHeight), nullptr);
  EXPECT_EQ(nativeWindowSystem().openChild(0x7FFFFF, kWidth, kHeight), nullptr);
}

TEST_F(X11Windows, ParentDestroyedFirst) {
  open();
  host->destroyWindow();
  EXPECT_TRUE(comes(WindowEventType::kClosed));
  EXPECT_FALSE(window->isOpen());
  window->pump();
  window->takeFocus();
  window->giveFocusBack();
  EXPECT_EQ(window->openPopup(0, 0, 10, 10), nullptr);
  const std::vector<std::uint32_t> picture = testPicture();
  const std::array<PixelRect, 1> all{PixelRect{0, 0, kWidth, kHeight}};
  window->present({picture.data(), kWidth, kHeight}, all);
  window->pump();
  EXPECT_EQ(listener.count(WindowEventType::kClosed), 1U);
}

TEST_F(X11Windows, DisplayGoneWhileOpen) {
  open();
  auto popup = window->openPopup(0, 0, 50, 50);
  ASSERT_NE(popup, nullptr);
  display.kill();
  const std::vector<std::uint32_t> picture = testPicture();
  const std::array<PixelRect, 1> all{PixelRect{0, 0, kWidth, kHeight}};
  window->present({picture.data(), kWidth, kHeight}, all);
  EXPECT_TRUE(comes(WindowEventType::kClosed));
  EXPECT_FALSE(window->isOpen());
  window->present({picture.data(), kWidth, kHeight}, all);
  window->offerText(Selection::kClipboard, "x");
  window->takeFocus();
  popup.reset();
  window.reset();
}

// A display that hangs up with something still to be read is written to once more.
TEST_F(X11Windows, DisplayGoneInTheMiddleOfAWrite) {
  signal(SIGPIPE, SIG_DFL);
  open();
  host->send(window->handle(), XCB_BUTTON_PRESS, 1, 5, 6, 0);
  display.kill();
  const std::vector<std::uint32_t> picture = testPicture();
  const std::array<PixelRect, 1> all{PixelRect{0, 0, kWidth, kHeight}};
  window->present({picture.data(), kWidth, kHeight}, all);
  window->giveFocusBack();
  EXPECT_TRUE(comes(WindowEventType::kClosed));
}

TEST_F(X11Windows, TwoEditorsSideBySide) {
  open();
  other = nativeWindowSystem().openChild(host->window(), kWidth, kHeight);
  ASSERT_NE(other, nullptr);
  Listener otherListener;
  other->setListener(&otherListener);
  other->show();
  host->send(other->handle(), XCB_BUTTON_PRESS, 1, 5, 6, 0);
  EXPECT_TRUE(pumpUntil(
      [&otherListener] { return otherListener.count(WindowEventType::kMouseDown) == 1; }));
  EXPECT_EQ(listener.count(WindowEventType::kMouseDown), 0U);
}

struct ButtonCase {
  const char* what;
  std::uint8_t detail;
  std::uint16_t state;
  xcb_timestamp_t after; // milliseconds since the last one
  std::int16_t x;
  WindowEventType type;
  std::uint32_t button;
  bool doubleClick;
  float distance;
};

TEST_F(X11Windows, ButtonsAndDoubleClicks) {
  using enum WindowEventType;
  const ButtonCase cases[]{
      {"first", 1, 0, 1000, 10, kMouseDown, kPointerLeft, false, 0},
      {"soon after", 1, 0, 300, 12, kMouseDown, kPointerLeft, true, 0},
      {"a third starts anew", 1, 0, 100, 12, kMouseDown, kPointerLeft, false, 0},
      {"too late", 1, 0, 500, 12, kMouseDown, kPointerLeft, false, 0},
      {"too far", 1, 0, 100, 30, kMouseDown, kPointerLeft, false, 0},
      {"another button", 3, 0, 100, 30, kMouseDown, kPointerRight, false, 0},
      {"middle", 2, XCB_MOD_MASK_SHIFT, 900, 30, kMouseDown, kPointerMiddle, false, 0},
      {"wheel up", 4, 0, 1, 30, kWheel, 0, false, 1.0F},
      {"wheel down", 5, 0, 1, 30, kWheel, 0, false, -1.0F},
  };
  open();
  xcb_timestamp_t time = 5000;
  for (const ButtonCase& c : cases) {
    SCOPED_TRACE(c.what);
    listener.events.clear();
    time += c.after;
    host->send(window->handle(), XCB_BUTTON_PRESS, c.detail, c.x, 20, c.state, time);
    ASSERT_TRUE(comes(c.type));
    const WindowEvent& event = *listener.last(c.type);
    EXPECT_EQ(event.button, c.button);
    EXPECT_EQ(event.doubleClick, c.doubleClick);
    EXPECT_EQ(event.distance, c.distance);
    EXPECT_EQ(event.x, c.x);
    EXPECT_EQ(event.modifiers, c.state != 0 ? kModifierShift : 0U);
    host->send(window->handle(), XCB_BUTTON_RELEASE, c.detail, c.x, 20, 0, time);
  }
}

TEST_F(X11Windows, MovesAreMergedAndLeavingIsTold) {
  open();
  host->warp(10, 10);
  host->warp(20, 20);
  host->warp(30, 35);
  host->sync();
  ASSERT_TRUE(comes(WindowEventType::kMouseMove));
  EXPECT_EQ(listener.count(WindowEventType::kMouseMove), 1U);
  EXPECT_EQ(listener.last(WindowEventType::kMouseMove)->x, 30);
  EXPECT_EQ(listener.last(WindowEventType::kMouseMove)->y, 35);
  host->warp(290, 190);
  EXPECT_TRUE(comes(WindowEventType::kMouseLeave));
}

TEST_F(X11Windows, FocusIsTakenAndGivenBack) {
  open();
  host->focus(host->window());
  window->takeFocus();
  EXPECT_TRUE(comes(WindowEventType::kFocusGained));
  EXPECT_EQ(host->focused(), window->handle());
  window->giveFocusBack();
  EXPECT_TRUE(comes(WindowEventType::kFocusLost));
  EXPECT_EQ(host->focused(), host->window());
  window->takeFocus();
  host->focus(XCB_INPUT_FOCUS_POINTER_ROOT);
  window->giveFocusBack();
  EXPECT_EQ(host->focused(), static_cast<xcb_window_t>(XCB_INPUT_FOCUS_POINTER_ROOT))
      << "what was taken elsewhere is left there";
}

TEST_F(X11Windows, FocusOfTheWindowManagersIsFocusToo) {
  open();
  const auto key = [this] {
    host->send(window->handle(), XCB_KEY_PRESS, 65, 0, 0, 0, 0, XCB_EVENT_MASK_KEY_PRESS);
    window->pump();
    return listener.count(WindowEventType::kKeyDown);
  };
  EXPECT_EQ(key(), 0U) << "no keys are asked for without the focus";
  host->focus(static_cast<xcb_window_t>(window->handle()));
  ASSERT_TRUE(comes(WindowEventType::kFocusGained));
  EXPECT_TRUE(pumpUntil([&key] { return key() > 0; }));
}

TEST_F(X11Windows, FocusLossForAPressOnTheWindowItselfIsNone) {
  open();
  window->takeFocus();
  ASSERT_TRUE(comes(WindowEventType::kFocusGained));
  for (const bool late : {false, true}) {
    SCOPED_TRACE(late);
    listener.events.clear();
    host->focus(host->window());
    if (late) window->pump();
    host->send(window->handle(), XCB_BUTTON_PRESS, 1, 5, 6, 0);
    for (int i = 0; i < 3; ++i) window->pump();
    EXPECT_EQ(listener.count(WindowEventType::kMouseDown), 1U);
    EXPECT_EQ(listener.count(WindowEventType::kFocusLost), 0U);
    EXPECT_EQ(host->focused(), window->handle());
    host->send(window->handle(), XCB_BUTTON_RELEASE, 1, 5, 6, 0);
    window->pump();
  }
  host->focus(host->window());
  EXPECT_TRUE(comes(WindowEventType::kFocusLost)) << "without a press it is one";
}

TEST_F(X11Windows, UnusedKeysGoToWhatHadTheFocus) {
  open();
  for (const xcb_window_t before : {host->window(), xcb_window_t{XCB_INPUT_FOCUS_POINTER_ROOT}}) {
    SCOPED_TRACE(before);
    host->focus(before);
    listener.events.clear();
    window->takeFocus();
    ASSERT_TRUE(comes(WindowEventType::kFocusGained));
    const auto key = [this](std::uint8_t type, std::uint8_t code, bool used) {
      listener.usesKeys = used;
      host->send(window->handle(), type, code, 0, 0, 0);
      window->pump();
    };
    key(XCB_KEY_PRESS, 65, false);
    key(XCB_KEY_RELEASE, 65, true);
    key(XCB_KEY_PRESS, 38, true);
    key(XCB_KEY_RELEASE, 38, false);
    key(XCB_KEY_RELEASE, 40, false);
    EXPECT_EQ(host->keys(), " +65 -65 -40") << "a release follows its press";
    window->giveFocusBack();
    ASSERT_TRUE(comes(WindowEventType::kFocusLost));
  }
  host->destroyWindow();
}

struct KeyCase {
  xcb_keysym_t symbol;
  std::uint16_t state;
  VirtualKey key;
  char32_t character;
  const char* text;
};

TEST_F(X11Windows, KeysAndText) {
  constexpr xcb_keycode_t kFirst = 200; // keys that no real keyboard of the test has
  constexpr xcb_keysym_t kDeadAcute = 0xFE51;
  const KeyCase cases[]{
      {'a', 0, VirtualKey::kNone, U'a', "a"},
      {'a', XCB_MOD_MASK_SHIFT, VirtualKey::kNone, U'A', "A"},
      {'c', XCB_MOD_MASK_CONTROL, VirtualKey::kNone, U'c', ""},
      {0xE4, 0, VirtualKey::kNone, U'\u00E4', "\xC3\xA4"},
      {kDeadAcute, 0, VirtualKey::kNone, 0, ""},
      {'e', 0, VirtualKey::kNone, U'e', "\xC3\xA9"},
      {' ', 0, VirtualKey::kSpace, U' ', " "},
      {0xFF0D, 0, VirtualKey::kReturn, 0, ""},
      {0xFF8D, 0, VirtualKey::kEnter, 0, ""},
      {0xFF1B, 0, VirtualKey::kEscape, 0, ""},
      {0xFF52, 0, VirtualKey::kUp, 0, ""},
      {0xFF50, XCB_MOD_MASK_SHIFT, VirtualKey::kHome, 0, ""},
      {0xFFFF, 0, VirtualKey::kDelete, 0, ""},
  };
  open();
  xcb_keycode_t code = kFirst;
  for (const KeyCase& c : cases) {
    const std::array<xcb_keysym_t, 2> symbols{
        c.symbol, c.symbol >= 'a' && c.symbol <= 'z' ? c.symbol - 32 : c.symbol};
    xcb_change_keyboard_mapping(host->xcb(), 1, code++, 2, symbols.data());
  }
  host->sync();
  code = kFirst;
  for (const KeyCase& c : cases) {
    SCOPED_TRACE(c.symbol);
    listener.events.clear();
    host->send(window->handle(), XCB_KEY_PRESS, code++, 0, 0, c.state);
    ASSERT_TRUE(comes(WindowEventType::kKeyDown));
    const WindowEvent& event = *listener.last(WindowEventType::kKeyDown);
    EXPECT_EQ(event.key, c.key);
    EXPECT_EQ(event.character, c.character);
    EXPECT_EQ(event.text, c.text);
  }
  constexpr xcb_keysym_t kAnother = 'y';
  xcb_change_keyboard_mapping(host->xcb(), 1, kFirst, 1, &kAnother);
  listener.events.clear();
  host->send(window->handle(), XCB_KEY_PRESS, kFirst, 0, 0, 0);
  ASSERT_TRUE(comes(WindowEventType::kKeyDown));
  EXPECT_EQ(listener.last(WindowEventType::kKeyDown)->text, "y") << "the map has changed since";
  // Two layouts: the event says which of them is in force.
  ASSERT_EQ(std::system("setxkbmap us,de"), 0);
  constexpr std::uint16_t kSecondGroup = 1U << 13;
  for (const std::uint16_t state : {std::uint16_t{0}, kSecondGroup}) {
    listener.events.clear();
    host->send(window->handle(), XCB_KEY_PRESS, 29, 0, 0, state);
    ASSERT_TRUE(comes(WindowEventType::kKeyDown));
    EXPECT_EQ(listener.last(WindowEventType::kKeyDown)->text, state == 0 ? "y" : "z");
  }
}

TEST_F(X11Windows, TextGoesBetweenPrograms) {
  open();
  other = nativeWindowSystem().openChild(host->window(), 10, 10);
  for (const Selection selection : {Selection::kClipboard, Selection::kPrimary}) {
    listener.events.clear();
    const std::string text = selection == Selection::kPrimary ? "prim\xC3\xA4r" : "Tremolo";
    other->offerText(selection, text);
    other->giveFocusBack(); // waits until the display knows
    window->requestText(selection);
    ASSERT_TRUE(comes(WindowEventType::kSelectionText));
    EXPECT_EQ(listener.last(WindowEventType::kSelectionText)->text, text);
  }
  other.reset();
  ASSERT_TRUE(pumpUntil([this] { return host->children(host->window()) == 1; }));
  listener.events.clear();
  window->requestText(Selection::kClipboard);
  ASSERT_TRUE(comes(WindowEventType::kSelectionText)) << "its owner is gone";
  EXPECT_EQ(listener.last(WindowEventType::kSelectionText)->text, "");
  window->offerText(Selection::kClipboard, "own");
  listener.events.clear();
  window->requestText(Selection::kClipboard);
  ASSERT_TRUE(comes(WindowEventType::kSelectionText));
  EXPECT_EQ(listener.last(WindowEventType::kSelectionText)->text, "own");
}

TEST_F(X11Windows, PopupStaysOnTheScreen) {
  open();
  struct Case {
    int x, y;
    PixelRect place; // the host's window lies at (100, 100) of 640 x 480
  };
  const Case cases[]{{10, 20, {10, 20, 110, 70}},
                     {-500, -500, {-100, -100, 0, -50}},
                     {1000, 1000, {440, 330, 540, 380}}};
  for (const Case& c : cases) {
    const auto popup = window->openPopup(c.x, c.y, 100, 50);
    ASSERT_NE(popup, nullptr);
    EXPECT_EQ(popup->place(), c.place);
    EXPECT_EQ(window->openPopup(0, 0, 5, 5), nullptr) << "one at a time";
  }
}

TEST_F(X11Windows, PopupIsToldWhenItsOwnerMovesOrHides) {
  open();
  auto popup = window->openPopup(0, 0, 100, 50);
  popup->show();
  window->pump();
  EXPECT_EQ(listener.count(WindowEventType::kPressOutside), 0U);
  host->moveWindow(150, 100);
  window->pump();
  EXPECT_EQ(listener.count(WindowEventType::kPressOutside), 1U);
  popup.reset();
  popup = window->openPopup(0, 0, 100, 50);
  xcb_unmap_window(host->xcb(), host->window());
  host->sync();
  window->pump();
  EXPECT_EQ(listener.count(WindowEventType::kPressOutside), 2U);
}

TEST_F(X11Windows, PopupGetsItsOwnEvents) {
  open();
  const auto popup = window->openPopup(0, 0, 100, 50);
  Listener ofPopup;
  popup->setListener(&ofPopup);
  popup->show();
  host->send(popup->handle(), XCB_BUTTON_PRESS, 1, 7, 8, 0);
  EXPECT_TRUE(pumpUntil([&ofPopup] { return ofPopup.count(WindowEventType::kMouseDown) == 1; }));
  EXPECT_EQ(listener.count(WindowEventType::kMouseDown), 0U);
}

TEST_F(X11Windows, AThousandTimesLeaveNothingBehind) {
  open();
  window.reset();
  const std::vector<std::uint32_t> picture = testPicture();
  const std::array<PixelRect, 1> all{PixelRect{0, 0, kWidth, kHeight}};
  const auto cycle = [&] {
    const auto fresh = nativeWindowSystem().openChild(host->window(), kWidth, kHeight);
    ASSERT_NE(fresh, nullptr);
    fresh->show();
    fresh->present({picture.data(), kWidth, kHeight}, all);
    const auto popup = fresh->openPopup(0, 0, 20, 20);
    fresh->pump();
  };
  for (int i = 0; i < 20; ++i) cycle();
  const std::size_t descriptors = openDescriptors();
  const std::size_t memory = heapBytes();
  for (int i = 0; i < 1000; ++i) cycle();
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_LT(heapBytes(), memory + 16384U);
  // The display lets go of its side a little later.
  EXPECT_TRUE(pumpUntil([this] { return host->children(host->window()) == 0; }));
  EXPECT_TRUE(pumpUntil([] { return sharedSegments() == 0; }));
}

} // namespace
} // namespace qlx::test
