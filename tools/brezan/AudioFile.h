#pragma once

#include "tools/brezan/PendingFile.h"

#include <filesystem>
#include <memory>
#include <sndfile.h>
#include <span>
#include <string>
#include <vector>

struct SRC_STATE_tag;

namespace qlx::tools {

struct SoundFileCloser {
  void operator()(SNDFILE* file) const { sf_close(file); }
};
struct ResamplerCloser {
  void operator()(SRC_STATE_tag* state) const;
};

/// A sound file of one or two channels, read from its beginning, converted to another rate on the
/// way when one is asked for. Throws std::runtime_error.
class AudioInput {
 public:
  /// `rate` 0 keeps the file's own.
  explicit AudioInput(const std::filesystem::path& path, double rate = 0.0);
  AudioInput(const AudioInput&) = delete;
  AudioInput& operator=(const AudioInput&) = delete;

  int channels() const { return m_info.channels; }
  double fileRate() const { return m_info.samplerate; }
  double rate() const { return m_rate; }
  /// Frames that `read` will give in all, after conversion give or take one.
  long long frames() const;
  /// Fills `interleaved` and answers the number of frames; fewer than asked only at the end.
  int read(std::span<double> interleaved);

 private:
  static long fetch(void* self, float** data);

  SF_INFO m_info{};
  std::unique_ptr<SNDFILE, SoundFileCloser> m_file;
  double m_rate;
  std::unique_ptr<SRC_STATE_tag, ResamplerCloser> m_resampler; ///< null when rates are equal
  std::vector<float> m_source;
  std::vector<float> m_converted;
};

/// A sound file being written; it appears under its name only when `finish` is called. The
/// container follows from the name's extension. Throws std::runtime_error.
class AudioOutput {
 public:
  /// `format`: "pcm16", "pcm24", "pcm32", "float" or "double".
  AudioOutput(const std::filesystem::path& path, const std::string& format, double rate,
              int channels);

  void write(std::span<const double> interleaved);
  void finish();
  double peak() const { return m_peak; } ///< largest magnitude handed to `write`
  /// True when samples beyond full scale were cut because the format cannot hold them.
  bool clipped() const { return m_isInteger && m_peak > 1.0; }

 private:
  PendingFile m_pending;
  std::unique_ptr<SNDFILE, SoundFileCloser> m_file;
  bool m_isInteger;
  double m_peak = 0.0;
};

} // namespace qlx::tools
