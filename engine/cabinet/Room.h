// SPDX-License-Identifier: ISC
#pragma once

#include "engine/kernels/Kernels.h"
#include "engine/signal/SubBlock.h"

#include <array>
#include <cstdlib>
#include <memory>

namespace qlx::engine {

/// Largest RoomSettings::size; the control's end is at 4.
inline constexpr double kLargestRoom = 4.1;

struct RoomSettings {
  double size = 1.0;        ///< scale of all paths
  double virtualSize = 1.0; ///< scale of the level law
  double leftRightDelay = 0.0;
  double mainCutoffHz = 5000.0;
};

/// Early reflections: twelve taps a side on a delay line of the microphones' stereo signal. Longer
/// paths arrive later, softer (linearly in decibels) and darker. Audio thread only.
class Room {
 public:
  explicit Room(const kernels::Kernels& kernels);

  /// Recomputes delays, levels and filters for an engine rate; the memory of the lines stays unless
  /// the rate asks for lines of another length.
  void computeTaps(const RoomSettings& settings, double engineRate) noexcept;
  void clear() noexcept;

  /// n samples: sends in, returns (times returnGain, one value a sample) out.
  void process(const SubBlock& sendLeft, const SubBlock& sendRight, const SubBlock& returnGain,
               int n, SubBlock& left, SubBlock& right) noexcept;

 private:
  static constexpr std::size_t kTapCount = kernels::RoomSide::kTaps;
  static constexpr int kLongestLine = 8192; ///< kLargestRoom at the highest engine rate, 50 kHz
  static constexpr int kContinued =
      kSubBlock + 8; ///< samples of the begin that follow the end again

  /// Length of the lines, a power of two, for the largest room at an engine rate.
  static int lineSize(double engineRate) noexcept;

  struct Free {
    void operator()(double* memory) const noexcept { std::free(memory); }
  };

  struct Side {
    std::array<int, kTapCount> delay{};
    kernels::RoomSide taps{};
    /// Memory for the longest line. It comes zeroed from the system, which takes no page of it
    /// before a line that long is cleared or written.
    std::unique_ptr<double[], Free> line;
    int size = 0; ///< in use

    Side();
    void compute(const std::array<double, kTapCount>& path,
                 const std::array<double, kTapCount>& cutoff, const RoomSettings& settings,
                 double dbPerMetre, double engineRate) noexcept;
    void write(const SubBlock& send, int writeIndex, int n) noexcept;
    void clear() noexcept;
  };

  void process(Side& side, const SubBlock& send, const SubBlock& returnGain, int n,
               SubBlock& out) const noexcept;

  const kernels::Kernels& m_kernels;
  Side m_left, m_right;
  int m_writeIndex = 0;
};

} // namespace qlx::engine
