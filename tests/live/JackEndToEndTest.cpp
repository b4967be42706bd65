// SPDX-License-Identifier: ISC
#include "brezan/plugin/MidiFile.h"
#include "tests/live/JackServer.h"

#include <gtest/gtest.h>
#include <jack/jack.h>
#include <jack/midiport.h>
#include <sndfile.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <numbers>
#include <thread>

namespace qlx::test {

using tools::TimedMidi;

namespace {

constexpr int kRate = 48000;
constexpr int kBlock = 512;
constexpr int kFrames = 4 * kRate / kBlock * kBlock;

/// A JACK client that plays two tones and MIDI once it is told to, and records what comes back.
class Organist {
 public:
  explicit Organist(std::vector<TimedMidi> midi) : m_midi(std::move(midi)) {
    jack_set_error_function([](const char*) {});
    for (int i = 0; i < 100 && m_client == nullptr; ++i) {
      m_client = jack_client_open("Organist", JackNoStartServer, nullptr);
      if (m_client == nullptr) std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    if (m_client == nullptr) return;
    m_listener = jack_client_open("Listener", JackNoStartServer, nullptr);
    const auto port = [](jack_client_t* client, const char* name, const char* type,
                         unsigned long flags) {
      return jack_port_register(client, name, type, flags, 0);
    };
    m_keys = port(m_client, "keys", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput);
    for (std::size_t i = 0; i < 2; ++i) {
      m_out[i] =
          port(m_client, i == 0 ? "out_1" : "out_2", JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput);
      m_in[i] =
          port(m_listener, i == 0 ? "in_1" : "in_2", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput);
      played.at(i).resize(kFrames);
      m_heard.at(i).resize(kMostBlocks * kBlock);
      for (int n = 0; n < kFrames; ++n)
        played.at(i)[static_cast<std::size_t>(n)] = static_cast<float>(
            0.2 * std::sin(2.0 * std::numbers::pi * (i == 0 ? 440.0 : 660.0) * n / kRate));
    }
    jack_set_process_callback(
        m_client,
        [](jack_nframes_t frames, void* self) {
          static_cast<Organist*>(self)->play(frames);
          return 0;
        },
        this);
    jack_set_process_callback(
        m_listener,
        [](jack_nframes_t frames, void* self) {
          static_cast<Organist*>(self)->listen(frames);
          return 0;
        },
        this);
    jack_activate(m_listener);
    jack_activate(m_client);
  }
  ~Organist() {
    for (jack_client_t* client : {m_listener, m_client})
      if (client != nullptr) jack_client_close(client);
  }
  Organist(const Organist&) = delete;
  Organist& operator=(const Organist&) = delete;

  bool isThere() const { return m_client != nullptr; }
  bool isHeard() const {
    return jack_port_connected(m_in[0]) > 0 && jack_port_connected(m_in[1]) > 0 &&
           jack_port_connected(m_out[1]) > 0 && jack_port_connected(m_keys) > 0;
  }
  bool playToTheEnd() {
    m_playing = true;
    for (int i = 0; i < 1200 && m_done < kFrames; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return m_done == kFrames;
  }

  std::array<std::vector<float>, 2> played;
  /// Frames heard from the block at `clock` of the server's clock to the first tone, and what was
  /// heard from there on. The clock itself also counts what was late.
  long framesSince(unsigned clock) const { return frameAt(m_firstClock) - frameAt(clock); }
  float heard(std::size_t channel, std::size_t frame) const {
    return m_heard[channel].at(static_cast<std::size_t>(frameAt(m_firstClock)) + frame);
  }

 private:
  static constexpr std::size_t kMostBlocks = 20000;

  long frameAt(unsigned clock) const {
    const auto heard = m_clocks.begin() + static_cast<long>(m_blocks.load());
    return (std::find(m_clocks.begin(), heard, clock) - m_clocks.begin()) * kBlock;
  }

  void play(jack_nframes_t frames) {
    void* keys = jack_port_get_buffer(m_keys, frames);
    jack_midi_clear_buffer(keys);
    const int begin = m_done;
    const bool plays = m_playing && begin < kFrames;
    for (std::size_t channel = 0; channel < 2; ++channel) {
      auto* out = static_cast<float*>(jack_port_get_buffer(m_out[channel], frames));
      if (plays)
        std::copy_n(played[channel].begin() + begin, frames, out);
      else
        std::fill_n(out, frames, 0.0F);
    }
    if (plays) {
      if (begin == 0) m_firstClock = jack_last_frame_time(m_client);
      for (const TimedMidi& one : m_midi) {
        const long at = std::lround(one.seconds * kRate) - begin;
        if (at >= 0 && at < static_cast<long>(frames))
          jack_midi_event_write(keys, static_cast<jack_nframes_t>(at), one.bytes.data(),
                                one.bytes.size());
      }
      m_done = begin + static_cast<int>(frames);
    }
  }

  // Another client: in a ring of two, JACK holds one direction back by a block.
  void listen(jack_nframes_t frames) {
    const std::size_t block = m_blocks;
    if (block == m_clocks.size()) return;
    m_clocks[block] = jack_last_frame_time(m_listener);
    for (std::size_t channel = 0; channel < 2; ++channel)
      std::copy_n(static_cast<const float*>(jack_port_get_buffer(m_in[channel], frames)), frames,
                  m_heard[channel].begin() + static_cast<long>(block * kBlock));
    m_blocks = block + 1; // what stands before it is for all threads to read
  }

  std::vector<TimedMidi> m_midi;
  jack_client_t* m_client = nullptr;
  jack_client_t* m_listener = nullptr;
  jack_port_t* m_keys = nullptr;
  std::array<jack_port_t*, 2> m_out{};
  std::array<jack_port_t*, 2> m_in{};
  std::vector<unsigned> m_clocks = std::vector<unsigned>(kMostBlocks);
  std::array<std::vector<float>, 2> m_heard;
  std::atomic<std::size_t> m_blocks{0};
  unsigned m_firstClock = 0; ///< of the first block with tones
  std::atomic<bool> m_playing{false};
  std::atomic<int> m_done{0};
};

std::vector<float> readSound(const std::filesystem::path& file) {
  SF_INFO info{};
  SNDFILE* sound = sf_open(file.c_str(), SFM_READ, &info);
  std::vector<float> samples(static_cast<std::size_t>(2 * info.frames));
  if (sound != nullptr) sf_readf_float(sound, samples.data(), info.frames);
  sf_close(sound);
  return samples;
}

void writeSound(const std::filesystem::path& file, const Organist& organist) {
  SF_INFO info{};
  info.samplerate = kRate;
  info.channels = 2;
  info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
  SNDFILE* sound = sf_open(file.c_str(), SFM_WRITE, &info);
  for (std::size_t i = 0; i < kFrames; ++i) {
    const std::array frame{organist.played[0][i], organist.played[1][i]};
    sf_writef_float(sound, frame.data(), 1);
  }
  sf_close(sound);
}

} // namespace

TEST(JackEndToEndTest, WhatIsPlayedEqualsWhatIsRendered) {
  if (!JackServer::isInstalled()) GTEST_SKIP() << "jackd is not installed";
  JackServer server;
  const TemporaryFolder& folder = server.folder;
  server.start(kRate, kBlock);
  // The wheel to its ends, and the pedal between them, on milliseconds.
  const std::vector<TimedMidi> midi{
      {0.501, {0xB0, 1, 127}}, {1.7, {0xB0, 64, 127}}, {2.013, {0xB0, 64, 0}}, {3.0, {0xB0, 1, 0}}};
  Organist organist(midi);
  if (server.listIsFull())
    GTEST_SKIP() << "JACK's list of servers is full of others' that were killed";
  ASSERT_TRUE(organist.isThere()) << server.words();

  const std::string state = (folder / "state").string();
  Process player({BREZAN, "live", "--plugin", PLUGIN, "--no-window", "--preset", "2", "--state",
                  state, "--connect", "Organist", "Listener"},
                 folder / "player");
  ASSERT_TRUE(comes([&] { return organist.isHeard(); })) << contents(folder / "player");
  std::this_thread::sleep_for(std::chrono::seconds(1));
  ASSERT_TRUE(organist.playToTheEnd()) << server.words();
  EXPECT_EQ(player.end(SIGTERM), 0);
  const std::string words = contents(folder / "player");

  const std::size_t at = words.find("since JACK frame ");
  ASSERT_NE(at, std::string::npos) << words;
  const unsigned began = static_cast<unsigned>(std::stoul(words.substr(at + 17)));
  const double settle = static_cast<double>(organist.framesSince(began)) / kRate;
  writeSound(folder / "in.wav", organist);
  std::ofstream notes(folder / "notes.mid", std::ios::binary);
  tools::writeMidi(notes, midi);
  notes.close();
  const auto render = [&](const std::string& start, const std::string& out) {
    const Finished done =
        run(std::string(SHELL_WORD(BREZAN)) +
            " render --plugin " SHELL_WORD(PLUGIN) " --format float --tail 0 --block " +
            std::to_string(kBlock) + " --settle " + std::to_string(settle) + " --midi " +
            (folder / "notes.mid").string() + " " + start + " " + (folder / "in.wav").string() +
            " " + (folder / out).string());
    EXPECT_EQ(done.status, 0) << done.errors;
    return readSound(folder / out);
  };
  const std::vector<float> expected = render("--preset 2", "out.wav");
  ASSERT_EQ(expected.size(), std::size_t{2 * kFrames});
  float peak = 0.0F;
  float error = 0.0F;
  for (std::size_t i = 0; i < kFrames; ++i)
    for (std::size_t channel = 0; channel < 2; ++channel) {
      peak = std::max(peak, std::abs(expected[2 * i + channel]));
      error = std::max(error, std::abs(expected[2 * i + channel] - organist.heard(channel, i)));
    }
  EXPECT_GT(peak, 0.05F);
  EXPECT_LT(error, 1e-6F) << "settled for " << settle << " s; " << words;

  const Finished shown = run(std::string(SHELL_WORD(BREZAN)) + " presets show " + state);
  EXPECT_EQ(shown.status, 0) << shown.errors;
  EXPECT_NE(shown.output.find("current preset 2"), std::string::npos) << shown.output;
}

} // namespace qlx::test
