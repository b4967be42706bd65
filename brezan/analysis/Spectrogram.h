// SPDX-License-Identifier: ISC
#pragma once

#include <span>
#include <vector>

namespace qlx::tools {

/// Levels over time and pitch.
struct Spectrogram {
  int columns;
  int rows;                 ///< row 0 is the lowest frequency
  std::vector<float> level; ///< dB, a full-scale sine is 0; column by column
  float at(int column, int row) const {
    return level[static_cast<std::size_t>(column) * static_cast<std::size_t>(rows) +
                 static_cast<std::size_t>(row)];
  }
};

struct SpectrogramRange {
  int columns;
  int rows;
  double lowestHz;
  double highestHz; ///< rows are equal steps of pitch between the two
};

/// One channel's spectrogram; columns divide the whole sound evenly. A sine reads its level within
/// 1.5 dB wherever it falls between the analysis' own frequencies.
Spectrogram spectrogram(std::span<const double> sound, double rate, const SpectrogramRange& range);

} // namespace qlx::tools
