// SPDX-License-Identifier: ISC
#pragma once

#include <memory>
#include <span>
#include <vector>

struct SRC_STATE_tag;

namespace qlx::tools {

struct ResamplerCloser {
  void operator()(SRC_STATE_tag* state) const;
};

/// Converts interleaved sound from one rate to another as it comes, aligned in time with its input
/// (libsamplerate's best quality: 97 % of the narrower band, 144 dB). Throws std::runtime_error for
/// rates more than 256 times apart.
class SampleRateConverter {
 public:
  SampleRateConverter(double fromHz, double toHz, int channels);

  /// What the converter can give after these frames; valid until the next call.
  std::span<const double> convert(std::span<const double> interleaved);
  /// The rest; afterwards frames of input x toHz / fromHz, rounded, have been given in all.
  std::span<const double> finish();

 private:
  void run(bool last);

  double m_ratio;
  int m_channels;
  long long m_taken = 0; ///< frames
  long long m_given = 0;
  std::unique_ptr<SRC_STATE_tag, ResamplerCloser> m_state;
  std::vector<float> m_in;
  std::vector<float> m_part;
  std::vector<double> m_out;
};

} // namespace qlx::tools
