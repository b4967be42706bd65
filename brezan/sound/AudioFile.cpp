// SPDX-License-Identifier: ISC
#include "brezan/sound/AudioFile.h"

#include "brezan/StandardStreams.h"
#include "brezan/System.h"
#include "brezan/Words.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace qlx::tools {

namespace {

constexpr std::size_t kFetchFrames = 4096;
// What the 32-bit sizes of WAV and AIFF can say, less generous room for headers.
constexpr long long kSmallFileBytes = 0xFFFFFFFFLL - (1LL << 16);

struct NamedFormat {
  const char* name;
  int format;
  int bytes = 0; ///< of a sample
};
constexpr NamedFormat kContainers[] = {
    {".wav", SF_FORMAT_WAV},   {".aif", SF_FORMAT_AIFF}, {".aiff", SF_FORMAT_AIFF},
    {".flac", SF_FORMAT_FLAC}, {".w64", SF_FORMAT_W64},  {".rf64", SF_FORMAT_RF64},
    {".caf", SF_FORMAT_CAF},   {".au", SF_FORMAT_AU},
};
constexpr NamedFormat kSampleFormats[] = {
    {"pcm16", SF_FORMAT_PCM_16, 2}, {"pcm24", SF_FORMAT_PCM_24, 3},  {"pcm32", SF_FORMAT_PCM_32, 4},
    {"float", SF_FORMAT_FLOAT, 4},  {"double", SF_FORMAT_DOUBLE, 8},
};

const NamedFormat& formatNamed(std::span<const NamedFormat> list, const std::string& name,
                               const char* what) {
  std::string known;
  for (const NamedFormat& entry : list) {
    if (folded(name) == entry.name) return entry;
    known += (known.empty() ? "" : ", ") + std::string(entry.name);
  }
  throw std::runtime_error("unknown " + std::string(what) + " '" + name + "'; known are " + known);
}

// What describes the piece, not the program that wrote the file.
constexpr int kTags[] = {SF_STR_TITLE,   SF_STR_COPYRIGHT,   SF_STR_ARTIST,
                         SF_STR_COMMENT, SF_STR_DATE,        SF_STR_ALBUM,
                         SF_STR_LICENSE, SF_STR_TRACKNUMBER, SF_STR_GENRE};

SNDFILE* openSound(const std::filesystem::path& path, SF_INFO& info) {
  const auto fail = [&path](const std::string& reason) {
    throw std::runtime_error("cannot read '" + path.string() + "': " + reason);
  };
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) fail("it is a folder");
  int file = path == "-" ? dup(STDIN_FILENO) : openForReading(path);
  if (file < 0) fail(std::strerror(errno));
  struct stat status {};
  if (fstat(file, &status) == 0 && !S_ISREG(status.st_mode)) {
    const int stream = file;
    file = readAsFile(stream);
    close(stream);
    fstat(file, &status);
  }
  if (status.st_size == 0) {
    close(file);
    fail("it is empty");
  }
  SNDFILE* sound = sf_open_fd(file, SFM_READ, &info, SF_TRUE);
  if (sound == nullptr)
    fail(sf_error(nullptr) == SF_ERR_UNRECOGNISED_FORMAT ? "it is no sound file of a known kind"
                                                         : sf_strerror(nullptr));
  return sound;
}

} // namespace

AudioInput::AudioInput(const std::filesystem::path& path, double rate)
    : AudioInput(path, [rate](double own) { return rate > 0.0 ? rate : own; }) {}

AudioInput::AudioInput(const std::filesystem::path& path,
                       const std::function<double(double)>& rateFor)
    : m_file(openSound(path, m_info)) {
  const std::string quoted = "'" + path.string() + "'";
  if (m_info.channels > 2)
    throw std::runtime_error(quoted + " has " + std::to_string(m_info.channels) +
                             " channels; one or two can be rendered");
  m_rate = rateFor(m_info.samplerate);
  if (m_rate == m_info.samplerate) return;
  m_converter.emplace(m_info.samplerate, m_rate, m_info.channels);
}

long long AudioInput::frames() const {
  return m_converter ? std::llround(static_cast<double>(m_info.frames) * m_rate / fileRate())
                     : m_info.frames;
}

int AudioInput::fetch(std::span<double> interleaved) {
  return static_cast<int>(sf_readf_double(m_file.get(), interleaved.data(),
                                          static_cast<long>(interleaved.size()) / channels()));
}

int AudioInput::read(std::span<double> interleaved) {
  int got = 0;
  if (!m_converter) {
    got = fetch(interleaved);
  } else {
    m_source.resize(kFetchFrames * static_cast<std::size_t>(channels()));
    while (m_ready.size() < interleaved.size() && !m_ended) {
      const int frames = fetch(m_source);
      m_ended = frames == 0;
      const auto part = std::span(m_source).first(static_cast<std::size_t>(frames) *
                                                  static_cast<std::size_t>(channels()));
      const std::span<const double> more =
          m_ended ? m_converter->finish() : m_converter->convert(part);
      m_ready.insert(m_ready.end(), more.begin(), more.end());
    }
    got = static_cast<int>(std::min(m_ready.size(), interleaved.size())) / channels();
    std::copy_n(m_ready.begin(), got * channels(), interleaved.begin());
    m_ready.erase(m_ready.begin(), m_ready.begin() + got * channels());
  }
  if (m_meter)
    m_meter->add(
        interleaved.first(static_cast<std::size_t>(got) * static_cast<std::size_t>(channels())));
  return got;
}

