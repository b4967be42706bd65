// SPDX-License-Identifier: ISC
// A small sound effect with a ringing filter, a state and a plain window. QLX_FAULT in the
// environment names the one thing that it does wrong; without it nothing is wrong.
#include "sdk/AudioEffectX.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <xcb/xcb.h>
#include <xmmintrin.h>

namespace {

using namespace qlx::sdk;

bool has(std::string_view fault) {
  static const char* const chosen = std::getenv("QLX_FAULT");
  return chosen != nullptr && fault == chosen;
}

void abortIf(bool wrong) {
  if (wrong) std::abort();
}

/// Taken when the library is loaded.
[[gnu::used]] const char* leftAtLoad =
    has("leak at load") ? std::make_unique<char[]>(5000).release() : nullptr;

constexpr int kParameters = 3;
constexpr std::array<const char*, kParameters> kNames = {"Gain", "Ring", "Spare"};
using Values = std::array<float, kParameters>;

/// What the state chunk holds.
struct State {
  std::int32_t id = fourCharacters("FltY");
  Values values{};
  std::int32_t sum = 0;

  std::int32_t sumOfValues() const {
    std::array<std::int32_t, kParameters> bits{};
    std::memcpy(bits.data(), values.data(), sizeof values);
    return bits[0] ^ bits[1] ^ bits[2] ^ 1;
  }
};

class Window : public AEffGUIEditor {
 public:
  explicit Window(AudioEffect* effect) : AEffGUIEditor(effect) {}
  ~Window() override { close(); }
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  bool getRect(EditRectangle** rectangle) override {
    *rectangle = &m_size;
    return true;
  }
  bool open(void* parent) override {
    if (m_x != nullptr) {
      abortIf(has("opened twice"));
      close();
    }
    m_x = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(m_x) != 0) {
      xcb_disconnect(std::exchange(m_x, nullptr));
      return has("no window");
    }
    m_window = xcb_generate_id(m_x);
    const auto number = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(parent));
    check(xcb_create_window_checked(m_x, 0, m_window, number, 0, 0, 9, 9, 0, 1, 0, 0, nullptr));
    return true;
  }
  void close() override {
    if (m_x == nullptr) return;
    if (!has("window left")) {
      check(xcb_destroy_window_checked(m_x, m_window));
      xcb_disconnect(m_x);
    }
    m_x = nullptr;
  }
  void idle() override { abortIf(m_x == nullptr && has("idle")); }
  bool onKeyDown(const KeyCode& key) override {
    abortIf(has("key") && key.character > 255);
    return false;
  }

 private:
  // As Xlib does unless it is told otherwise.
  void check(xcb_void_cookie_t request) {
    xcb_generic_error_t* const error = xcb_request_check(m_x, request);
    if (error != nullptr && has("window error")) std::_Exit(1);
    std::free(error);
  }

  EditRectangle m_size{0, 0, static_cast<std::int16_t>(has("size") ? -5 : 50), 50};
  xcb_connection_t* m_x = nullptr;
  xcb_window_t m_window = 0;
};

class FaultyEffect : public AudioEffectX {
 public:
  explicit FaultyEffect(HostCallback host) : AudioEffectX(host, 2, kParameters) {
    setUniqueId(has("id") ? 0 : fourCharacters("FltY"));
    setFlags(kCanReplacing | kCanDoubleReplacing | kProgramChunks);
    setNumInputs(2);
    setNumOutputs(2);
    setEditor(std::make_unique<Window>(this));
    if (has("file")) std::ofstream(std::string(std::getenv("HOME")) + "/.faulty") << "here\n";
    abortIf(has("screen") && std::getenv("DISPLAY") == nullptr);
    if (has("home")) (void)std::string(std::getenv("HOME"));
    if (has("thread"))
      std::thread([] {
        for (;;) std::this_thread::yield();
      }).detach();
    if (has("leak")) m_leak = std::make_unique<char[]>(100).release();
    static float created = 0.0F;
    created += 0.01F;
    if (has("uninitialized")) m_values[2] = created;
  }

