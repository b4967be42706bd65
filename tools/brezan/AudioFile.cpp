#include "tools/brezan/AudioFile.h"

#include "tools/brezan/Words.h"

#include <algorithm>
#include <cmath>
#include <samplerate.h>
#include <stdexcept>

namespace qlx::tools {

namespace {

constexpr int kFetchFrames = 4096;

struct NamedFormat {
  const char* name;
  int format;
};
constexpr NamedFormat kContainers[] = {
    {".wav", SF_FORMAT_WAV},   {".aif", SF_FORMAT_AIFF}, {".aiff", SF_FORMAT_AIFF},
    {".flac", SF_FORMAT_FLAC}, {".w64", SF_FORMAT_W64},  {".rf64", SF_FORMAT_RF64},
    {".caf", SF_FORMAT_CAF},   {".au", SF_FORMAT_AU},
};
constexpr NamedFormat kSampleFormats[] = {
    {"pcm16", SF_FORMAT_PCM_16}, {"pcm24", SF_FORMAT_PCM_24},  {"pcm32", SF_FORMAT_PCM_32},
    {"float", SF_FORMAT_FLOAT},  {"double", SF_FORMAT_DOUBLE},
};

int formatNamed(std::span<const NamedFormat> list, const std::string& name, const char* what) {
  std::string known;
  for (const NamedFormat& entry : list) {
    if (folded(name) == entry.name) return entry.format;
    known += (known.empty() ? "" : ", ") + std::string(entry.name);
  }
  throw std::runtime_error("unknown " + std::string(what) + " '" + name + "'; known are " + known);
}

} // namespace

void ResamplerCloser::operator()(SRC_STATE_tag* state) const { src_delete(state); }

AudioInput::AudioInput(const std::filesystem::path& path, double rate)
    : m_file(sf_open(path.string().c_str(), SFM_READ, &m_info)) {
  const std::string quoted = "'" + path.string() + "'";
  if (!m_file) throw std::runtime_error("cannot read " + quoted + ": " + sf_strerror(nullptr));
  if (m_info.channels > 2)
    throw std::runtime_error(quoted + " has " + std::to_string(m_info.channels) +
                             " channels; one or two can be rendered");
  m_rate = rate > 0.0 ? rate : m_info.samplerate;
  if (m_rate == m_info.samplerate) return;
  int error = 0;
  m_resampler.reset(
      src_callback_new(&AudioInput::fetch, SRC_SINC_BEST_QUALITY, m_info.channels, &error, this));
  if (!m_resampler || src_is_valid_ratio(m_rate / m_info.samplerate) == 0)
    throw std::runtime_error("cannot convert " + quoted + " from " +
                             std::to_string(m_info.samplerate) + " Hz to the rate asked for");
}

long long AudioInput::frames() const {
  return m_resampler ? std::llround(static_cast<double>(m_info.frames) * m_rate / fileRate())
                     : m_info.frames;
}

long AudioInput::fetch(void* self, float** data) {
  auto& input = *static_cast<AudioInput*>(self);
  input.m_source.resize(kFetchFrames * static_cast<std::size_t>(input.channels()));
  *data = input.m_source.data();
  return static_cast<long>(sf_readf_float(input.m_file.get(), input.m_source.data(), kFetchFrames));
}

int AudioInput::read(std::span<double> interleaved) {
  const auto frames = static_cast<long>(interleaved.size()) / channels();
  if (!m_resampler)
    return static_cast<int>(sf_readf_double(m_file.get(), interleaved.data(), frames));
  m_converted.resize(interleaved.size());
  const long got =
      src_callback_read(m_resampler.get(), m_rate / fileRate(), frames, m_converted.data());
  std::copy_n(m_converted.begin(), got * channels(), interleaved.begin());
  return static_cast<int>(got);
}

AudioOutput::AudioOutput(const std::filesystem::path& path, const std::string& format, double rate,
                         int channels)
    : m_pending(path) {
  SF_INFO info{};
  const int sample = formatNamed(kSampleFormats, format, "sample format");
  info.format = formatNamed(kContainers, path.extension().string(), "kind of sound file") | sample;
  info.samplerate = static_cast<int>(std::lround(rate));
  info.channels = channels;
  m_isInteger = sample != SF_FORMAT_FLOAT && sample != SF_FORMAT_DOUBLE;
  if (sf_format_check(&info) == 0)
    throw std::runtime_error("a " + path.extension().string() + " file cannot hold " + format +
                             " at " + std::to_string(info.samplerate) + " Hz");
  m_file.reset(sf_open(m_pending.path().string().c_str(), SFM_WRITE, &info));
  if (!m_file)
    throw std::runtime_error("cannot write '" + path.string() + "': " + sf_strerror(nullptr));
  sf_command(m_file.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
  // The peak chunk carries the time of day; without it equal renders are equal files.
  sf_command(m_file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
}

void AudioOutput::write(std::span<const double> interleaved) {
  for (const double sample : interleaved) m_peak = std::max(m_peak, std::abs(sample));
  const auto count = static_cast<sf_count_t>(interleaved.size());
  if (sf_write_double(m_file.get(), interleaved.data(), count) != count)
    throw std::runtime_error("cannot write '" + m_pending.target().string() +
                             "': " + sf_strerror(m_file.get()));
}

void AudioOutput::finish() {
  if (sf_close(m_file.release()) != 0)
    throw std::runtime_error("cannot write '" + m_pending.target().string() + "' to its end");
  m_pending.commit();
}

} // namespace qlx::tools
