// SPDX-License-Identifier: ISC
#include "resources/NoiseRecordings.h"
#include "tests/support/CountingAllocator.h"
#include "tests/support/EffectFixture.h"
#include "tests/support/MidiMessage.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <numbers>
#include <random>
#include <thread>
#include <xmmintrin.h>

namespace qlx::test {
namespace {

using ::testing::Each;

constexpr std::int32_t kFrames = 256;

/// A programme on both channels, different on each.
struct Stereo {
  std::vector<float> left = std::vector<float>(kFrames), right = std::vector<float>(kFrames);

  static Stereo tones() {
    Stereo s;
    for (std::size_t i = 0; i < s.left.size(); ++i) {
      const auto t = static_cast<float>(i) / 44100.0F * 2.0F * std::numbers::pi_v<float>;
      s.left[i] = 0.5F * std::sin(t * 440.0F);
      s.right[i] = 0.25F * std::sin(t * 660.0F);
    }
    return s;
  }
};

/// Bypassed, so that what comes out tells what went in.
class BypassedEffectTest : public EffectFixture {
 protected:
  BypassedEffectTest() {
    effect->setParameter(kBypass, 1.0F);
    effect->resume();
    for (int i = 0; i < 200; ++i) process();
  }

  void process() {
    output.left.assign(kFrames, -9.0F);
    output.right.assign(kFrames, -9.0F);
    float* in[] = {firstInput, secondInput};
    float* out[] = {output.left.data(), output.right.data()};
    effect->getRecord()->processReplacing(effect->getRecord(), in, out, kFrames);
  }

  sdk::SpeakerArrangement arrangement(std::int32_t channels) {
    sdk::SpeakerArrangement a{};
    a.numChannels = channels;
    return a;
  }
  bool arrange(std::int32_t inputs, std::int32_t outputs) {
    const auto in = arrangement(inputs);
    const auto out = arrangement(outputs);
    return effect->setSpeakerArrangement(&in, &out);
  }

  Stereo input = Stereo::tones();
  Stereo output;
  float* firstInput = input.left.data();
  float* secondInput = input.right.data();
};

MATCHER_P(Follows, signal, "") {
  for (std::size_t i = 0; i < arg.size(); ++i) {
    if (std::abs(arg[i] - signal[i]) > 1e-5F) return false;
  }
  return true;
}

TEST_F(BypassedEffectTest, ChannelLayouts) {
  struct Case {
    std::int32_t inputs, outputs;
    bool supported, secondRead, secondWritten;
  };
  for (const Case& c :
       {Case{2, 2, true, true, true}, Case{1, 1, true, false, false}, Case{1, 2, true, false, true},
        Case{2, 1, true, true, false}, Case{6, 2, false, true, true},
        Case{1, 1, true, false, false}, Case{2, 0, false, true, true}}) {
    EXPECT_EQ(arrange(c.inputs, c.outputs), c.supported);
    process();
    EXPECT_THAT(output.left, Follows(input.left)) << c.inputs << " to " << c.outputs;
    if (c.secondWritten) {
      EXPECT_THAT(output.right, Follows(c.secondRead ? input.right : input.left))
          << c.inputs << " to " << c.outputs;
    } else {
      EXPECT_THAT(output.right, Each(-9.0F)) << c.inputs << " to " << c.outputs;
    }
  }
  EXPECT_FALSE(effect->setSpeakerArrangement(nullptr, nullptr));
}

TEST_F(BypassedEffectTest, OneChannelNeedsOnePointer) {
  ASSERT_TRUE(arrange(1, 1));
  // Each pointer is the last one before memory that must not be touched.
  const std::array<GuardedPage, 2> pages;
  const std::array<float**, 2> channels{pages[0].last<float*>(), pages[1].last<float*>()};
  *channels[0] = input.left.data();
  *channels[1] = output.left.data();
  effect->processReplacing(channels[0], channels[1], kFrames);
  EXPECT_THAT(output.left, Follows(input.left));
}

TEST_F(BypassedEffectTest, UnconnectedPinsAreNeitherReadNorWritten) {
  connected() = false;
  process();
  EXPECT_THAT(output.left, Follows(input.left));
  EXPECT_THAT(output.right, Each(-9.0F));
}

TEST_F(BypassedEffectTest, MissingBuffersAreSilence) {
  secondInput = nullptr;
  process();
  EXPECT_THAT(output.right, Follows(input.left));
  firstInput = nullptr;
  process();
  EXPECT_THAT(output.left, Each(0.0F));
  EXPECT_THAT(output.right, Each(0.0F));

  float* in[] = {input.left.data(), input.right.data()};
  float* out[] = {nullptr, nullptr};
  effect->processReplacing(in, out, kFrames);
}

TEST_F(BypassedEffectTest, BothPrecisionsSoundAlike) {
  std::vector<double> left(input.left.begin(), input.left.end());
  std::vector<double> right(input.right.begin(), input.right.end());
  double* buffers[] = {left.data(), right.data()};
  effect->processDoubleReplacing(buffers, buffers, kFrames);
  EXPECT_THAT(left, Follows(input.left));
  EXPECT_THAT(right, Follows(input.right));
}

/// Modes of the SSE and the x87 unit.
struct FloatingPointModes {
  unsigned sse = 0;
  std::uint16_t x87 = 0;

