// SPDX-License-Identifier: ISC
#include "resources/artwork/ArtworkSet.h"
#include "resources/artwork/Icon.h"
#include "resources/artwork/Preview.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace {

constexpr const char* kUsage =
    "Draws the editor's images.\n"
    "  draw_artwork FONTS images FOLDER [SCALE [NUMBER...]]\n"
    "                    every image, or those of these numbers, under its number\n"
    "  draw_artwork FONTS icons FOLDER              the program's icons under their sides in "
    "pixels\n"
    "  draw_artwork FONTS preview FILE.png [KNOBS LEVER ROTORS [lit]]   the window put together\n"
    "  draw_artwork FONTS sheet FILE.png [SCALE]    every frame of every control\n";

void drawAll(const qlx::artwork::Lettering& lettering, const std::filesystem::path& folder,
             int scale, const std::vector<std::string>& numbers) {
  // Long strips are parted, since decoding all of their frames takes too long; at the plain size
  // only those whose frames are larger than the packer's reach, others pack far better together.
  constexpr int kWholeStrip = 20;
  constexpr int kReach = 32768;
  std::filesystem::create_directories(folder);
  for (const auto& artwork : qlx::artwork::artworkSet()) {
    const std::string number = std::to_string(artwork.number);
    if (!numbers.empty() && std::ranges::find(numbers, number) == numbers.end()) continue;
    const auto picture = qlx::artwork::drawn(artwork, lettering, scale);
    const bool small = 4 * artwork.width * artwork.frameHeight < kReach;
    const bool parted = artwork.frames > kWholeStrip && (scale > 1 || !small);
    const auto file = folder / (number + (scale == 1 ? artwork.extension : ".png"));
    if (parted)
      picture.saveParted(file, artwork.frames);
    else
      picture.save(file);
  }
}

} // namespace

int main(int count, char** values) {
  const std::vector<std::string> arguments(values + 1, values + count);
  const std::string command = arguments.size() >= 3 ? arguments[1] : "";
  try {
    if (command == "images") {
      const qlx::artwork::Lettering lettering(arguments[0]);
      drawAll(lettering, arguments[2], arguments.size() > 3 ? std::stoi(arguments[3]) : 1,
              {arguments.begin() + std::min<std::ptrdiff_t>(4, std::ssize(arguments)),
               arguments.end()});
      return 0;
    }
    if (command == "icons") {
      const qlx::artwork::Lettering lettering(arguments[0]);
      for (const int side : qlx::artwork::kIconSides)
        qlx::artwork::drawnIcon(lettering, side)
            .save(std::filesystem::path(arguments[2]) / (std::to_string(side) + ".png"));
      return 0;
    }
    if (command == "sheet") {
      const qlx::artwork::Lettering lettering(arguments[0]);
      qlx::artwork::contactSheet(lettering, arguments.size() > 3 ? std::stoi(arguments[3]) : 1)
          .save(arguments[2]);
      return 0;
    }
    if (command == "preview") {
      const qlx::artwork::Lettering lettering(arguments[0]);
      qlx::artwork::Pose pose;
      if (arguments.size() > 3) pose.knobs = std::stod(arguments[3]);
      if (arguments.size() > 4) pose.lever = std::stod(arguments[4]);
      if (arguments.size() > 5) pose.rotors = std::stod(arguments[5]);
      pose.lit = arguments.size() > 6;
      qlx::artwork::previewed(lettering, pose).save(arguments[2]);
      return 0;
    }
  } catch (const std::exception& fault) {
    std::fprintf(stderr, "%s\n", fault.what());
    return 1;
  }
  std::fputs(kUsage, stderr);
  return 2;
}
