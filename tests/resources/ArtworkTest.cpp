// SPDX-License-Identifier: ISC
#include "gui/drawing/CBitmap.h"
#include "gui/drawing/PngImage.h"
#include "resources/artwork/ArtworkSet.h"
#include "resources/artwork/Icon.h"
#include "resources/artwork/Layout.h"
#include "resources/artwork/drawing/Colour.h"
#include "resources/images/Images.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <numbers>
#include <span>
#include <string>
#include <vector>

namespace qlx::test {
using namespace artwork;
namespace {

bool isBitmap(std::span<const std::byte> file) {
  return file.size() > 2 && file[0] == std::byte{'B'} && file[1] == std::byte{'M'};
}

std::span<const std::uint8_t> fileOf(int number, int factor = 1) {
  const auto file = resources::findImage(number, factor);
  return {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()};
}

/// As it was drawn: by libpng, the parts of a strip below each other; bitmaps, which have no alpha,
/// by the editor's decoder.
Picture keptImage(int number, int factor = 1) {
  if (!isBitmap(resources::findImage(number, factor))) {
    const std::string folder = factor == 1 ? QLX_IMAGES "/" : QLX_IMAGES "/2x/";
    std::ifstream file(folder + std::to_string(number) + ".png", std::ios::binary);
    const std::vector<std::uint8_t> png(std::istreambuf_iterator<char>(file), {});
    const auto parts = gui::partedPngFiles(png);
    std::vector<Picture> pictures;
    for (const auto part : parts) pictures.push_back(Picture::decode(std::as_bytes(part)));
    const int height = pictures.front().height();
    Picture all(pictures.front().width(), height * static_cast<int>(pictures.size()));
    for (std::size_t i = 0; i < pictures.size(); ++i)
      all.place(pictures[i], 0, static_cast<int>(i) * height);
    return all;
  }
  const auto bitmap = gui::CBitmap::decode(fileOf(number, factor));
  if (bitmap == nullptr) return {};
  Picture picture(bitmap->width(), bitmap->height());
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      const std::uint32_t word = bitmap->row(1, y)[x];
      for (std::size_t c = 0; c < 4; ++c) {
        picture.at(x, y)[c] = static_cast<std::uint8_t>(word >> (c == 3 ? 24 : 16 - 8 * c));
      }
    }
  }
  return picture;
}

/// Perceived brightness of a pixel, 0..255.
double brightness(const Picture::Pixel& p) { return 0.30 * p[0] + 0.59 * p[1] + 0.11 * p[2]; }

double meanBrightness(const Picture& picture, const PixelRect& box) {
  double sum = 0.0;
  for (int y = box.top; y < box.bottom; ++y) {
    for (int x = box.left; x < box.right; ++x) sum += brightness(picture.at(x, y));
  }
  return sum / (box.width() * box.height());
}

struct Size {
  int number;
  int width;
  int height;
};

// What the window's controls are built for.
constexpr Size kSizes[] = {
    Size{989, 16, 42},     Size{2002, 44, 4444}, Size{2003, 26, 72},   Size{2004, 27, 72},
    Size{2005, 55, 12090}, Size{2008, 298, 12},  Size{2009, 120, 14},  Size{2010, 120, 14},
    Size{2013, 298, 12},   Size{3999, 400, 533}, Size{4000, 401, 570}, Size{4001, 58, 28},
    Size{4002, 140, 28},   Size{4003, 56, 28},   Size{4004, 62, 28},   Size{4005, 30, 252},
    Size{19899, 47, 30},   Size{19990, 37, 30},  Size{19991, 12, 42},  Size{19992, 12, 42},
    Size{19993, 12, 42},   Size{19994, 12, 42},  Size{19995, 12, 42},  Size{19996, 12, 42},
    Size{19997, 31, 70},   Size{19998, 12, 42},  Size{19999, 12, 42},
};

constexpr int kFactors[] = {1, 2};

class Images : public testing::TestWithParam<Size> {};

TEST_P(Images, HaveTheControlsSizes) {
  for (const int factor : kFactors) {
    const Picture picture = keptImage(GetParam().number, factor);
    EXPECT_EQ(picture.width(), GetParam().width * factor);
    EXPECT_EQ(picture.height(), GetParam().height * factor);
  }
  EXPECT_EQ(isBitmap(resources::findImage(GetParam().number)),
            GetParam().number == 19899 || GetParam().number == 19990);
}

