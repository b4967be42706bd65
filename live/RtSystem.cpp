// SPDX-License-Identifier: ISC
#include "live/RtSystem.h"

#include <RtAudio.h>
#include <RtMidi.h>
#include <alsa/asoundlib.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace qlx::live {

namespace {

// Of the thread that plays, in the units of the system's real-time scheduling; that of interrupts
// lies above.
constexpr int kPriority = 70;
// Channels that a list shows; drivers that convert claim any number.
constexpr unsigned kMostShown = 999;

void ignore(RtAudioError::Type /*type*/, const std::string& /*words*/) {}

void silent(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/,
            const char* /*words*/, ...) {}

// ALSA's library tells on standard error of each device that it tried in vain; what matters of that
// is said by this system.
void quieten() { snd_lib_error_set_handler(silent); }

// RtMidi would write to standard error.
bool hasMidi() {
  snd_seq_t* sequencer = nullptr;
  if (snd_seq_open(&sequencer, "default", SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK) < 0) return false;
  snd_seq_close(sequencer);
  return true;
}

bool matches(const std::string& wanted, unsigned number, const std::string& name) {
  unsigned asked = 0;
  const auto [end, error] = std::from_chars(wanted.data(), wanted.data() + wanted.size(), asked);
  if (error == std::errc() && end == wanted.data() + wanted.size()) return asked == number;
  return name.find(wanted) != std::string::npos;
}

// The device to use, and its channels in the given direction, two at most.
RtAudio::StreamParameters device(RtAudio& audio, const std::string& wanted, bool isInput) {
  RtAudio::StreamParameters found;
  const auto channels = [isInput](const RtAudio::DeviceInfo& info) {
    return std::min(isInput ? info.inputChannels : info.outputChannels, 2U);
  };
  if (wanted.empty()) {
    found.deviceId = isInput ? audio.getDefaultInputDevice() : audio.getDefaultOutputDevice();
    found.nChannels = 2; // the system's own conversions see to it
    return found;
  }
  for (unsigned i = 0; i < audio.getDeviceCount(); ++i) {
    const RtAudio::DeviceInfo info = audio.getDeviceInfo(i);
    if (!info.probed || channels(info) == 0 || !matches(wanted, i, info.name)) continue;
    found.deviceId = i;
    found.nChannels = channels(info);
    return found;
  }
  throw std::runtime_error("no " + std::string(isInput ? "input" : "output") + " device '" +
                           wanted + "'; --list says which there are");
}

} // namespace

std::vector<std::string> RtSystem::list() {
  quieten();
  std::vector<std::string> lines;
  RtAudio audio(RtAudio::LINUX_ALSA);
  audio.showWarnings(false);
  for (unsigned i = 0; i < audio.getDeviceCount(); ++i) {
    const RtAudio::DeviceInfo info = audio.getDeviceInfo(i);
    lines.push_back("audio " + std::to_string(i) + "  " + info.name + ": " +
                    (info.probed
                         ? std::to_string(std::min(info.inputChannels, kMostShown)) + " in, " +
                               std::to_string(std::min(info.outputChannels, kMostShown)) + " out"
                         : "in use or not to be had"));
  }
  if (lines.empty()) lines.emplace_back("audio  none on this machine");
  const std::size_t cards = lines.size();
  try {
    if (hasMidi()) {
      RtMidiIn midi(RtMidi::LINUX_ALSA);
      for (unsigned i = 0; i < midi.getPortCount(); ++i)
        lines.push_back("midi  " + std::to_string(i) + "  " + midi.getPortName(i));
    }
  } catch (const RtMidiError&) { // its list ends here
  }
  if (lines.size() == cards) lines.emplace_back("midi   none on this machine");
  return lines;
}

RtSystem::RtSystem(const Wishes& wishes) {
  quieten();
  try {
    openAudio(wishes);
  } catch (const RtAudioError& error) {
    throw std::runtime_error("cannot play on the sound card: " + error.getMessage());
  }
  m_rate = m_audio->getStreamSampleRate();
  m_silence.assign(m_blockFrames, 0.0F);
  try {
    openMidi(wishes.midi);
  } catch (const RtMidiError& error) {
    m_midi.clear();
    if (!wishes.midi.empty()) throw std::runtime_error("cannot read MIDI: " + error.getMessage());
  }
}

RtSystem::~RtSystem() {
  stop();
  m_midi.clear(); // its threads write into this
  if (m_audio && m_audio->isStreamOpen()) m_audio->closeStream();
}

