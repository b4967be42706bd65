// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/sound/LoudnessMeter.h"
#include "brezan/sound/PendingFile.h"
#include "brezan/sound/SampleRateConverter.h"

#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <sndfile.h>
#include <span>
#include <string>
#include <vector>

namespace qlx::tools {

struct SoundFileCloser {
  void operator()(SNDFILE* file) const { sf_close(file); }
};
struct StreamCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// A sound file of one or two channels, read from its beginning, converted to another rate on the
/// way when one is asked for. Throws std::runtime_error.
class AudioInput {
 public:
  /// "-" is standard input. `rate` 0 keeps the file's own.
  explicit AudioInput(const std::filesystem::path& path, double rate = 0.0);
  /// `rateFor` answers the rate to convert to for the file's own.
  AudioInput(const std::filesystem::path& path, const std::function<double(double)>& rateFor);
  AudioInput(const AudioInput&) = delete;
  AudioInput& operator=(const AudioInput&) = delete;

  int channels() const { return m_info.channels; }
  double fileRate() const { return m_info.samplerate; }
  double rate() const { return m_rate; }
  /// Frames that `read` will give in all.
  long long frames() const;
  /// Fills `interleaved` and answers the number of frames; fewer than asked only at the end.
  int read(std::span<double> interleaved);
  SNDFILE* file() const { return m_file.get(); }

  /// Measures the loudness of all that is read from now on.
  void measureLoudness() { m_meter.emplace(channels(), m_rate); }
  double loudness() const { return m_meter->integrated(); } ///< LUFS

 private:
  int fetch(std::span<double> interleaved);

  SF_INFO m_info{};
  std::unique_ptr<SNDFILE, SoundFileCloser> m_file;
  double m_rate;
  std::optional<SampleRateConverter> m_converter; ///< none when the rates are equal
  std::vector<double> m_source;
  std::vector<double> m_ready; ///< converted and not yet read
  bool m_ended = false;
  std::optional<LoudnessMeter> m_meter;
};

struct OutputSettings {
  std::string format = "pcm24"; ///< "pcm16", "pcm24", "pcm32", "float" or "double"
  double rate = 44100.0;        ///< of the file, Hz
  int channels = 2;
  double sourceRate = 0.0; ///< of what `write` is given; 0: the file's
  double gain = 1.0;       ///< linear
  /// Frames that may come at most: a .wav that could grow past the 4 GiB of its 32-bit sizes is
  /// begun as RF64, and ends as a plain WAV when it fits into one after all.
  long long mostFrames = 0;
  bool matching = false; ///< for `finish` with a loudness
};

/// A sound file being written; it appears under its name only when `finish` is called. The
/// container follows from the name's extension; standard output, pipes and devices get WAV. Throws
/// std::runtime_error, also when a container without 64-bit sizes is full.
class AudioOutput {
 public:
  AudioOutput(const std::filesystem::path& path, const OutputSettings& settings);
  AudioOutput(const std::filesystem::path& path, const std::string& format, double rate,
              int channels)
      : AudioOutput(path, OutputSettings{format, rate, channels}) {}

  /// Takes over title, artist and the like as far as the container has places for them. Before the
  /// first `write`.
  void copyTags(const AudioInput& input);
  void write(std::span<const double> interleaved);
  /// With `loudness` in LUFS the whole is brought to it before the gain, which needs `matching`.
  /// Silence is left alone.
  void finish(std::optional<double> loudness = {});

  // Of what went into the file; complete after `finish`.
  long long frames() const { return m_frames; }
  double peak() const { return m_peak; } ///< largest magnitude, before it is cut
  double rms() const;                    ///< over all channels
  double gain() const { return m_settings.gain; }
  /// True when samples beyond full scale were cut because the format cannot hold them.
  bool clipped() const { return m_isInteger && m_peak > 1.0; }

 private:
  void convert(std::span<const double> interleaved);
  void store(std::span<const double> interleaved);
  [[noreturn]] void fail(const std::string& why) const;
  void matchTo(double loudness);

  OutputSettings m_settings;
  PendingFile m_pending;
  std::unique_ptr<SNDFILE, SoundFileCloser> m_file;
  std::optional<SampleRateConverter> m_converter;
  std::unique_ptr<std::FILE, StreamCloser> m_held; ///< samples that wait for their gain
  std::optional<LoudnessMeter> m_meter;
  std::vector<double> m_scaled;
  bool m_isInteger;
  long long m_fullFrames; ///< that the container can hold
  long long m_frames = 0;
  double m_peak = 0.0;
  double m_squares = 0.0;
};

} // namespace qlx::tools
