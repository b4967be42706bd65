// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/plugin/PluginHost.h"

#include <span>
#include <vector>

namespace qlx::tools {

/// Interleaved sound through an effect, block by block, in single or double precision.
class EffectBlocks {
 public:
  EffectBlocks(PluginHost& host, int blockFrames, bool useDouble);

  /// Starts the effect with one or two channels in and out and plays `seconds` of silence, so that
  /// it has faded in and its rotors turn.
  void start(double rate, int inputs, int outputs, double seconds);
  /// `frames` at most a block.
  void process(std::span<const double> in, std::span<double> out, int frames);
  double secondsInside() const { return m_seconds; } ///< spent in the effect since its start

 private:
  template <typename Sample>
  struct Buffers {
    std::vector<Sample> memory;
    Sample* in[2];
    Sample* out[2];
  };
  template <typename Sample>
  void prepare(Buffers<Sample>& buffers) const;
  template <typename Sample>
  void process(Buffers<Sample>& buffers, std::span<const double> in, std::span<double> out,
               int frames);

  PluginHost& m_host;
  int m_block;
  bool m_useDouble;
  int m_inputs = 2;
  int m_outputs = 2;
  double m_seconds = 0.0;
  Buffers<float> m_single;
  Buffers<double> m_double;
};

} // namespace qlx::tools