  std::intptr_t dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                         float opt) override {
    if (has("unknown") && opcode == 333) return 1;
    abortIf(has("null") && opcode == static_cast<int>(EffectOpcode::CanDo) && ptr == nullptr);
    abortIf(has("bypass") && opcode == static_cast<int>(EffectOpcode::SetBypass) && value > 99);
    if (has("program") && opcode == static_cast<int>(EffectOpcode::SetProgram))
      m_program = static_cast<std::int32_t>(value);
    if (has("state size") && opcode == static_cast<int>(EffectOpcode::SetChunk) && ptr != nullptr)
      return setChunk(ptr, static_cast<std::int32_t>(value), false);
    return AudioEffectX::dispatch(opcode, index, value, ptr, opt);
  }

  bool getEffectName(char* text) override {
    std::strcpy(text,
                has("name") ? "An effect with a name of no less than 50 characters" : "Faulty");
    return true;
  }
  std::int32_t canDo(const char* text) override {
    return has("able") || std::string_view(text) == "receiveVstMidiEvent" ? 1 : 0;
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
    const auto lock = locked();
    if (!isParameter(index) && !has("index")) return;
    if (!has("outside")) value = value >= 0.0F ? std::min(value, 1.0F) : 0.0F;
    m_values.data()[index] = value;
    if (has("echo")) callHost(HostOpcode::Automate, index, 0, nullptr, value);
  }
  float getParameter(std::int32_t index) override {
    const float value = isParameter(index) ? m_values[static_cast<std::size_t>(index)] : 0.0F;
    return has("range") ? 1.5F * value : value;
  }
  bool string2parameter(std::int32_t index, const char* text) override {
    if (text == nullptr || !isParameter(index)) return false;
    const auto value = static_cast<float>(std::atof(text));
    m_values[static_cast<std::size_t>(index)] =
        has("text") || (value >= 0.0F && value <= 1.0F) ? value : 0.0F;
    return true;
  }

  std::int32_t getProgram() override { return m_program; }
  void setProgram(std::int32_t index) override { m_program = index; }
  void setProgramName(const char* name) override {
    m_name = std::string(name).substr(0, has("program name") ? 200 : 23);
  }
  void getProgramName(char* text) override { std::strcpy(text, m_name.c_str()); }

  std::int32_t getChunk(void** data, bool) override {
    const auto lock = locked();
    m_state.values = m_values;
    if (has("forgotten")) m_state.values[1] = 0.0F;
    m_state.sum = m_state.sumOfValues();
    *data = &m_state;
    return sizeof m_state;
  }
  std::int32_t setChunk(const void* data, std::int32_t byteSize, bool) override {
    abortIf(has("race") && m_processing);
    const auto lock = locked();
    State state;
    if (byteSize != sizeof state && !has("short state") && !has("state size")) return -1;
    std::memcpy(&state, data,
                has("state size") ? static_cast<std::size_t>(byteSize) : sizeof state);
    if (has("written")) *static_cast<char*>(const_cast<void*>(data)) = '\0';
    if (has("kept")) m_kept = static_cast<const State*>(data);
    if (has("half")) m_values[0] = 0.25F;
    const bool good = state.id == State{}.id && state.sum == state.sumOfValues();
    if (!good && !has("unchecked")) return -1;
    m_values = state.values;
    if (has("lock")) updateDisplay();
    return 1;
  }

  std::int32_t processEvents(const EventList* events) override {
    if (events == nullptr) return 0;
    const auto lock = locked();
    if (has("many")) events->events[std::abs(events->numEvents) / 2]->flags = 0;
    for (std::int32_t i = 0; i < events->numEvents; ++i) {
      const Event* const event = events->events[i];
      if (event == nullptr && !has("no event")) continue;
      if (has("late")) m_sound[static_cast<std::size_t>(event->deltaFrames)] = 1.0F;
      if (event->type != kMidiEventType) continue;
      abortIf(has("message") && (event->data[8] & 0xFF) == 0xF7);
      if ((event->data[8] & 0xF0) == 0xB0)
        setParameterAutomated(2, static_cast<float>(event->data[10] & 127) / 127.0F);
    }
    return 1;
  }

  void setSampleRate(float hz) override {
    const auto lock = locked();
    AudioEffectX::setSampleRate(hz);
  }
  void setBlockSize(std::int32_t frames) override {
    abortIf(has("block size") && frames < 1);
    AudioEffectX::setBlockSize(frames);
  }
  void resume() override {
    abortIf(has("rate") && getSampleRate() > 192000.0F);
    abortIf(has("resumed") && m_on);
    {
      const auto lock = locked();
      const auto rate = callHost(HostOpcode::GetSampleRate);
      abortIf(has("host rate") && rate != 0 && rate < 100);
      abortIf(has("no rate") && rate == 0);
    }
    m_on = true;
    rings() = {};
    AudioEffectX::resume();
  }
  void suspend() override { m_on = false; }

  void processReplacing(float** in, float** out, std::int32_t frames) override {
    process(in, out, frames);
  }
  void processDoubleReplacing(double** in, double** out, std::int32_t frames) override {
    process(in, out, frames);
  }

 private:
  static bool isParameter(std::int32_t index) { return index >= 0 && index < kParameters; }
  std::unique_lock<std::mutex> locked() {
    return has("lock") ? std::unique_lock(m_mutex) : std::unique_lock<std::mutex>();
  }

  std::array<double, 2>& rings() {
    static std::array<double, 2> ofAll{};
    return has("shared") ? ofAll : m_ring;
  }

  template <typename Sample>
  void process(Sample** in, Sample** out, std::int32_t frames) {
    abortIf(has("off") && !m_on);
    m_processing = true;
    if (has("race")) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (has("kept") && m_kept != nullptr) m_values = m_kept->values;
    if (has("allocation")) m_name = std::string(100, 'x');
    if (has("mutex")) const std::scoped_lock<std::mutex> lock(m_mutex);
    if (has("system call")) std::this_thread::yield();
    if (has("mode")) _mm_setcsr(_mm_getcsr() | 0x8000);
    if (has("input")) in[0][0] = 0;
    if (has("cleared")) std::fill_n(out[0], frames, Sample{});
    if (has("odd")) frames -= frames % 2;
    if (has("beyond")) out[1][frames] = 0;
    if (has("announced")) frames = std::min(frames, getBlockSize());
    double gain = static_cast<double>(m_values[0]);
    if (has("single") && sizeof(Sample) == 4) gain *= 1.01;
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
    m_processing = false;
  }

  double sample(std::size_t channel, double x, double gain) {
    double& ring = rings()[channel];
    ring = 0.99 * ring + x;
    if (!std::isfinite(ring) && !has("stuck")) ring = 0.0;
    if (std::abs(ring) < 1e-30 && !has("subnormal")) ring = 0.0;
    return gain * x + 0.1 * static_cast<double>(m_values[1]) * ring;
  }

  Values m_values{0.5F, 0.5F, 0.0F};
  std::array<double, 2> m_ring{};
  std::array<float, 256> m_sound{};
  std::int32_t m_program = 0;
  std::string m_name = "Plain";
  State m_state;
  const State* m_kept = nullptr;
  const char* m_leak = nullptr;
  bool m_on = false;
  std::atomic<bool> m_processing{false};
  std::mutex m_mutex;
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
