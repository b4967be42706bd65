#pragma once

#include "engine/Acoustics.h"
#include "engine/Interpolation.h"

#include <array>
#include <vector>

namespace qlx::engine {

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
  Room();

  /// Recomputes delays, levels and filters for an engine rate; the memory of the lines stays.
  void computeTaps(const RoomSettings& settings, double engineRate) noexcept;
  void clear() noexcept;

  /// n samples: sends in, returns (times returnGain, one value a sample) out.
  void process(const RunBuffer& sendLeft, const RunBuffer& sendRight, const RunBuffer& returnGain,
               int n, RunBuffer& left, RunBuffer& right) noexcept;

 private:
  static constexpr std::size_t kTapCount = 12;
  static constexpr int kLineSize = 65536;

  struct Side {
    std::array<int, kTapCount> delay{};
    std::array<float, kTapCount> fraction{};
    std::array<double, kTapCount> gain{};
    std::array<double, kTapCount> pole{};
    std::array<OnePole, kTapCount> lowPass{};
    std::vector<double> line;

    void compute(const std::array<double, kTapCount>& path,
                 const std::array<double, kTapCount>& cutoff, const RoomSettings& settings,
                 double dbPerMetre, double engineRate) noexcept;
    void process(const RunBuffer& send, const RunBuffer& returnGain, int writeIndex, int n,
                 RunBuffer& out) noexcept;
  };

  Side m_left, m_right;
  int m_writeIndex = 0;
};

} // namespace qlx::engine
