// SPDX-License-Identifier: ISC
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace qlx::tools {

/// What the lever does from a moment on.
enum class LeverState { Slow, Fast, Stopped, Moving };

struct LeverMark {
  double seconds;
  LeverState state;
  std::string words; ///< shown on the picture
};

/// A sound to be drawn.
struct PictureSound {
  std::string title;
  std::vector<std::vector<double>> channels; ///< one or two, equally long
  double rate;
  std::vector<LeverMark> marks; ///< in the order of time
  double seconds() const { return static_cast<double>(channels.front().size()) / rate; }
};

/// Draws level and spectrogram over time with the lever's moves into a PNG file. Throws
/// std::runtime_error.
void drawPicture(const PictureSound& sound, const std::filesystem::path& path);

} // namespace qlx::tools