AudioOutput::AudioOutput(const std::filesystem::path& path, const OutputSettings& settings)
    : m_settings(settings), m_pending(path) {
  const std::string extension =
      path.extension().empty() && isStream(path) ? ".wav" : path.extension().string();
  const NamedFormat& sample = formatNamed(kSampleFormats, settings.format, "sample format");
  int container = formatNamed(kContainers, extension, "kind of sound file").format;
  const long long fitting = kSmallFileBytes / (sample.bytes * settings.channels);
  const bool grown = container == SF_FORMAT_WAV && settings.mostFrames > fitting;
  // RF64 only where it may be needed: even downgraded it has a format chunk that some programs
  // don't read.
  if (grown) container = SF_FORMAT_RF64;
  m_fullFrames = container == SF_FORMAT_WAV || container == SF_FORMAT_AIFF
                     ? fitting
                     : std::numeric_limits<long long>::max();
  SF_INFO info{};
  info.format = container | sample.format;
  info.samplerate = static_cast<int>(std::lround(settings.rate));
  info.channels = settings.channels;
  m_isInteger = sample.format != SF_FORMAT_FLOAT && sample.format != SF_FORMAT_DOUBLE;
  if (sf_format_check(&info) == 0)
    throw std::runtime_error("a " + extension + " file cannot hold " + settings.format + " at " +
                             std::to_string(info.samplerate) + " Hz");
  m_file.reset(sf_open(m_pending.path().string().c_str(), SFM_WRITE, &info));
  if (!m_file)
    throw std::runtime_error("cannot write '" + path.string() + "': " + sf_strerror(nullptr));
  if (grown) sf_command(m_file.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
  sf_command(m_file.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
  // The peak chunk carries the time of day; without it equal renders are equal files.
  sf_command(m_file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
  const double sourceRate = settings.sourceRate > 0.0 ? settings.sourceRate : settings.rate;
  if (sourceRate != settings.rate)
    m_converter.emplace(sourceRate, settings.rate, settings.channels);
  if (settings.matching) {
    const int held = openTemporaryFile();
    m_held.reset(held < 0 ? nullptr : fdopen(held, "w+b"));
    if (!m_held) throw std::runtime_error("cannot make a temporary file to match the loudness in");
    m_meter.emplace(settings.channels, sourceRate);
  }
}

void AudioOutput::fail(const std::string& why) const {
  throw std::runtime_error("cannot write '" + m_pending.target().string() + "'" + why);
}

void AudioOutput::copyTags(const AudioInput& input) {
  for (const int tag : kTags)
    if (const char* words = sf_get_string(input.file(), tag); words != nullptr)
      sf_set_string(m_file.get(), tag, words);
}

void AudioOutput::write(std::span<const double> interleaved) {
  if (!m_held) return convert(interleaved);
  m_meter->add(interleaved);
  if (std::fwrite(interleaved.data(), sizeof(double), interleaved.size(), m_held.get()) !=
      interleaved.size())
    fail(": no space for the temporary file that matches the loudness");
}

void AudioOutput::convert(std::span<const double> interleaved) {
  store(m_converter ? m_converter->convert(interleaved) : interleaved);
}

void AudioOutput::store(std::span<const double> interleaved) {
  m_scaled.assign(interleaved.begin(), interleaved.end());
  for (double& sample : m_scaled) {
    sample *= m_settings.gain;
    m_peak = std::max(m_peak, std::abs(sample));
    m_squares += sample * sample;
  }
  m_frames += static_cast<long long>(interleaved.size()) / m_settings.channels;
  if (m_frames > m_fullFrames)
    fail(": it would be larger than the 4 GiB that such a file can be; take .w64, .rf64 or .caf");
  const auto count = static_cast<sf_count_t>(m_scaled.size());
  errno = 0;
  if (sf_write_double(m_file.get(), m_scaled.data(), count) != count)
    fail(std::string(": ") + (errno != 0 ? std::strerror(errno) : sf_strerror(m_file.get())));
}

void AudioOutput::matchTo(double loudness) {
  if (const double own = m_meter->integrated(); std::isfinite(own) && std::isfinite(loudness))
    m_settings.gain *= std::pow(10.0, (loudness - own) / 20.0);
}

void AudioOutput::finish(std::optional<double> loudness) {
  if (m_held) {
    if (loudness) matchTo(*loudness);
    std::vector<double> part(kFetchFrames * static_cast<std::size_t>(m_settings.channels));
    if (std::fflush(m_held.get()) != 0) fail(": the temporary file has no space");
    std::rewind(m_held.get());
    while (const auto got = std::fread(part.data(), sizeof(double), part.size(), m_held.get()))
      convert(std::span(part).first(got));
    if (std::ferror(m_held.get()) != 0) fail(": the temporary file cannot be read");
  }
  if (m_converter) store(m_converter->finish());
  if (sf_close(m_file.release()) != 0) fail(" to its end");
  m_pending.commit();
}

double AudioOutput::rms() const {
  return m_frames > 0 ? std::sqrt(m_squares / (static_cast<double>(m_frames) * m_settings.channels))
                      : 0.0;
}

} // namespace qlx::tools
