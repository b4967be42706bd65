// SPDX-License-Identifier: ISC
#include "gui/DirtyRegion.h"
#include "gui/drawing/CBitmap.h"
#include "gui/drawing/CDrawContext.h"
#include "gui/drawing/COffscreenContext.h"
#include "gui/drawing/Utf8.h"
#include "tests/gui/FrameFixture.h"
#include "tests/support/DrawingBytes.h"

#include <array>
#include <numbers>
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

TEST(Bitmap, DecodesPng) {
  const CBitmapRef bitmap = CBitmap::decode(qlx::test::smallPng());
  ASSERT_NE(bitmap, nullptr);
  EXPECT_EQ(bitmap->width(), 2);
  // By hand from the filters' definition, then multiplied by alpha.
  const std::vector<std::uint32_t> expected{0xFF102030U, 0x80200000U, 0xFF010203U, 0xFF020304U,
                                            0xFF0A0A0AU, 0x8065341BU, 0xFF0F1923U, 0xE0653E2DU,
                                            0xFF121B24U, 0xF4683F2DU};
  EXPECT_EQ(bitmap->pixels().pixels, expected);
}

TEST(Bitmap, IsDecodedAsFarAsItIsDrawn) {
  using qlx::test::ByteVector;
  const ByteVector png = qlx::test::smallPng();
  ByteVector twice = png;
  twice.insert(twice.end(), png.begin(), png.end());
  ByteVector cut = twice;
  cut.resize(cut.size() - 30);
  // Twice as large, of one colour.
  std::vector<std::uint8_t> rows;
  for (int y = 0; y < 10; ++y) {
    rows.push_back(0);
    for (int x = 0; x < 4; ++x) rows.insert(rows.end(), {0x10, 0x20, 0x30, 0xFF});
  }
  const ByteVector even = qlx::test::pngFile(4, 10, rows);
  const ByteVector wide = qlx::test::pngFile(4, 1, std::vector<std::uint8_t>(17, 0));
  struct Case {
    const char* what;
    std::array<ByteVector, 3> files;
    int height;
    int scale;
    std::vector<std::uint32_t> column; ///< every scale-th pixel from the top
  };
  const std::vector<std::uint32_t> one{0xFF102030U, 0xFF010203U, 0xFF0A0A0AU, 0xFF0F1923U,
                                       0xFF121B24U};
  std::vector<std::uint32_t> two = one;
  two.insert(two.end(), one.begin(), one.end());
  const std::vector<Case> cases{
      {"one file", {png}, 5, 1, one},
      {"two below each other", {twice}, 10, 1, two},
      {"the second is broken", {cut}, 10, 1, std::vector<std::uint32_t>(10)},
      {"no larger file", {twice}, 10, 2, two},
      {"a larger file of another size", {png, wide}, 5, 2, one},
      {"three times from twice", {png, even}, 5, 3, std::vector<std::uint32_t>(5, 0xFF102030U)},
      {"no file", {}, 0, 1, {}},
  };
  for (const Case& c : cases) {
    const CBitmapRef bitmap = CBitmap::load([&c](int scale) -> std::span<const std::uint8_t> {
      return c.files[static_cast<std::size_t>(scale - 1)];
    });
    ASSERT_EQ(bitmap == nullptr, c.height == 0) << c.what;
    if (bitmap == nullptr) continue;
    EXPECT_EQ(bitmap->width(), 2) << c.what;
    ASSERT_EQ(bitmap->height(), c.height) << c.what;
    const PixelBuffer pixels = bitmap->pixels(c.scale);
    EXPECT_EQ(pixels.width, 2 * c.scale);
    for (int y = 0; y < pixels.height; ++y)
      EXPECT_EQ(pixels.row(y)[0], c.column[static_cast<std::size_t>(y / c.scale)]) << c.what;
  }
}

