// SPDX-License-Identifier: ISC
// Hours of playing, faster than real time: the plug-in through the interface that hosts use, its
// editor opened and closed, beside the plain model, which is told the same. A second of sound that
// differs from the model's, a sample that is not finite, and heap, descriptors, threads, windows or
// resources of the display that grow end it with an error. Then the rotors alone, whose turns are
// compared with the closed form of their motion.
#include "brezan/plugin/PluginHost.h"
#include "tests/engine/EngineFixture.h"
#include "tests/reference/ReferenceEffect.h"
#include "tests/support/ProcessResources.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThisSystem.h"
#include "tests/support/desktop/VirtualDisplay.h"
#include "tests/support/desktop/X11Host.h"
#include "tests/system/Scenario.h"

#include <unistd.h>
#include <xcb/res.h>

#include <chrono>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <thread>

namespace qlx::test {
namespace {

constexpr double kToleranceDb = -120.0;
/// Under this power a sample counts as this loud: -100 dB full scale.
constexpr double kQuiet = 1e-10;
constexpr unsigned kLongestBlock = 2000;
constexpr double kMostTurnsOff = 1e-6;
/// What a process may grow by between the first and the last look, for the allocator's own tables.
constexpr std::size_t kHeapSlack = 64 * 1024;

struct Options {
  std::filesystem::path plugin;
  double hours = 2.0;
  std::vector<unsigned> seeds;
};

void require(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error(what);
}

/// Two organ tones that come and go, with some noise: the same for plug-in and model.
class Programme {
 public:
  explicit Programme(unsigned seed) : m_random(seed) {}

  void fill(std::vector<double>& left, std::vector<double>& right, double rate) {
    for (std::size_t i = 0; i < left.size(); ++i) {
      if (m_left-- <= 0) change();
      for (std::size_t k = 0; k < 2; ++k) {
        m_phase[k] += m_hz[k] / rate;
        m_phase[k] -= std::floor(m_phase[k]);
      }
      m_level += (m_wantedLevel - m_level) * 0.002;
      const double noise = (static_cast<double>(m_random()) / 4294967295.0 - 0.5) * 0.02;
      const double tone = std::sin(2 * std::numbers::pi * m_phase[0]);
      left[i] = m_level * (tone + noise);
      right[i] = m_level * (0.7 * tone + std::sin(2 * std::numbers::pi * m_phase[1]));
    }
  }

 private:
  void change() {
    m_left = 2000 + static_cast<int>(m_random() % 40000);
    m_wantedLevel = m_random() % 5 == 0 ? 0.0 : 0.02 * std::pow(30.0, share());
    for (double& hz : m_hz) hz = 65.4 * std::pow(2.0, static_cast<double>(m_random() % 61) / 12.0);
  }
  double share() { return static_cast<double>(m_random()) / 4294967295.0; }

