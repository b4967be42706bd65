// SPDX-License-Identifier: ISC
// A small sound effect with a tone's echo, a state and an editor without a window. QLX_FAULT in the
// environment names the one thing that it does wrong; without it nothing is wrong.
#include "sdk/AudioEffectX.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <xmmintrin.h>

namespace {

using namespace qlx::sdk;

bool has(std::string_view fault) {
  static const char* const chosen = std::getenv("QLX_FAULT");
  return chosen != nullptr && fault == chosen;
}

constexpr int kParameters = 3;
constexpr std::array<const char*, kParameters> kNames = {"Gain", "Ring", "Spare"};

class FaultyEffect : public AudioEffectX {
 public:
  explicit FaultyEffect(HostCallback host) : AudioEffectX(host, 2, kParameters) {
    setUniqueId(has("id") ? 0 : fourCharacters("FltY"));
    setFlags(kCanReplacing | kCanDoubleReplacing | kProgramChunks);
    setNumInputs(2);
    setNumOutputs(2);
    if (has("file")) std::ofstream(std::string(std::getenv("HOME")) + "/.faulty") << "here\n";
    if (has("screen") && std::getenv("DISPLAY") == nullptr) std::abort();
    if (has("home") && std::string(std::getenv("HOME")).empty()) std::abort();
    if (has("thread"))
      std::thread([] { std::this_thread::sleep_for(std::chrono::hours(1)); }).detach();
  }

  bool getEffectName(char* text) override {
    std::strcpy(text,
                has("name") ? "An effect with a name of no less than 50 characters" : "Faulty");
    return true;
  }
  void getParameterName(std::int32_t index, char* text) override {
    if (isParameter(index)) std::strcpy(text, kNames[static_cast<std::size_t>(index)]);
  }
  void getParameterLabel(std::int32_t, char* text) override {
    has("label") ? std::memset(text, '%', 20) : std::strcpy(text, "%");
  }
  void getParameterDisplay(std::int32_t index, char* text) override {
    const float value = getParameter(index);
    const bool tooLong = has("display") && value > 0.5F && value < 1.0F;
    std::strcpy(text, tooLong ? "between the middle and the end" : std::to_string(value).c_str());
  }
  bool getInputProperties(std::int32_t, PinProperties* pin) override {
    std::memset(pin->label, 'i', has("pin") ? sizeof pin->label : 3);
    return true;
  }

  void setParameter(std::int32_t index, float value) override {
    if (!isParameter(index)) return;
    m_values[static_cast<std::size_t>(index)] = value >= 0.0F ? std::min(value, 1.0F) : 0.0F;
  }
  float getParameter(std::int32_t index) override {
    return isParameter(index) ? m_values[static_cast<std::size_t>(index)] : 0.0F;
  }

  void resume() override {
    if (has("rate") && getSampleRate() > 192000.0F) std::abort();
    m_ring = {};
    AudioEffectX::resume();
  }

  void processReplacing(float** in, float** out, std::int32_t frames) override {
    process(in, out, frames);
  }
  void processDoubleReplacing(double** in, double** out, std::int32_t frames) override {
    process(in, out, frames);
  }

  static void afterNoFrames(float** out) { out[0][0] = 0.0F; }

 private:
  static bool isParameter(std::int32_t index) { return index >= 0 && index < kParameters; }

  template <typename Sample>
  void process(Sample** in, Sample** out, std::int32_t frames) {
    if (has("mode")) _mm_setcsr(_mm_getcsr() | 0x8000);
    if (has("input")) in[0][0] = 0;
    if (has("cleared")) std::fill_n(out[0], frames, Sample{});
    if (has("odd")) frames -= frames % 2;
    if (has("beyond")) out[1][frames] = 0;
    if (has("announced")) frames = std::min(frames, getBlockSize());
    const auto gain =
        static_cast<double>(m_values[0]) * (has("single") && sizeof(Sample) == 4 ? 1.01 : 1.0);
    if (has("channels"))
      for (const int c : {0, 1})
        for (int i = 0; i < frames; ++i) out[c][i] = in[c][i];
    else
      for (int i = 0; i < frames; ++i) {
        const std::array<double, 2> x = {static_cast<double>(in[0][i]),
                                         static_cast<double>(in[1][i])};
        for (const std::size_t c : {0U, 1U}) out[c][i] = static_cast<Sample>(sample(c, x[c], gain));
      }
    if (has("gain") && gain > 0.9) out[0][0] = NAN;
  }

  double sample(std::size_t channel, double x, double gain) {
    double& ring = m_ring[channel];
    ring = 0.99 * ring + x;
    if (!std::isfinite(ring) && !has("stuck")) ring = 0.0;
    if (std::abs(ring) < 1e-30 && !has("subnormal")) ring = 0.0;
    return gain * x + 0.1 * static_cast<double>(m_values[1]) * ring;
  }

  std::array<float, kParameters> m_values{0.5F, 0.5F, 0.0F};
  std::array<double, 2> m_ring{};
};

} // namespace

extern "C" __attribute__((visibility("default"))) EffectRecord* VSTPluginMain(HostCallback host) {
  EffectRecord* record = std::make_unique<FaultyEffect>(host).release()->getRecord();
  if (has("no frames"))
    record->processReplacing = [](EffectRecord*, float**, float** out, std::int32_t frames) {
      int i = 0;
      do out[0][i] = out[1][i] = 0.0F;
      while (++i < frames);
    };
  return record;
}