TEST(PackedImage, AddsFilterAndBaseAndRefusesOtherForms) {
  const auto columns = [](const ByteVector& bytes) {
    const CBitmapRef bitmap = CBitmap::load([&bytes](int scale) {
      return scale == 1 ? std::span<const std::uint8_t>(bytes) : std::span<const std::uint8_t>{};
    });
    return bitmap == nullptr ? std::vector<std::uint32_t>{} : bitmap->pixels().pixels;
  };
  // Green, then red and blue less green. Paeth's choices for the last pixel are the one above the
  // left, and twice the one above.
  const std::vector<std::uint32_t> both{0xFF32283CU, 0xFF352940U, 0xFF31273CU, 0xFF332D4BU,
                                        0xFF33293DU, 0xFF352940U, 0xFF34283DU, 0xFF332D4AU};
  const ByteVector strip = qlx::test::smallPackedStrip();
  EXPECT_EQ(columns(strip), both);
  const std::size_t second = strip.size() / 2;
  const std::vector<std::uint32_t> first(both.begin(), both.begin() + 4);
  struct Case {
    const char* what;
    std::size_t place;
    std::uint8_t value;
    bool all; ///< nothing at all, or the second is transparent
  };
  for (const Case& c :
       {Case{"a base before the first", second + 10, 2, false},
        Case{"a base with a base", 10, 1, false}, Case{"a broken stream", second + 16, 0, false},
        Case{"an unknown filter", 9, 4, true}, Case{"five channels", 8, 5, true},
        Case{"no width", 4, 0, true}, Case{"an image too long", 12, 255, true}}) {
    ByteVector broken = strip;
    broken[c.place] = c.value;
    const auto found = columns(broken);
    ASSERT_EQ(found.size(), c.all ? 0U : both.size()) << c.what;
    EXPECT_TRUE(c.all || std::all_of(found.begin() + 4, found.end(), [](auto p) { return p == 0; }))
        << c.what;
  }
}

// What is drawn at one and a half are means of what is drawn at three.
TEST(DrawContext, HalvesPixelsWhereverAPictureLies) {
  std::mt19937 random(15);
  PixelBuffer pattern(20, 14);
  for (std::uint32_t& pixel : pattern.pixels)
    pixel = 0xFF000000U | (static_cast<std::uint32_t>(random()) & 0xFFFFFFU);
  const CBitmap bitmap(pattern);
  for (int round = 0; round < 40; ++round) {
    const auto at = [&random](unsigned n) { return static_cast<double>(random() % n) - 4.0; };
    const CPoint corner{at(24), at(24)};
    const CRect where{corner.x, corner.y, corner.x + at(30), corner.y + at(30)};
    PixelBuffer large(90, 60);
    PixelBuffer small(45, 30);
    CDrawContext(large, nullptr, 3.0).drawBitmap(bitmap, where, {2, 1});
    CDrawContext(small, nullptr, 1.5).drawBitmap(bitmap, where, {2, 1});
    for (int y = 0; y < small.height; ++y) {
      for (int x = 0; x < small.width; ++x) {
        for (int shift = 0; shift < 32; shift += 8) {
          int sum = 2;
          for (int i = 0; i < 4; ++i)
            sum += static_cast<int>(large.row(2 * y + i / 2)[2 * x + i % 2] >> shift & 255U);
          ASSERT_EQ(static_cast<int>(small.row(y)[x] >> shift & 255U), sum / 4) << x << ", " << y;
        }
      }
    }
  }
}