// Picture decodes the kept files with libpng, the editor what the library holds without it.
TEST_P(Images, AreReadByTheEditorAsByLibpng) {
  const int number = GetParam().number;
  const auto bitmap = gui::CBitmap::load([number](int scale) { return fileOf(number, scale); });
  ASSERT_NE(bitmap, nullptr);
  for (const int factor : kFactors) {
    const Picture picture = keptImage(number, factor);
    const gui::PixelBuffer pixels = bitmap->pixels(factor);
    ASSERT_EQ(pixels.width, picture.width());
    ASSERT_EQ(pixels.height, picture.height());
    for (int y = 0; y < picture.height(); ++y) {
      for (int x = 0; x < picture.width(); ++x) {
        const Picture::Pixel& p = picture.at(x, y);
        const auto multiplied = [&p](std::size_t c) { return (p[c] * p[3] * 2U + 255U) / 510U; };
        ASSERT_EQ(pixels.row(y)[x], static_cast<std::uint32_t>(p[3]) << 24 | multiplied(0) << 16 |
                                        multiplied(1) << 8 | multiplied(2))
            << x << ", " << y << " factor " << factor;
      }
    }
  }
}

// The C library picks its sine and power functions by processor; their last bits differ, and a
// channel that lies on a rounding limit may then fall one level aside.
void expectSame(const Picture& kept, const Picture& fresh) {
  ASSERT_EQ(kept.width(), fresh.width());
  ASSERT_EQ(kept.height(), fresh.height());
  int aside = 0;
  for (int y = 0; y < kept.height(); ++y) {
    for (int x = 0; x < kept.width(); ++x) {
      for (std::size_t c = 0; c < 4; ++c) {
        const int difference = std::abs(kept.at(x, y)[c] - fresh.at(x, y)[c]);
        ASSERT_LE(difference, 1) << "at " << x << ", " << y << " channel " << c;
        aside += difference;
      }
    }
  }
  EXPECT_LE(aside, kept.width() * kept.height() / 1000);
}

TEST_P(Images, AreWhatTheGeneratorDraws) {
  const Lettering lettering(QLX_FONTS);
  const Artwork& art = artwork::artwork(GetParam().number);
  expectSame(keptImage(art.number), drawn(art, lettering, 1));
  // Of the large strips a few frames: drawing all of them takes long.
  const Picture large = keptImage(art.number, 2);
  for (int i = 0; i < art.frames; i += 1 + art.frames / 5) {
    Picture frame(large.width(), 2 * art.frameHeight);
    for (int y = 0; y < frame.height(); ++y)
      for (int x = 0; x < frame.width(); ++x) frame.at(x, y) = large.at(x, i * frame.height() + y);
    expectSame(frame, drawnFrame(art, lettering, 2, i));
  }
}

TEST(Icons, AreWhatTheGeneratorDraws) {
  const Lettering lettering(QLX_FONTS);
  for (const int side : kIconSides) {
    std::ifstream file(QLX_ICONS "/" + std::to_string(side) + ".png", std::ios::binary);
    const std::vector<char> png(std::istreambuf_iterator<char>(file), {});
    const Picture kept = Picture::decode(std::as_bytes(std::span(png)));
    EXPECT_EQ(kept.width(), side);
    expectSame(kept, drawnIcon(lettering, side));
  }
}

INSTANTIATE_TEST_SUITE_P(Set, Images, testing::ValuesIn(kSizes), [](const auto& size) {
  return "Image" + std::to_string(size.param.number);
});

TEST(ImageDirectory, HoldsTheWholeSetAndNothingElse) {
  for (const Artwork& art : artworkSet()) {
    for (const int factor : kFactors)
      EXPECT_FALSE(resources::findImage(art.number, factor).empty()) << art.number;
    EXPECT_TRUE(resources::findImage(art.number, 0).empty()) << art.number;
    EXPECT_TRUE(resources::findImage(art.number, 3).empty()) << art.number;
  }
  EXPECT_EQ(artworkSet().size(), std::size(kSizes));
  for (const int unknown : {-1, 0, 2001, 4006, 20000}) {
    EXPECT_TRUE(resources::findImage(unknown).empty()) << unknown;
  }
}

