// SPDX-License-Identifier: ISC
#pragma once

#include <ebur128.h>
#include <memory>
#include <span>

namespace qlx::tools {

/// Integrated loudness after ITU-R BS.1770-4 (libebur128). A single channel counts as played by two
/// loudspeakers, so that it compares with stereo.
class LoudnessMeter {
 public:
  LoudnessMeter(int channels, double rate); ///< throws std::runtime_error

  void add(std::span<const double> interleaved);
  /// LUFS; minus infinity where nothing passed the gate of -70 LUFS.
  double integrated() const;

 private:
  struct Closer {
    void operator()(ebur128_state* state) const;
  };
  std::unique_ptr<ebur128_state, Closer> m_state;
};

} // namespace qlx::tools