TEST(Bitmap, RefusesBrokenPng) {
  using qlx::test::ByteVector;
  // The image data's first byte is at 41: zlib's head, one stored block's head (5), the rows.
  struct Case {
    const char* what;
    void (*harm)(ByteVector& file);
  };
  const Case cases[]{
      {"nothing", [](ByteVector& f) { f.clear(); }},
      {"signature only", [](ByteVector& f) { f.resize(8); }},
      {"cut in the first chunk", [](ByteVector& f) { f.resize(28); }},
      {"no image data", [](ByteVector& f) { f.resize(33); }},
      {"cut in the image data", [](ByteVector& f) { f.resize(60); }},
      {"no end", [](ByteVector& f) { f.resize(f.size() - 12); }},
      {"first chunk of another name", [](ByteVector& f) { f[12] = 'J'; }},
      {"no width", [](ByteVector& f) { f[19] = 0; }},
      {"wider than its data", [](ByteVector& f) { f[19] = 3; }},
      {"higher than its data", [](ByteVector& f) { f[23] = 6; }},
      {"wider than anything its bytes can fill", [](ByteVector& f) { f[18] = 0x7F; }},
      {"sides beyond 32767", [](ByteVector& f) { f[17] = 1; }},
      {"16 bits", [](ByteVector& f) { f[24] = 16; }},
      {"palette", [](ByteVector& f) { f[25] = 3; }},
      {"interlaced", [](ByteVector& f) { f[28] = 1; }},
      {"longer data than the file", [](ByteVector& f) { f[34] = 1; }},
      {"image data of no bytes before the rest",
       [](ByteVector& f) {
         const ByteVector empty{0, 0, 0, 0, 'I', 'D', 'A', 'T', 0, 0, 0, 0};
         f.insert(f.begin() + 33, empty.begin(), empty.end());
       }},
      {"no zlib head", [](ByteVector& f) { f[41] = 0; }},
      {"block of an unknown kind", [](ByteVector& f) { f[43] = 7; }},
      {"block length and its complement", [](ByteVector& f) { f[46] = 0; }},
      {"filter 5", [](ByteVector& f) { f[48] = 5; }},
  };
  for (const Case& c : cases) {
    ByteVector file = qlx::test::smallPng();
    c.harm(file);
    EXPECT_EQ(CBitmap::decode(file), nullptr) << c.what;
  }
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

double coveredArea(const PixelBuffer& pixels) {
  double sum = 0.0;
  for (const std::uint32_t pixel : pixels.pixels) sum += (pixel >> 24) / 255.0;
  return sum;
}

TEST(Shapes, CoverTheirArea) {
  struct Case {
    const char* what;
    void (*draw)(CDrawContext& context);
    double area;
  };
  using C = CDrawContext;
  static constexpr CRect whole{3, 4, 20, 30}, parts{3.25, 4.5, 20.75, 30.125};
  static constexpr CRect thin{3, 4, 5, 30}, none{9, 9, 9, 20};
  static constexpr CColor ink = kWhiteCColor;
  static constexpr CPoint way[]{{5, 25}, {25, 25}, {25, 10}}, slope[]{{5, 5}, {25, 20}};
  const double corners = 4.0 - std::numbers::pi; // what four corners of radius 1 lack
  const double frame = 17 * 26 - corners * 36 - (15 * 24 - corners * 25);
  const double pill = 17 * 26 - corners * 8.5 * 8.5;
  const Case cases[]{
      {"whole pixels", [](C& c) { c.fillRoundRect(whole, 0, ink); }, 17 * 26},
      {"parts of pixels", [](C& c) { c.fillRoundRect(parts, 0, ink); }, 17.5 * 25.625},
      {"round", [](C& c) { c.fillRoundRect(whole, 6, ink); }, 17 * 26 - corners * 36},
      {"largest radius", [](C& c) { c.fillRoundRect(whole, 99, ink); }, pill},
      {"frame", [](C& c) { c.frameRoundRect(whole, 6, 1, ink); }, frame},
      {"no hole", [](C& c) { c.frameRoundRect(thin, 1, 1, ink); }, 2 * 26 - corners},
      {"line", [](C& c) { c.strokeLine(slope, 2, ink); }, 50},
      {"corner", [](C& c) { c.strokeLine(way, 2, ink); }, 2 * 20 + 2 * 15},
      {"nothing", [](C& c) { c.fillRoundRect(none, 3, ink); }, 0},
  };
  for (const Case& c : cases) {
    PixelBuffer target(40, 40);
    CDrawContext context(target, nullptr);
    c.draw(context);
    EXPECT_NEAR(coveredArea(target), c.area, 0.005 * c.area) << c.what;
    // A pixel does not depend on the clip.
    PixelBuffer clipped(40, 40);
    CDrawContext pieces(clipped, nullptr);
    for (const PixelRect& clip :
         {PixelRect{0, 0, 7, 40}, PixelRect{7, 0, 40, 13}, PixelRect{7, 13, 40, 40}}) {
      pieces.setClip(clip);
      c.draw(pieces);
    }
    EXPECT_EQ(clipped.pixels, target.pixels) << c.what;
  }
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

constexpr CFontDesc kEveryFont[]{CFontDesc{9.0}, CFontDesc{10.0}, CFontDesc{11.0}, CFontDesc{12.0},
                                 CFontDesc{13.0}};

TEST(Text, StemsStandOnWholePixels) {
  const auto typeface = testTypeface();
  for (const CFontDesc& font : kEveryFont) {
    for (const char32_t letter : U"Hilmn") {
      if (letter == 0) continue;
      // The lowest row meets stems only.
      const CTypeface::Glyph glyph = typeface->glyph(letter, font);
      ASSERT_GT(glyph.height, 0);
      const auto row = glyph.coverage.last(static_cast<std::size_t>(glyph.width));
      for (const int coverage : row)
        EXPECT_TRUE(coverage < 64 || coverage > 191) << coverage << " at " << font.size;
    }
  }
}

TEST(Text, ClosesGapsThatHintingWidened) {
  const auto pack = qlx::test::smallGlyphPack();
  const auto typeface = CTypeface::create(pack);
  ASSERT_NE(typeface, nullptr);
  struct Case {
    const char* text;
    int width;
  };
  // Between two letters hinting added 40/64 of a pixel, between a letter and the box 20/64. A 'b'
  // drawn nearer would touch the 'a' before it.
  for (const Case& c :
       {Case{"", 0}, Case{"a", 3}, Case{"aa", 5}, Case{"ab", 9}, Case{"ba", 8}, Case{"a?a", 15}})
    EXPECT_EQ(typeface->width(c.text, kNormalFontSmall), c.width) << c.text;
  PixelBuffer target(12, 20);
  CDrawContext context(target, typeface.get());
  context.drawStringAt("aaa", 0, {0, 0, 12, 20});
  // Just above the baseline; each reaches one pixel to the right of its place.
  for (int x = 0; x < 12; ++x) EXPECT_EQ(target.row(13)[x] != 0U, x % 2 == 1 && x < 6) << x;
}

TEST(GlyphPack, OthersAreEnlargedFromTheLastPack) {
  const auto typeface = testTypeface();
  const CTypeface::Glyph box = typeface->glyph(U'\0', kNormalFontSmall);
  const CTypeface::Glyph alef = typeface->glyph(U'\u05D0', kNormalFontSmall);
  ASSERT_FALSE(alef.coverage.empty());
  EXPECT_NE(alef.coverage.data(), box.coverage.data());
  const auto twice = typeface->atScale(2.0);
  EXPECT_EQ(twice->glyph(U'\u05D0', kNormalFontSmall).height, 2 * alef.height);
  EXPECT_EQ(twice->glyph(U'\uFFFF', kNormalFontSmall).coverage.data(),
            twice->glyph(U'\0', kNormalFontSmall).coverage.data());
}

TEST(GlyphPack, DeflatedFormHoldsTheSame) {
  const auto pack = qlx::test::smallGlyphPack();
  const auto deflated = qlx::test::deflatedGlyphPack(pack);
  const auto typeface = CTypeface::create(deflated);
  ASSERT_NE(typeface, nullptr);
  EXPECT_TRUE(std::ranges::equal(typeface->glyph(U'b', kNormalFontSmall).coverage,
                                 CTypeface::create(pack)->glyph(U'b', kNormalFontSmall).coverage));
}

TEST(GlyphPack, RefusesOtherForms) {
  using qlx::test::ByteVector;
  struct Case {
    const char* what;
    void (*harm)(ByteVector& pack);
  };
  const Case cases[]{
      {"nothing", [](ByteVector& p) { p.clear(); }},
      {"cut in the head", [](ByteVector& p) { p.resize(sizeof(PackHead) - 1); }},
      {"head only", [](ByteVector& p) { p.resize(sizeof(PackHead)); }},
      {"cut in the glyphs", [](ByteVector& p) { p.resize(p.size() - 4); }},
      {"a font file", [](ByteVector& p) { p[3] = 0; }},
      {"no glyphs", [](ByteVector& p) { p[4] = 0; }},
      {"one glyph too many", [](ByteVector& p) { p[4] = 4; }},
      {"more than fit into memory", [](ByteVector& p) { p[7] = 0xFF; }},
      {"another size", [](ByteVector& p) { p[8] = 8; }},
      {"deflated, longer than told",
       [](ByteVector& p) {
         p = qlx::test::deflatedGlyphPack(p);
         --p[4];
       }},
      {"deflated, shorter than told",
       [](ByteVector& p) {
         p = qlx::test::deflatedGlyphPack(p);
         ++p[4];
       }},
      {"deflated, nothing told",
       [](ByteVector& p) {
         p = qlx::test::deflatedGlyphPack(p);
         std::fill(p.begin() + 4, p.begin() + 8, std::uint8_t{0});
       }},
      {"deflated, cut",
       [](ByteVector& p) {
         p = qlx::test::deflatedGlyphPack(p);
         p.resize(p.size() / 2);
       }},
      {"deflated, of another form",
       [](ByteVector& p) {
         p[3] = 0;
         p = qlx::test::deflatedGlyphPack(p);
       }},
  };
  for (const Case& c : cases) {
    ByteVector pack = qlx::test::smallGlyphPack();
    c.harm(pack);
    EXPECT_EQ(CTypeface::create(pack), nullptr) << c.what;
  }
}

TEST(GlyphPack, LeavesOutPicturesThatDoNotLieInside) {
  auto pack = qlx::test::smallGlyphPack();
  const auto expectPictures = [&](int a, int b, const char* what) {
    const auto typeface = CTypeface::create(pack);
    ASSERT_NE(typeface, nullptr) << what;
    EXPECT_EQ(typeface->glyph(U'a', kNormalFontSmall).height, a) << what;
    const CTypeface::Glyph glyph = typeface->glyph(U'b', kNormalFontSmall);
    EXPECT_EQ(glyph.height, b) << what;
    EXPECT_EQ(glyph.coverage.size(), static_cast<std::size_t>(b)) << what;
    EXPECT_EQ(glyph.advance, 6) << what;
  };
  expectPictures(1, 2, "whole");
  pack.pop_back();
  expectPictures(1, 0, "cut in the last picture");
  const std::size_t glyphs = sizeof(PackHead) + 3 * sizeof(std::uint32_t);
  pack[glyphs + sizeof(PackedGlyph) + 11] = 0xFF;
  expectPictures(0, 0, "far outside");
}

} // namespace
} // namespace qlx::test
