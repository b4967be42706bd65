// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/validate/host/Effect.h"
#include "brezan/validate/host/GuardedMemory.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace qlx::validate {

/// The next sample of a channel. Called for the channels of a frame in order, frame after frame.
using Source = std::function<double(int channel)>;

/// What an effect is given to play: a tone that glides up and down, clicks and a little noise, the
/// channels different; peak below 0.8.
class TestSound {
 public:
  explicit TestSound(Random random) : m_random(random) {}
  double operator()(int channel);

 private:
  Random m_random;
  long m_frame = -1;
  double m_phase = 0.0;
};

/// Where a block's buffers lie.
enum class Layout {
  Apart,   ///< inputs and outputs each in memory of their own
  InPlace, ///< output i is input i
  Crossed, ///< outputs are the inputs in the opposite order
};

/// Buffers of an effect for blocks of up to `maximum` frames. Each ends at a page that nobody may
/// touch; inputs that are no outputs cannot be written to. `Sample` is float or double.
template <typename Sample>
class AudioRun {
 public:
  AudioRun(const Effect& effect, int maximum, Layout layout = Layout::Apart);

  /// Fills the inputs, marks every output sample and processes. Fails the check for outputs that
  /// were not written, samples in front of them that were, and changed pointers; with `finite` for
  /// samples that are NaN, infinite or beyond 120 dB, too.
  void process(int frames, const Source& source, bool finite = true);

  /// Outputs from this one on need not be written: the host has told that nobody listens.
  void listenTo(int outputs) { m_heard = outputs; }

  /// Of the block processed last.
  const Sample* output(int channel) const { return m_out[static_cast<std::size_t>(channel)]; }
  int outputs() const { return static_cast<int>(m_out.size()); }

 private:
  void place(int frames);
  void mark(int frames);
  void requireWritten(int frames) const;
  void requireFinite(int frames) const;

  const Effect& m_effect;
  Layout m_layout;
  int m_heard;
  std::vector<GuardedMemory> m_inputs;
  std::vector<GuardedMemory> m_outputs;
  std::vector<Sample*> m_in;
  std::vector<Sample*> m_out;
};

extern template class AudioRun<float>;
extern template class AudioRun<double>;

/// Plays the same TestSound each time, for `frames` frames in blocks of `block` and what is left;
/// answers all output samples, channel after channel in each block.
template <typename Sample>
std::vector<Sample> play(const Effect& effect, int frames, int block,
                         Layout layout = Layout::Apart);
extern template std::vector<float> play(const Effect&, int, int, Layout);
extern template std::vector<double> play(const Effect&, int, int, Layout);

/// Frames of `seconds` of sound, at least 1.
int framesOf(double seconds, double rate);

} // namespace qlx::validate