TEST(Knob, PointerTurnsEvenlyFromLeftToRight) {
  constexpr int kFrames = 101;
  constexpr int kSide = 44;
  const Picture strip = keptImage(2002);
  // What all frames have in common is the light; what sticks out of it is the pointer.
  auto pixel = [&](int frame, int x, int y) { return brightness(strip.at(x, frame * kSide + y)); };
  std::vector<double> common(kSide * kSide);
  for (int f = 0; f < kFrames; ++f) {
    for (int i = 0; i < kSide * kSide; ++i) {
      common[static_cast<std::size_t>(i)] += pixel(f, i % kSide, i / kSide) / kFrames;
    }
  }
  for (int f = 0; f < kFrames; ++f) {
    double sumX = 0.0;
    double sumY = 0.0;
    for (int i = 0; i < kSide * kSide; ++i) {
      const double excess =
          std::max(0.0, pixel(f, i % kSide, i / kSide) - common[static_cast<std::size_t>(i)] - 40);
      sumX += excess * (i % kSide + 0.5 - kSide / 2.0);
      sumY += excess * (i / kSide + 0.5 - kSide / 2.0);
    }
    const double degrees = std::atan2(sumX, -sumY) * 180.0 / std::numbers::pi;
    EXPECT_NEAR(degrees, -135.0 + 2.7 * f, 1.5) << "frame " << f;
  }
}

/// Light of a pixel that lies over a dark seat, 0..1.
double luminance(const Picture::Pixel& p) {
  constexpr double kSeat = 0.003;
  const double own = 0.2126 * linearFromSrgb(p[0] / 255.0) + 0.7152 * linearFromSrgb(p[1] / 255.0) +
                     0.0722 * linearFromSrgb(p[2] / 255.0);
  return mix(kSeat, own, p[3] / 255.0);
}

// As much as guidelines for accessible pages ask of text, wherever the dome shines.
TEST(Knob, PointerStandsOutInEveryFrame) {
  constexpr int kFrames = 101;
  constexpr double kAtLeast = 4.5;
  for (const int factor : kFactors) {
    const Picture strip = keptImage(2002, factor);
    for (int f = 0; f < kFrames; ++f) {
      const double turn = (-135.0 + 2.7 * f) * std::numbers::pi / 180.0;
      const auto mean = [&](double from, double to) {
        double sum = 0.0;
        int count = 0;
        for (double along = 8.0; along <= 15.5; along += 0.25) {
          for (double aside = from; aside <= to; aside += 0.25, ++count) {
            const double x = 22.0 + along * std::sin(turn) + aside * std::cos(turn);
            const double y = 44.0 * f + 22.0 - along * std::cos(turn) + aside * std::sin(turn);
            sum += luminance(strip.at(static_cast<int>(x * factor), static_cast<int>(y * factor)));
          }
        }
        return sum / count;
      };
      const double beside = std::max(mean(-3.25, -1.5), mean(1.5, 3.25));
      EXPECT_GE((mean(-0.5, 0.5) + 0.05) / (beside + 0.05), kAtLeast)
          << "frame " << f << " factor " << factor;
    }
  }
}

TEST(Lever, BallLiesUnderThePointerThatDragsIt) {
  constexpr int kFrames = 65;
  constexpr int kHeight = 186;
  const Picture strip = keptImage(2005);
  ASSERT_EQ(strip.height(), kFrames * kHeight);
  for (int f = 0; f < kFrames; ++f) {
    // The ball is the only opaque thing wider than the ferrule and the slot.
    double sum = 0.0;
    double rows = 0.0;
    for (int y = 0; y < kHeight; ++y) {
      int opaque = 0;
      for (int x = 0; x < 55; ++x) opaque += strip.at(x, f * kHeight + y)[3] >= 250 ? 1 : 0;
      if (opaque < 18) continue;
      sum += y + 0.5;
      rows += 1.0;
    }
    const double degrees = 40.0 - 80.0 * f / (kFrames - 1);
    EXPECT_NEAR(sum / rows, 95.0 - 88.7 * std::sin(degrees * std::numbers::pi / 180.0), 1.0)
        << "frame " << f;
  }
}

TEST(Window, TextsAreReadableWhereTheEditorWritesThem) {
  const Picture window = keptImage(4000);
  for (const auto& place : layout::kKnobs) {
    for (int y = place.display.top; y < place.display.bottom; ++y) {
      for (int x = place.display.left; x < place.display.right; ++x) {
        ASSERT_LE(brightness(window.at(x, y)), 40.0) << place.caption << " " << x << ", " << y;
      }
    }
  }
  EXPECT_GE(meanBrightness(window, layout::kName), 165.0);
  // The well is as wide as the version's text.
  const PixelRect& version = layout::kAboutVersion;
  EXPECT_LE(meanBrightness(keptImage(3999),
                           {version.left, version.top, version.left + 44, version.bottom}),
            30.0);
}

} // namespace
} // namespace qlx::test