void RtSystem::openAudio(const Wishes& wishes) {
  m_audio = std::make_unique<RtAudio>(RtAudio::LINUX_ALSA);
  m_audio->showWarnings(false);
  if (m_audio->getDeviceCount() == 0)
    throw std::runtime_error("neither a JACK server nor a sound card is there");
  RtAudio::StreamParameters output = device(*m_audio, wishes.output, false);
  RtAudio::StreamParameters input = device(*m_audio, wishes.input, true);
  if (output.nChannels < 2) throw std::runtime_error("the output device has a single channel");
  RtAudio::StreamOptions options;
  options.flags = RTAUDIO_NONINTERLEAVED | RTAUDIO_SCHEDULE_REALTIME | RTAUDIO_MINIMIZE_LATENCY;
  if (wishes.input.empty() && wishes.output.empty()) options.flags |= RTAUDIO_ALSA_USE_DEFAULT;
  options.priority = kPriority;
  m_blockFrames = wishes.blockFrames;
  m_inputs = input.nChannels;
  const auto callback = [](void* out, void* in, unsigned frames, double, RtAudioStreamStatus status,
                           void* self) {
    auto& system = *static_cast<RtSystem*>(self);
    constexpr int kAbort = 2;
    if (!system.hasClock(status != 0)) return kAbort;
    system.process(static_cast<float*>(out), static_cast<const float*>(in),
                   static_cast<int>(frames));
    return 0;
  };
  m_audio->openStream(&output, &input, RTAUDIO_FLOAT32, wishes.rate, &m_blockFrames, callback, this,
                      &options, ignore);
  if (!m_audio->isStreamOpen())
    throw std::runtime_error("cannot play on the sound card at " + std::to_string(wishes.rate) +
                             " Hz");
}

void RtSystem::openMidi(const std::string& wanted) {
  const unsigned count = hasMidi() ? RtMidiIn(RtMidi::LINUX_ALSA).getPortCount() : 0;
  for (unsigned i = 0; i < count; ++i) {
    auto input = std::make_unique<MidiInput>();
    input->port = std::make_unique<RtMidiIn>(RtMidi::LINUX_ALSA, "QLX Brezan");
    if (!matches(wanted, i, input->port->getPortName(i))) continue;
    input->port->ignoreTypes(true, true, true);
    input->port->setCallback(
        [](double, std::vector<unsigned char>* bytes, void* self) {
          MidiMessage message{};
          if (bytes != nullptr && toChannelMessage(*bytes, 0, message))
            static_cast<MidiInput*>(self)->messages.push(message);
        },
        input.get());
    input->port->openPort(i, "midi_in");
    m_midi.push_back(std::move(input));
  }
  if (m_midi.empty() && !wanted.empty())
    throw std::runtime_error("no MIDI input '" + wanted + "'; --list says which there are");
}

void RtSystem::start(BlockProcessor& processor) {
  m_processor = &processor;
  try {
    m_audio->startStream();
  } catch (const RtAudioError& error) {
    throw std::runtime_error("the sound card did not start: " + error.getMessage());
  }
}

void RtSystem::stop() noexcept {
  try {
    if (m_audio && m_audio->isStreamRunning()) m_audio->abortStream();
  } catch (const RtAudioError&) { // it stands still, then
  }
}

/// A card that has been unplugged asks for block after block, each late and none waited for, and
/// would keep a processor busy at the highest priority.
bool RtSystem::hasClock(bool isLate) noexcept {
  constexpr int kMostInARow = 100;
  if (!isLate) {
    m_lateInARow = 0;
    return true;
  }
  m_lateBlocks.fetch_add(1, std::memory_order_relaxed);
  const auto now = std::chrono::steady_clock::now();
  if (m_lateInARow++ == 0) m_lateSince = now;
  if (m_lateInARow <= kMostInARow) return true;
  const std::chrono::duration<double> taken = now - m_lateSince;
  const bool tooFast = taken.count() * m_rate < 0.5 * kMostInARow * m_blockFrames;
  m_lateInARow = 0;
  if (tooFast) m_alive.store(false, std::memory_order_relaxed);
  return !tooFast;
}

void RtSystem::process(float* out, const float* in, int frames) noexcept {
  std::size_t count = 0;
  for (const auto& input : m_midi)
    while (count < m_messages.size()) {
      const auto message = input->messages.pop();
      if (!message) break;
      m_messages[count++] = *message;
    }
  const float* left = in != nullptr ? in : m_silence.data();
  const float* right = in != nullptr && m_inputs == 2 ? in + frames : left;
  m_processor->process(
      {{left, right}, {out, out + frames}, frames, std::span(m_messages).first(count)});
}

} // namespace qlx::live