  std::mt19937 m_random;
  int m_left = 0;
  double m_level = 0.0, m_wantedLevel = 0.0;
  double m_phase[2]{}, m_hz[2]{};
};

/// Windows, pictures, cursors and so on that the display keeps for this process.
std::size_t displayResources(xcb_connection_t* xcb) {
  const xcb_res_client_id_spec_t any{0, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
  const auto ids =
      owned(xcb_res_query_client_ids_reply(xcb, xcb_res_query_client_ids(xcb, 1, &any), nullptr));
  require(ids != nullptr, "the display does not tell of its resources");
  std::size_t all = 0;
  auto client = xcb_res_query_client_ids_ids_iterator(ids.get());
  for (; client.rem > 0; xcb_res_client_id_value_next(&client)) {
    if (*xcb_res_client_id_value_value(client.data) != static_cast<std::uint32_t>(getpid()))
      continue;
    const auto types = owned(xcb_res_query_client_resources_reply(
        xcb, xcb_res_query_client_resources(xcb, client.data->spec.client), nullptr));
    if (types == nullptr) continue; // it has just gone
    const xcb_res_type_t* type = xcb_res_query_client_resources_types(types.get());
    for (int i = 0; i < xcb_res_query_client_resources_types_length(types.get()); ++i)
      all += type[i].count;
  }
  return all;
}

/// What this process holds while no editor is open; of the display's resources, while one is.
struct Holdings {
  std::size_t heap, descriptors, threads, clients, resources;

  static Holdings now(X11Host& screen, std::size_t resources) {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return {heapBytes(), openDescriptors(),
            static_cast<std::size_t>(std::distance(begin(tasks), end(tasks))),
            screen.children(screen.window()), resources};
  }
};

/// What is done to both, and what is counted on the way.
class Session {
 public:
  Session(const Options& options, unsigned seed)
      : m_seed(seed), m_random(seed), m_programme(seed), m_host(options.plugin),
        m_model(plugInRecordings()), m_screen({0, 0, 401, 570}),
        m_frames(static_cast<long long>(options.hours * 3600.0)) {}

  void run() {
    for (std::vector<double>* buffer : m_buffers) buffer->reserve(kLongestBlock);
    startAt(44100.0);
    // Everything that is made once has been made.
    openEditor();
    for (int step = 0; step <= 100; ++step) { // every frame of the pictures
      for (const int index : {0, 1, 2, 4, 5, 11}) set(index, static_cast<float>(step) / 100.0F);
      m_host.idleEditor();
    }
    m_host.selectPreset(0);
    m_model.restoreSlots(0);
    playFor(20.0);
    closeEditor();
    const Holdings first = Holdings::now(m_screen, m_resources);
    for (double next = 600.0; m_seconds < static_cast<double>(m_frames);) {
      act();
      playFor(0.05 + 2.0 * share() * share());
      if (m_seconds < next) continue;
      next += 600.0;
      report();
    }
    if (!m_editorOpen) openEditor();
    m_host.idleEditor();
    closeEditor();
    compare(first, Holdings::now(m_screen, m_resources));
    report();
  }

 private:
  double share() { return static_cast<double>(m_random()) / 4294967295.0; }
  unsigned below(unsigned n) { return static_cast<unsigned>(m_random() % n); }

  void startAt(double rate) {
    m_rate = rate;
    m_host.start(rate, 512, 2, 2);
    if (m_started) m_model.suspend();
    m_started = true;
    m_model.setSampleRate(static_cast<float>(rate));
    m_model.resume();
  }

  void set(int index, float value) {
    m_host.setValue(index, value);
    m_model.setParameter(index, value);
  }

  void midi(int status, int data1, int data2) {
    const tools::MidiBytes message{static_cast<std::uint8_t>(status),
                                   static_cast<std::uint8_t>(data1),
                                   static_cast<std::uint8_t>(data2)};
    m_host.sendMidi({&message, 1});
    m_model.processMidi(status, data1, data2);
  }

  void act() {
    ++m_actions;
    switch (below(12)) {
    case 0:
    case 1:
    case 2:
      set(2, below(3) == 0 ? static_cast<float>(share()) : static_cast<float>(below(2)));
      break;
    case 3: set(4, static_cast<float>(below(2))); break;
    case 4:
      midi(176 + static_cast<int>(below(2)), below(2) != 0 ? 1 : 64, static_cast<int>(below(128)));
      break;
    case 5: {
      const auto slot = static_cast<int>(below(32));
      m_host.selectPreset(slot); // by way of the chunk: get, change, set
      m_model.restoreSlots(slot);
      break;
    }
    case 6:
      if (below(4) == 0) {
        const double rates[] = {44100, 48000, 48000, 44100, 22050, 96000};
        startAt(rates[below(6)]);
      }
      break;
    case 7: m_editorOpen ? closeEditor() : openEditor(); break;
    case 8: set(below(2) != 0 ? 0 : 1, static_cast<float>(below(2))); break;
    default: // a knob, or several at once as from a control surface
      for (unsigned i = 1 + below(3); i > 0; --i) {
        const auto index = static_cast<int>(below(8) == 0 ? 35 : 5 + below(26));
        set(index, below(5) == 0 ? static_cast<float>(below(2)) : static_cast<float>(share()));
      }
    }
  }

  void openEditor() {
    require(m_host.openEditor(m_screen.window()), "the editor did not open");
    m_editorOpen = true;
    ++m_openings;
  }
  void closeEditor() {
    if (m_editorOpen) {
      m_screen.sync();
      m_resources = displayResources(m_screen.xcb());
      m_host.closeEditor();
    }
    m_editorOpen = false;
    // The effect has a connection of its own, which the display may serve after this one.
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (m_screen.children(m_screen.window()) > 0 && std::chrono::steady_clock::now() < patience)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  void playFor(double seconds) {
    const auto block = static_cast<std::size_t>(below(4) == 0 ? 1 + below(kLongestBlock) : 512);
    for (std::vector<double>* buffer : m_buffers) buffer->assign(block, 0.0);
    const double length = static_cast<double>(block) / m_rate;
    for (double end = m_seconds + seconds; m_seconds < end; m_seconds += length) {
      m_programme.fill(m_in[0], m_in[1], m_rate);
      double* in[]{m_in[0].data(), m_in[1].data()};
      double* out[]{m_out[0].data(), m_out[1].data()};
      m_host.process(in, out, static_cast<int>(block));
      m_model.process(in[0], in[1], m_expected[0].data(), m_expected[1].data(),
                      static_cast<int>(block));
      judge();
      m_untilIdle -= length;
      if (!m_editorOpen || m_untilIdle > 0.0) continue;
      m_host.idleEditor();
      m_untilIdle = 1.0 / 30.0;
    }
  }

  void judge() {
    for (std::size_t channel = 0; channel < 2; ++channel) {
      for (std::size_t i = 0; i < m_out[channel].size(); ++i) {
        const double wanted = m_expected[channel][i];
        const double difference = m_out[channel][i] - wanted;
        require(std::isfinite(difference), "not finite" + where());
        m_error += difference * difference;
        m_power += std::max(wanted * wanted, kQuiet);
        m_loudest = std::max(m_loudest, std::abs(wanted));
      }
    }
    m_judged += m_out[0].size();
    if (static_cast<double>(m_judged) < m_rate) return;
    const double db = 10.0 * std::log10((m_error + 1e-300) / m_power);
    m_worst = std::max(m_worst, db);
    require(db < kToleranceDb, "differs from the model by " + std::to_string(db) + " dB" + where());
    m_error = m_power = 0.0;
    m_judged = 0;
  }

  std::string where() const {
    return ", seed " + std::to_string(m_seed) + ", at " + std::to_string(m_seconds) + " s";
  }

  void compare(const Holdings& first, const Holdings& last) const {
    std::printf("seed %u: heap %zu -> %zu bytes, descriptors %zu -> %zu, threads %zu -> %zu, "
                "windows in the host's %zu -> %zu, the display's resources with an editor %zu -> "
                "%zu\n",
                m_seed, first.heap, last.heap, first.descriptors, last.descriptors, first.threads,
                last.threads, first.clients, last.clients, first.resources, last.resources);
    require(last.heap <= first.heap + kHeapSlack, "the heap has grown" + where());
    require(last.descriptors <= first.descriptors && last.threads <= first.threads &&
                last.clients <= first.clients && last.resources <= first.resources,
            "descriptors, threads, windows or what the display keeps are left" + where());
  }

  void report() const {
    std::printf(
        "seed %u: %.0f s of sound, %ld actions, %ld openings; worst second %.1f dB, loudest "
        "sample %.2f, heap %zu kB\n",
        m_seed, m_seconds, m_actions, m_openings, m_worst, m_loudest, heapBytes() / 1024);
    std::fflush(stdout);
  }

  unsigned m_seed;
  std::mt19937 m_random;
  Programme m_programme;
  tools::PluginHost m_host;
  reference::ReferenceEffect m_model;
  X11Host m_screen;
  std::size_t m_resources = 0; // when the editor was closed
  long long m_frames;
  double m_rate = 44100.0, m_seconds = 0.0, m_untilIdle = 0.0;
  bool m_editorOpen = false, m_started = false;
  long m_actions = 0, m_openings = 0;
  std::vector<double> m_in[2], m_out[2], m_expected[2];
  const std::array<std::vector<double>*, 6> m_buffers{&m_in[0],  &m_in[1],       &m_out[0],
                                                      &m_out[1], &m_expected[0], &m_expected[1]};
  double m_error = 0.0, m_power = 0.0, m_worst = -300.0, m_loudest = 0.0;
  std::size_t m_judged = 0;
};

/// Turns of a rotor by the closed form of its approach, in extended precision: a speed that goes to
/// t with the pole p has after n samples the value t + (s - t) p^n and has made n t + (s - t) p
/// (1 - p^n) / (1 - p) turns.
class ExactTurns {
 public:
  explicit ExactTurns(int direction) : m_direction(direction) {}

  void advance(int samples, double hz, double accel, double decel, double rate) {
    const long double target = static_cast<long double>(hz) / rate;
    const long double off = m_speed - target;
    const double seconds = off > 0.0L ? decel : accel;
    // 10 % to 90 % of an exponential approach are ln 9 time constants.
    const long double pole = std::exp(-1.0L / (seconds * rate * 0.45511961331));
    const long double rest = std::pow(pole, static_cast<long double>(samples));
    m_turns += m_direction * (samples * target + off * pole * (1.0L - rest) / (1.0L - pole));
    m_turns -= std::floor(m_turns);
    m_speed = target + off * rest;
  }

  /// The shorter way round, turns.
  double distance(double phase) const {
    const double apart = std::abs(static_cast<double>(m_turns) - phase);
    return std::min(apart, 1.0 - apart);
  }

 private:
  int m_direction;
  long double m_turns = 0.0L, m_speed = 0.0L;
};

void turnForHours(const Options& options, unsigned seed) {
  std::mt19937 random(seed);
  EngineFixture fixture;
  engine::RotaryEngine& engine = fixture.engine;
  constexpr double kRate = 48000.0;
  constexpr int kBlock = 512;
  fixture.setRate(kRate, CpuMode::Brilliant);
  struct Rotor {
    Setting slow, fast, accel, decel;
    double slowHz, fastHz, accelSeconds, decelSeconds;
    ExactTurns turns;
  } rotors[]{{Setting::HornSlowSpeedHz, Setting::HornFastSpeedHz, Setting::HornAccelSeconds,
              Setting::HornDecelSeconds, 0.671, 6.77, 0.62, 1.1, ExactTurns(-1)},
             {Setting::DrumSlowSpeedHz, Setting::DrumFastSpeedHz, Setting::DrumAccelSeconds,
              Setting::DrumDecelSeconds, 0.637, 6.01, 4.3, 3.9, ExactTurns(1)}};
  for (const Rotor& rotor : rotors) {
    engine.set(rotor.slow, rotor.slowHz);
    engine.set(rotor.fast, rotor.fastHz);
    engine.set(rotor.accel, rotor.accelSeconds);
    engine.set(rotor.decel, rotor.decelSeconds);
  }
  engine.set(Setting::Stop, 1.0);
  fixture.settle(90.0); // until both stand still
  const auto atBlockEnd = std::chrono::steady_clock::time_point{};
  const double began[]{engine.hornPhase(atBlockEnd), engine.drumPhase(atBlockEnd)};
  double stop = 1.0, lever = 1.0, worst = 0.0;
  std::vector<double> silence(kBlock, 0.0), left(kBlock), right(kBlock);
  const auto blocks = static_cast<long long>(options.hours * 3600.0 * kRate / kBlock);
  for (long long block = 0, next = 0; block < blocks; ++block) {
    if (block == next) {
      next += 1 + static_cast<long long>(random() % 3000); // up to 32 s
      lever = random() % 3 == 0 ? static_cast<double>(random()) / 4294967295.0
                                : static_cast<double>(random() % 2);
      stop = random() % 4 == 0 ? 1.0 : 0.0;
      engine.set(Setting::Lever, lever);
      engine.set(Setting::Stop, stop);
    }
    engine.process(silence.data(), silence.data(), left.data(), right.data(), kBlock);
    for (Rotor& rotor : rotors) {
      const double blend = rotor.slowHz + (rotor.fastHz - rotor.slowHz) * (1.0 - lever);
      rotor.turns.advance(kBlock, stop != 0.0 ? 0.0 : blend, rotor.accelSeconds, rotor.decelSeconds,
                          kRate);
    }
    const double horn = engine.hornPhase(atBlockEnd) - began[0];
    const double drum = engine.drumPhase(atBlockEnd) - began[1];
    worst = std::max({worst, rotors[0].turns.distance(horn - std::floor(horn)),
                      rotors[1].turns.distance(drum - std::floor(drum))});
    require(worst <= kMostTurnsOff,
            "a rotor is " + std::to_string(worst) + " turns off after " +
                std::to_string(static_cast<double>(block) * kBlock / kRate) + " s");
  }
  std::printf("seed %u: %.0f s of turning, horn and drum at most %.2g turns from the closed form\n",
              seed, options.hours * 3600.0, worst);
}

Options parse(int argc, char** argv) {
  Options options;
  options.plugin = PLUGIN;
  for (int i = 1; i < argc; i += 2) {
    const std::string word = argv[i];
    const char* value = i + 1 < argc ? argv[i + 1] : "";
    if (word == "--hours") {
      options.hours = std::strtod(value, nullptr);
    } else if (word == "--seed") {
      options.seeds.push_back(static_cast<unsigned>(std::strtoul(value, nullptr, 10)));
    } else if (word == "--plugin") {
      options.plugin = value;
    } else {
      throw std::runtime_error("usage: soak [--hours H] [--seed N]... [--plugin FILE]");
    }
  }
  require(options.hours > 0.0 && options.hours < 1000.0, "hours: more than 0, below 1000");
  if (options.seeds.empty()) options.seeds = {1, 2, 3};
  return options;
}

void soak(const Options& options) {
  const TemporaryFolder home;
  keepSettingsIn(home.path());
  const VirtualDisplay display;
  require(display.isRunning(), "no Xvfb");
  for (const unsigned seed : options.seeds) {
    Session(options, seed).run();
    turnForHours(options, seed);
  }
}

} // namespace
} // namespace qlx::test

int main(int argc, char** argv) {
  try {
    qlx::test::soak(qlx::test::parse(argc, argv));
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "soak: %s\n", error.what());
    return 1;
  }
}
