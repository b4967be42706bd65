// SPDX-License-Identifier: ISC
// How pictures reach the display.
#include "tests/platform/X11Rig.h"

namespace {

// In words, as of a display that takes no more (0: what it says itself), and the largest sent.
std::uint32_t requestLimit = 0;
std::uint32_t largestPicture = 0;

} // namespace

extern "C" std::uint32_t xcb_get_maximum_request_length(xcb_connection_t* xcb) {
  return requestLimit != 0 ? requestLimit
                           : qlx::test::next(&xcb_get_maximum_request_length,
                                             "xcb_get_maximum_request_length")(xcb);
}

extern "C" xcb_void_cookie_t xcb_put_image(xcb_connection_t* xcb, std::uint8_t format,
                                           xcb_drawable_t to, xcb_gcontext_t gc,
                                           std::uint16_t width, std::uint16_t height,
                                           std::int16_t x, std::int16_t y, std::uint8_t pad,
                                           std::uint8_t depth, std::uint32_t length,
                                           const std::uint8_t* data) {
  constexpr std::uint32_t kHead = sizeof(xcb_put_image_request_t) / 4;
  largestPicture = std::max(largestPicture, kHead + length / 4);
  return qlx::test::next(&xcb_put_image, "xcb_put_image")(xcb, format, to, gc, width, height, x, y,
                                                          pad, depth, length, data);
}

namespace qlx::test {
namespace {

void expectPictureArrives(const std::vector<std::string>& serverArguments) {
  const VirtualDisplay display(serverArguments);
  ASSERT_TRUE(display.isRunning());
  X11Host host(PixelRect{100, 100, 400, 300});
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

} // namespace
} // namespace qlx::test