  static FloatingPointModes current() {
    FloatingPointModes modes;
    modes.sse = _mm_getcsr();
    __asm__ volatile("fnstcw %0" : "=m"(modes.x87));
    return modes;
  }
  void set() const {
    _mm_setcsr(sse);
    __asm__ volatile("fldcw %0" : : "m"(x87));
  }
};

TEST_F(BypassedEffectTest, FloatingPointModesAreOurOwnInABlockAndTheHostsBehindIt) {
  // A full reset tells the host, in the middle of a block, what the placement sets.
  static FloatingPointModes inside;
  inside = {};
  whenAutomated() = [] { inside = FloatingPointModes::current(); };
  effect->resume();
  const FloatingPointModes before = FloatingPointModes::current();
  constexpr unsigned kRoundDown = 0x2000;
  constexpr std::uint16_t kDoublePrecision = 0x027F;
  const FloatingPointModes ofHost{before.sse | kRoundDown, kDoublePrecision};
  ofHost.set();
  for (int i = 0; i < 20; ++i) process();
  const FloatingPointModes after = FloatingPointModes::current();
  before.set();
  constexpr unsigned kFlushToZero = 0x8040, kSseModes = 0xFFC0;
  constexpr std::uint16_t kExtendedPrecision = 0x037F;
  EXPECT_EQ(inside.sse & kSseModes, kFlushToZero | 0x1F80U);
  EXPECT_EQ(inside.x87, kExtendedPrecision);
  EXPECT_EQ(after.sse, ofHost.sse);
  EXPECT_EQ(after.x87, ofHost.x87);
}

class RotaryEffectTest : public EffectFixture {
 protected:
  std::string ask(bool (RotaryEffect::*operation)(char*)) {
    std::array<char, 256> buffer{};
    EXPECT_TRUE((effect.get()->*operation)(buffer.data()));
    return buffer.data();
  }
};

TEST_F(RotaryEffectTest, Identity) {
  const sdk::EffectRecord& record = *effect->getRecord();
  EXPECT_EQ(record.uniqueId, 0x5162725A); // QbrZ
  EXPECT_EQ(record.version, 1);
  EXPECT_EQ(record.numPrograms, 1);
  EXPECT_EQ(record.numParams, 36);
  EXPECT_EQ(record.numInputs, 2);
  EXPECT_EQ(record.numOutputs, 2);
  EXPECT_EQ(record.initialDelay, 0);
  constexpr std::int32_t kExpected = 1 | 16 | 32 | 4096;
  EXPECT_EQ(record.flags & kExpected, kExpected);
  EXPECT_EQ(ask(&RotaryEffect::getEffectName), "QLX Brezan");
  EXPECT_EQ(ask(&RotaryEffect::getProductString), "QLX Brezan - rotary speaker emulator");
  EXPECT_EQ(ask(&RotaryEffect::getVendorString), "meridane.example");
  EXPECT_EQ(effect->getVendorVersion(), 1000);
}

TEST_F(RotaryEffectTest, CanDoTakesWholeWordsOnly) {
  for (const char* word :
       {"offline", "plugAsChannelInsert", "1in1out", "1in2out", "2in2out", "receiveVstMidiEvent"}) {
    EXPECT_EQ(effect->canDo(word), 1) << word;
  }
  for (const char* word : {"1in", "", "1in2outs", "2in1out", "sendVstMidiEvent", "Offline"}) {
    EXPECT_EQ(effect->canDo(word), 0) << word;
  }
}

TEST_F(RotaryEffectTest, Pins) {
  sdk::PinProperties pin;
  std::memset(&pin, 0x5A, sizeof pin);
  EXPECT_FALSE(effect->getInputProperties(2, &pin));
  EXPECT_FALSE(effect->getOutputProperties(-1, &pin));
  EXPECT_EQ(pin.flags, 0x5A5A5A5A);
  EXPECT_TRUE(effect->getInputProperties(0, &pin));
  EXPECT_STREQ(pin.label, "QLX Brezan 1 In");
  EXPECT_TRUE(effect->getOutputProperties(1, &pin));
  EXPECT_STREQ(pin.label, "QLX Brezan 2 Out");
  EXPECT_EQ(pin.flags, 3);
  EXPECT_EQ(pin.arrangementType, 0x5A5A5A5A);
}

TEST_F(RotaryEffectTest, StartsOnTheDefaultPreset) {
  const presets::PresetSlot slot = effect->getPresetSlot(0);
  for (std::int32_t i = 0; i < kNumHostParameters; ++i) {
    EXPECT_EQ(effect->getParameter(i), slot.values[static_cast<std::size_t>(i)]) << i;
  }
  EXPECT_EQ(effect->getParameter(kHAccel), 0.395142F);
  EXPECT_EQ(effect->getParameter(kCPUmode), 0.0F);
  EXPECT_EQ(effect->getParameter(kHornMic2Gain), 0.55F);
  EXPECT_EQ(effect->getParameter(kHornAmplitudeClip), 0.795879F);
  EXPECT_EQ(effect->getParameter(36), 0.0F);
}

TEST_F(RotaryEffectTest, FactoryBank) {
  constexpr std::array names = std::to_array<const char*>(
      {"Default", "B'122", "B'147", "Old Rotary", "Relaxed", "Wobble", "Ramble", "Synchro", "Swift",
       "Full Moon", "Light", "Lazy Horn", "Broken Horn Motor", "Mellow Drum", "Static Drum",
       "Horn Mics", "Single Mic"});
  const presets::PresetSlot standard = effect->getPresetSlot(0);
  for (std::int32_t i = 0; i < presets::kNumPresetSlots; ++i) {
    const presets::PresetSlot slot = effect->getPresetSlot(i);
    const auto n = static_cast<std::size_t>(i);
    EXPECT_EQ(slot.nameText(), n < names.size() ? names[n] : "Init") << i;
    EXPECT_EQ(slot.values == standard.values, i <= 1 || n >= names.size()) << i;
    EXPECT_THAT(slot.values, Each(::testing::AllOf(::testing::Ge(0.0F), ::testing::Le(1.0F))));
  }
  EXPECT_EQ(effect->getPresetSlot(15).values[kDLPF], 0.3504F);
}

TEST_F(RotaryEffectTest, TheWheelMovesTheLeverAndIsSeen) {
  MidiMessage wheel(0xB4, 1, 127);
  EXPECT_EQ(effect->processEvents(&wheel.list), 1);
  EXPECT_EQ(effect->getParameter(kLever), 1.0F);
  const editor::EffectReadout& readout = *effect;
  EXPECT_EQ(readout.modWheelActivity(), 1.0F);

  std::vector<float> silence(22050);
  float* buffers[] = {silence.data(), silence.data()};
  effect->processReplacing(buffers, buffers, 22050);
  EXPECT_NEAR(readout.modWheelActivity(), 0.368F, 0.001F);
}

TEST_F(RotaryEffectTest, ReadOutsShowTheRotors) {
  effect->setParameter(kBypassSpeakers, 0.49F);
  EXPECT_FALSE(effect->speakersBypassed());
  effect->setParameter(kBypassSpeakers, 1.0F);
  EXPECT_TRUE(effect->speakersBypassed());

  effect->setParameter(kBypassSpeakers, 0.0F);
  effect->resume();
  std::vector<float> silence(44100);
  float* buffers[] = {silence.data(), silence.data()};
  effect->processReplacing(buffers, buffers, 44100);
  const auto now = std::chrono::steady_clock::now();
  EXPECT_NE(effect->hornPhase(now), 0.0);
  EXPECT_NE(effect->drumPhase(now), 0.0);
}

TEST_F(RotaryEffectTest, TheAudioThreadAllocatesNothing) {
  effect->resume();
  Stereo buffers = Stereo::tones();
  float* io[] = {buffers.left.data(), buffers.right.data()};
  MidiMessage pedal(0xB0, 64, 0);
  news().reserve(10000);
  const AllocationCount allocations;
  for (int block = 0; block < 300; ++block) {
    pedal.event.midiData[2] = static_cast<char>(block % 2 == 0 ? 127 : 0);
    effect->processEvents(&pedal.list);
    effect->setParameter(kSetup, static_cast<float>(block % 100) / 100.0F);
    effect->setParameter(kSize, static_cast<float>(block % 7) / 7.0F);
    effect->setParameter(kCPUmode, block > 150 ? 1.0F : 0.0F);
    effect->processReplacing(io, io, kFrames);
  }
  EXPECT_EQ(allocations.value(), 0);
}

/// What a host sends by mistake is over as soon as it sends sense: no gain and no filter remembers
/// it for longer than a tenth of a second, whether or not the mute closes meanwhile.
TEST_F(RotaryEffectTest, ValuesOutOfRangeAreSoonForgotten) {
  std::vector<float> valid;
  for (std::int32_t i = 0; i < kNumParameters; ++i) valid.push_back(effect->getParameter(i));
  effect->resume();
  std::mt19937 random(7);
  std::uniform_real_distribution<float> uniform(-0.5F, 0.5F), exponent(-1.0F, 30.0F);
  const auto outOfRange = [&] {
    return std::pow(10.0F, exponent(random)) * (random() % 2 == 0 ? 1.0F : -1.0F);
  };
  const auto loudest = [&](double seconds) {
    float peak = 0.0F;
    Stereo block;
    float* io[] = {block.left.data(), block.right.data()};
    for (int done = 0; done < static_cast<int>(seconds * 44100); done += kFrames) {
      for (std::size_t i = 0; i < block.left.size(); ++i)
        block.left[i] = block.right[i] = uniform(random);
      effect->processReplacing(io, io, kFrames);
      for (const std::vector<float>* side : {&block.left, &block.right})
        for (const float x : *side) peak = std::isfinite(x) ? std::max(peak, std::abs(x)) : 1e38F;
    }
    return peak;
  };
  const float undisturbed = loudest(1.0);
  // Those that ask for no work behind the mute.
  constexpr std::int32_t kUnmuted[] = {
      5,  6,  7,  8,  9,   11,  12,  13,  15,  16,  19,  20,  22,  23,  26,  27, 29, 30,
      37, 43, 46, 47, 48,  49,  50,  51,  52,  55,  56,  60,  61,  74,  75,  76, 85, 86,
      89, 92, 95, 98, 102, 103, 105, 110, 111, 112, 113, 114, 115, 116, 117, 119};
  for (int trial = 0; trial < 45; ++trial) {
    const float same = outOfRange();
    if (trial % 3 == 0) {
      for (const std::int32_t i : kUnmuted)
        effect->setParameter(i, trial % 2 == 0 ? same : outOfRange());
    } else {
      for (std::int32_t i = 0; i < kNumParameters; ++i)
        effect->setParameter(i, trial % 3 == 1 ? same : outOfRange());
      effect->setParameter(kBypass, 0.0F);
    }
    loudest(0.2);
    for (std::int32_t i = 0; i < kNumParameters; ++i)
      effect->setParameter(i, valid[static_cast<std::size_t>(i)]);
    loudest(0.1);
    EXPECT_LT(loudest(0.4), 4.0F * undisturbed) << "trial " << trial;
  }
}

/// What follows runs in a process of its own, where no other test has resumed an instance.
TEST(RotaryEffectCreation, RecordingsStayPackedUntilAnInstanceIsResumed) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto unpacked = [] { return resources::noiseRecordings().filled->load(); };
  const auto steps = [&] {
    RotaryEffect first(nullptr), second(nullptr);
    first.setSampleRate(48000.0F);
    for (const int on : {0, 1, 1}) {
      if (on != 0) (unpacked() ? second : first).resume();
      if (unpacked() != (on != 0)) std::exit(1);
    }
    std::exit(0);
  };
  EXPECT_EXIT(steps(), testing::ExitedWithCode(0), "");
}

/// For the thread sanitizer as much as for the result: the host's threads meet in single values
/// only.
TEST_F(RotaryEffectTest, ParametersPresetsAndChunksWhileAudioRuns) {
  RotaryEffect shared(nullptr);
  shared.resume();
  std::atomic<bool> done{false};
  std::atomic<int> blocks{0};
  std::atomic<int> garbage{0};
  std::thread audio([&] {
    const Stereo programme = Stereo::tones();
    Stereo buffers = programme;
    float* io[] = {buffers.left.data(), buffers.right.data()};
    MidiMessage wheel(0xB0, 1, 0);
    for (; !done; ++blocks) {
      std::ranges::copy(programme.left, io[0]);
      std::ranges::copy(programme.right, io[1]);
      wheel.event.midiData[2] = static_cast<char>(blocks % 128);
      shared.processEvents(&wheel.list);
      shared.processReplacing(io, io, kFrames);
      for (const float sample : buffers.left) garbage += std::isfinite(sample) ? 0 : 1;
    }
  });
  std::thread automation([&] {
    for (int i = 0; !done; ++i) {
      shared.setParameter(i % kNumParameters, static_cast<float>(i % 11) / 10.0F);
    }
  });
  for (int i = 0; i < 60 || blocks < 300; ++i) {
    shared.selectPreset(i % presets::kNumPresetSlots);
    shared.setSampleRate(i % 2 == 0 ? 48000.0F : 44100.0F);
    void* data = nullptr;
    const std::int32_t size = shared.getChunk(&data, false);
    const std::vector<char> copy(static_cast<char*>(data), static_cast<char*>(data) + size);
    EXPECT_EQ(shared.setChunk(copy.data(), size, false), 0);
    shared.suspend();
    shared.resume();
    std::array<char, 64> text{};
    shared.getParameterDisplay(i, text.data());
    EXPECT_GE(shared.hornPhase(std::chrono::steady_clock::now()), 0.0);
  }
  done = true;
  automation.join();
  audio.join();
  EXPECT_EQ(garbage, 0);
}

} // namespace
} // namespace qlx::test
