// SPDX-License-Identifier: ISC
#include "tests/system/Scenario.h"

#include "presets/format/PresetData.h"
#include "resources/NoiseRecordings.h"
#include "tests/support/MidiMessage.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <random>
#include <sstream>
#include <stdexcept>

namespace qlx::test {

namespace {

std::intptr_t host(sdk::EffectRecord*, std::int32_t opcode, std::int32_t, std::intptr_t, void*,
                   float) {
  return opcode == static_cast<std::int32_t>(sdk::HostOpcode::Version) ? 2400 : 0;
}

/// Test programme, endless; the same on every machine but for the last bits of a sine.
class Signal {
 public:
  explicit Signal(const std::string& name) : m_name(name) {
    if (name != "noise" && name != "chord" && name != "impulse" && name != "silence")
      throw std::runtime_error("no signal " + name);
  }

  std::pair<double, double> next() {
    const double t = static_cast<double>(m_frame++) / 48000.0;
    if (m_name == "noise") return {uniform(), uniform()};
    if (m_name == "impulse") return {m_frame % 24000 == 12000 ? 1.0 : 0.0, 0.0};
    if (m_name == "silence") return {0.0, 0.0};
    double sum = 0;
    for (const double hz : {65.4, 130.8, 196.0, 261.6, 329.6, 392.0, 784.0, 1046.5, 2093.0, 4186.0})
      sum += 0.06 * std::sin(2 * std::numbers::pi * hz * t + hz);
    return {sum, 0.9 * sum};
  }

 private:
  double uniform() { return static_cast<double>(m_random()) / 4294967295.0 - 0.5; }

  std::string m_name;
  std::mt19937 m_random{7};
  long long m_frame = 0;
};

void playBlocks(Player& player, Signal& signal, int block, int frames, Stereo& out) {
  std::vector<double> l(static_cast<std::size_t>(block)), r(l.size()), ol(l.size()), orr(l.size());
  for (; frames > 0; frames -= block) {
    const int n = std::min(block, frames);
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i)
      std::tie(l[i], r[i]) = signal.next();
    player.process(l.data(), r.data(), ol.data(), orr.data(), n);
    out.left.insert(out.left.end(), ol.begin(), ol.begin() + n);
    out.right.insert(out.right.end(), orr.begin(), orr.begin() + n);
  }
}

} // namespace

PluginPlayer::PluginPlayer(const std::filesystem::path& file) : m_library(file) {
  const auto entry = reinterpret_cast<sdk::EntryFunction>(m_library.symbol("VSTPluginMain"));
  m_effect = entry(host);
  call(sdk::EffectOpcode::Open);
}

PluginPlayer::~PluginPlayer() { call(sdk::EffectOpcode::Close); }

std::intptr_t PluginPlayer::call(sdk::EffectOpcode opcode, std::intptr_t value, void* ptr,
                                 float opt) {
  return m_effect->dispatcher(m_effect, static_cast<std::int32_t>(opcode), 0, value, ptr, opt);
}

void PluginPlayer::setSampleRate(float hz) {
  call(sdk::EffectOpcode::SetSampleRate, 0, nullptr, hz);
}
void PluginPlayer::suspend() { call(sdk::EffectOpcode::MainsChanged, 0); }
void PluginPlayer::resume() { call(sdk::EffectOpcode::MainsChanged, 1); }
void PluginPlayer::setParameter(int index, float value) {
  m_effect->setParameter(m_effect, index, value);
}

void PluginPlayer::selectPreset(int number) {
  void* data = nullptr;
  const auto size = call(sdk::EffectOpcode::GetChunk, 0, &data);
  if (size != 42289) throw std::runtime_error("no chunk");
  std::vector<char> chunk(static_cast<char*>(data), static_cast<char*>(data) + size);
  const auto current = static_cast<std::int32_t>(number);
  std::memcpy(chunk.data() + presets::kChunkCurrentIndexAt, &current, sizeof current);
  call(sdk::EffectOpcode::SetChunk, size, chunk.data());
}

void PluginPlayer::midi(int status, int data1, int data2) {
  MidiMessage message(status, data1, data2);
  call(sdk::EffectOpcode::ProcessEvents, 0, &message.list);
}

void PluginPlayer::process(const double* l, const double* r, double* outLeft, double* outRight,
                           int n) {
  double* in[] = {const_cast<double*>(l), const_cast<double*>(r)};
  double* out[] = {outLeft, outRight};
  m_effect->processDoubleReplacing(m_effect, in, out, n);
}

Stereo play(const std::string& script, Player& player) {
  std::istringstream lines(script);
  Signal signal("noise");
  Stereo out;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string action;
    if (!(words >> action) || action[0] == '#') continue;
    int a = 0, b = 0, c = 0;
    float v = 0;
    std::string name;
    if (action == "signal" && words >> name) {
      signal = Signal(name);
    } else if (action == "rate" && words >> v) {
      player.setSampleRate(v);
    } else if (action == "suspend") {
      player.suspend();
    } else if (action == "resume") {
      player.resume();
    } else if (action == "preset" && words >> a) {
      player.selectPreset(a);
    } else if (action == "param" && words >> a >> v) {
      player.setParameter(a, v);
    } else if (action == "midi" && words >> a >> b >> c) {
      player.midi(a, b, c);
    } else if (action == "blocks" && words >> a >> b && a > 0) {
      playBlocks(player, signal, a, b, out);
    } else {
      throw std::runtime_error("not understood: " + line);
    }
  }
  return out;
}

reference::Recordings plugInRecordings() {
  resources::unpackNoiseRecordings();
  const engine::Recordings r = resources::noiseRecordings();
  return {r.hornSlow[0], r.hornSlow[1], r.hornFast, r.drumSlow, r.drumFast, r.startStop};
}

double errorDb(const Stereo& expected, const Stereo& actual) {
  double error = 0, power = 0;
  const auto add = [&](const std::vector<double>& e, const std::vector<double>& a) {
    if (e.size() != a.size()) throw std::runtime_error("lengths differ");
    for (std::size_t i = 0; i < e.size(); ++i) {
      error += (e[i] - a[i]) * (e[i] - a[i]);
      power += e[i] * e[i];
    }
  };
  add(expected.left, actual.left);
  add(expected.right, actual.right);
  if (!std::isfinite(error)) return INFINITY;
  return 10 * std::log10((error + 1e-300) / (power + 1e-300));
}

Stereo thinned(const Stereo& render, std::size_t keep, std::size_t of) {
  Stereo out;
  for (std::size_t i = 0; i < render.left.size(); i += of) {
    const std::size_t end = std::min(render.left.size(), i + keep);
    out.left.insert(out.left.end(), render.left.begin() + long(i), render.left.begin() + long(end));
    out.right.insert(out.right.end(), render.right.begin() + long(i),
                     render.right.begin() + long(end));
  }
  return out;
}

} // namespace qlx::test
