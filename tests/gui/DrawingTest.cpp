// SPDX-License-Identifier: ISC
#include "gui/DirtyRegion.h"
#include "gui/drawing/CBitmap.h"
#include "gui/drawing/CDrawContext.h"
#include "gui/drawing/COffscreenContext.h"
#include "gui/drawing/Utf8.h"
#include "tests/gui/FrameFixture.h"

#include <cairo.h>

#include <array>
#include <random>

namespace qlx::test {

namespace {

TEST(Utf8, ReadsAndRepairs) {
  struct Case {
    const char* bytes;
    std::u32string characters;
  };
  const Case cases[]{
      {"az", U"az"},
      {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xB9", U"\u00E4\u20AC\U0001F3B9"},
      {"a\xC3", U"a\uFFFD"},                   // cut
      {"\xE2\x82z", U"\uFFFD\uFFFDz"},         // cut in the middle
      {"\xC0\xAF", U"\uFFFD\uFFFD"},           // overlong
      {"\xED\xA0\x80", U"\uFFFD\uFFFD\uFFFD"}, // surrogate
      {"\xF4\x90\x80\x80", U"\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"\x80", U"\uFFFD"},
  };
  for (const Case& c : cases) EXPECT_EQ(fromUtf8(c.bytes), c.characters);
  EXPECT_EQ(toUtf8(U"a\u00E4\u20AC\U0001F3B9"), "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xB9");
  EXPECT_EQ(firstCharacters("\xC3\xA4\xC3\xA4x", 2), "\xC3\xA4\xC3\xA4");
  EXPECT_EQ(firstCharacters("ab", 5), "ab");
}

TEST(DirtyRegion, KeepsEveryAreaWholeInsideOne) {
  std::mt19937 random(3);
  const PixelRect bounds{0, 0, 400, 500};
  for (int round = 0; round < 200; ++round) {
    DirtyRegion region(bounds);
    std::vector<PixelRect> added;
    for (auto i = random() % 60; i > 0; --i) {
      const int x = static_cast<int>(random() % 420) - 10;
      const int y = static_cast<int>(random() % 520) - 10;
      const PixelRect area{x, y, x + 1 + static_cast<int>(random() % 30),
                           y + 1 + static_cast<int>(random() % 30)};
      region.add(area);
      added.push_back(platform::intersection(area, bounds));
    }
    const auto areas = region.areas();
    for (const PixelRect& area : added)
      EXPECT_TRUE(area.empty() || std::any_of(areas.begin(), areas.end(), [&](const PixelRect& a) {
                    return CRect::of(a).contains(CRect::of(area));
                  }));
    for (std::size_t i = 0; i < areas.size(); ++i)
      for (std::size_t k = i + 1; k < areas.size(); ++k)
        EXPECT_TRUE(platform::intersection(areas[i], areas[k]).empty());
  }
}

std::vector<std::uint8_t> pngOf(PixelBuffer pixels) {
  std::vector<std::uint8_t> bytes;
  cairo_surface_t* surface = cairo_image_surface_create_for_data(
      reinterpret_cast<unsigned char*>(pixels.pixels.data()), CAIRO_FORMAT_ARGB32, pixels.width,
      pixels.height, pixels.width * 4);
  cairo_surface_write_to_png_stream(
      surface,
      [](void* closure, const unsigned char* data, unsigned int length) {
        auto& out = *static_cast<std::vector<std::uint8_t>*>(closure);
        out.insert(out.end(), data, data + length);
        return CAIRO_STATUS_SUCCESS;
      },
      &bytes);
  cairo_surface_destroy(surface);
  return bytes;
}

TEST(Bitmap, DecodesPng) {
  PixelBuffer pixels(3, 2);
  pixels.pixels = {0xFF102030U, 0, 0x80402000U, 0xFFFFFFFFU, 0xFF000000U, 0x01010101U};
  std::vector<std::uint8_t> bytes = pngOf(pixels);
  const CBitmapRef bitmap = CBitmap::decode(bytes);
  ASSERT_NE(bitmap, nullptr);
  EXPECT_EQ(bitmap->width(), 3);
  EXPECT_EQ(bitmap->height(), 2);
  EXPECT_EQ(bitmap->pixels().pixels, pixels.pixels);
  for (const std::size_t length :
       {std::size_t{0}, std::size_t{7}, std::size_t{30}, bytes.size() - 20})
    EXPECT_EQ(CBitmap::decode(std::span(bytes).first(length)), nullptr) << length;
}

TEST(Bitmap, DecodesDeviceIndependentBitmaps) {
  // 2 x 2, 24 bits, bottom row first, rows of 8 bytes.
  std::vector<std::uint8_t> bytes(40, 0);
  bytes[0] = 40;
  bytes[4] = 2;
  bytes[8] = 2;
  bytes[12] = 1;
  bytes[14] = 24;
  for (const int b : {1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0})
    bytes.push_back(static_cast<std::uint8_t>(b));
  const CBitmapRef bitmap = CBitmap::decode(bytes);
  ASSERT_NE(bitmap, nullptr);
  const std::vector<std::uint32_t> expected{0xFF090807U, 0xFF0C0B0AU, 0xFF030201U, 0xFF060504U};
  EXPECT_EQ(bitmap->pixels().pixels, expected);
  EXPECT_EQ(CBitmap::decode(std::span(bytes).first(bytes.size() - 1)), nullptr) << "too short";
  bytes[16] = 1;
  EXPECT_EQ(CBitmap::decode(bytes), nullptr) << "compressed";
}

TEST(DrawContext, LaysBitmapsOver) {
  PixelBuffer target(4, 1);
  CDrawContext context(target, nullptr);
  context.fillRect({0, 0, 4, 1}, {100, 100, 100, 255});
  PixelBuffer source(2, 1);
  source.pixels = {0xFF0000C8U, 0x80800000U};
  context.drawPixels(source, {1, 0, 9, 1});
  const std::vector<std::uint32_t> expected{0xFF646464U, 0xFF0000C8U, 0xFFB23232U, 0xFF646464U};
  EXPECT_EQ(target.pixels, expected);
  context.drawPixels(source, {0, 0, 1, 1}, {}, 0.5F);
  EXPECT_EQ(target.pixels[0], 0xFF323296U) << "half of each, and no farther than the place";
  EXPECT_EQ(target.pixels[1], 0xFF0000C8U);
}

TEST(DrawContext, ComposesOffScreen) {
  COffscreenContext off(4, 2);
  off.context().fillRect({0, 0, 4, 2}, {0, 0, 200, 255});
  off.context().fillRect({2, -5, 90, 90}, {200, 0, 0, 255});
  PixelBuffer target(6, 4);
  CDrawContext context(target, nullptr);
  off.copyTo(context, {1, 1, 4, 3}, {1, 0});
  EXPECT_EQ(target.row(1)[0], 0U);
  EXPECT_EQ(target.row(1)[1], 0xFF0000C8U);
  EXPECT_EQ(target.row(2)[2], 0xFFC80000U);
  EXPECT_EQ(target.row(2)[4], 0U);
  EXPECT_EQ(target.row(3)[2], 0U);
}

TEST(Text, StandsInTheMiddleAndInsideItsPlace) {
  const auto typeface = testTypeface();
  ASSERT_NE(typeface, nullptr);
  PixelBuffer target(80, 30);
  CDrawContext context(target, typeface.get());
  context.setFont(CFontDesc{11.0});
  context.drawString("HHHH", {10, 8, 70, 22});
  int left = 80;
  int right = 0;
  int top = 30;
  int bottom = 0;
  for (int y = 0; y < 30; ++y)
    for (int x = 0; x < 80; ++x)
      if (target.row(y)[x] != 0) {
        left = std::min(left, x);
        right = std::max(right, x + 1);
        top = std::min(top, y);
        bottom = std::max(bottom, y + 1);
      }
  EXPECT_NEAR(left - 10, 70 - right, 1);
  EXPECT_NEAR(top - 8, 22 - bottom, 1);
  EXPECT_EQ(bottom - top, 8) << "capitals of 11 pixels are 8 high";
  PixelBuffer narrow(80, 30);
  CDrawContext clipped(narrow, typeface.get());
  clipped.drawString("WWWWWWWWWWWWWWWW", {30, 0, 40, 30});
  for (int y = 0; y < 30; ++y)
    for (int x = 0; x < 80; ++x) ASSERT_TRUE((x >= 30 && x < 40) || narrow.row(y)[x] == 0U);
}

TEST(Text, WithoutSmoothingIsBlackAndWhite) {
  const auto typeface = testTypeface();
  PixelBuffer target(80, 30);
  CDrawContext context(target, typeface.get());
  context.drawString("Sogg", {0, 0, 80, 30}, CHoriTxtAlign::kLeftText, false);
  std::size_t white = 0;
  for (const std::uint32_t pixel : target.pixels) {
    EXPECT_TRUE(pixel == 0 || pixel == 0xFFFFFFFFU);
    white += pixel != 0 ? 1U : 0U;
  }
  EXPECT_GT(white, 20U);
}

TEST(Text, RefusesWhatIsNoFont) {
  const std::array<std::uint8_t, 4> junk{1, 2, 3, 4};
  EXPECT_EQ(CTypeface::create(junk), nullptr);
}

} // namespace
} // namespace qlx::test
