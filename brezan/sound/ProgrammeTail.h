// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/sound/EffectBlocks.h"

#include <optional>
#include <vector>

namespace qlx::tools {

/// Tells when the programme has died away in the effect, apart from the noise of its motors, which
/// never ends: a second instance with the same settings but without that noise hears the end of
/// the programme and what follows.
class ProgrammeTail {
 public:
  static constexpr double kQuiet = 3.1622776601683795e-5; ///< -90 dB below full scale
  static constexpr double kQuietSeconds = 0.5;            ///< after which the programme is over

  ProgrammeTail(int blockFrames, bool useDouble, double rate, int inputs, int outputs);

  /// Notes programme as it is played; the last few seconds are kept.
  void note(std::span<const double> in);
  /// The programme has ended in `host`. `host` goes on.
  void begin(PluginHost& host);
  /// Lets the silence after the programme go on for so many frames.
  void advance(int frames);
  bool over() const { return static_cast<double>(m_quietFrames) >= kQuietSeconds * m_rate; }

 private:
  void play(std::span<const double> in, int frames);

  int m_block;
  bool m_useDouble;
  double m_rate;
  int m_inputs;
  int m_outputs;
  std::vector<double> m_last; ///< the programme's last seconds, interleaved
  std::vector<double> m_silence;
  std::vector<double> m_out;
  std::optional<PluginHost> m_twin;
  std::optional<EffectBlocks> m_blocks;
  long long m_quietFrames = 0;
};

} // namespace qlx::tools
