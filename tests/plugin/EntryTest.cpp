// SPDX-License-Identifier: ISC
#include "brezan/System.h"
#include "sdk/VstTypes.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThisSystem.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <gmock/gmock.h>
#include <optional>
#include <string>
#include <vector>

namespace qlx::test {
namespace {

using sdk::EffectRecord;
using sdk::EntryFunction;

std::intptr_t version = 2400;
std::vector<sdk::HostOpcode> requests;

/// Asked for its version it answers; otherwise it calls the effect back, as some hosts do.
std::intptr_t host(EffectRecord* effect, std::int32_t opcode, std::int32_t /*index*/,
                   std::intptr_t /*value*/, void* /*ptr*/, float /*opt*/) {
  requests.push_back(static_cast<sdk::HostOpcode>(opcode));
  if (requests.back() == sdk::HostOpcode::Version) return version;
  if (effect != nullptr) {
    effect->dispatcher(effect, 10, 0, 0, nullptr, 48000.0F);
    effect->dispatcher(effect, 11, 0, 128, nullptr, 0.0F);
  }
  return 0;
}

/// The shared object as a host loads it.
class EntryTest : public ::testing::Test {
 protected:
  EntryTest() {
    version = 2400;
    requests.clear();
    keepSettingsIn(m_home.path());
    m_library.emplace(PLUGIN);
  }

  EntryFunction entry(const char* name) {
    return reinterpret_cast<EntryFunction>(m_library->symbol(name));
  }
  static void close(EffectRecord* effect) { effect->dispatcher(effect, 1, 0, 0, nullptr, 0.0F); }

  TemporaryFolder m_home;
  std::optional<tools::SharedObject> m_library;
};

TEST_F(EntryTest, BothNamesMakeAnEffect) {
  for (const char* name : {"VSTPluginMain", "main"}) {
    ASSERT_NE(entry(name), nullptr) << name;
    EffectRecord* const effect = entry(name)(host);
    ASSERT_NE(effect, nullptr) << name;
    EXPECT_EQ(effect->magic, sdk::kEffectMagic);
    close(effect);
  }
}

TEST_F(EntryTest, NothingIsMadeForAHostWithoutVersion) {
  version = 0;
  EXPECT_EQ(entry("VSTPluginMain")(host), nullptr);
  EXPECT_EQ(entry("VSTPluginMain")(nullptr), nullptr);
}

TEST_F(EntryTest, TheHostIsAskedForItsVersionOnlyUntilItHasTheRecord) {
  EffectRecord* const effect = entry("VSTPluginMain")(host);
  ASSERT_NE(effect, nullptr);
  EXPECT_THAT(requests, testing::Each(sdk::HostOpcode::Version));
  requests.clear();
  effect->dispatcher(effect, 12, 0, 1, nullptr, 0.0F);
  EXPECT_THAT(requests, testing::ElementsAre(sdk::HostOpcode::WantMidi));
  close(effect);
}

/// The calling thread's x87 control word, set for a while.
class X87Word {
 public:
  explicit X87Word(std::uint16_t word) : m_before(current()) { set(word); }
  ~X87Word() { set(m_before); }
  X87Word(const X87Word&) = delete;
  X87Word& operator=(const X87Word&) = delete;

  static std::uint16_t current() {
    std::uint16_t word = 0;
    __asm__ volatile("fnstcw %0" : "=m"(word));
    return word;
  }

 private:
  static void set(std::uint16_t word) { __asm__ volatile("fldcw %0" : : "m"(word)); }
  std::uint16_t m_before;
};

TEST_F(EntryTest, SoundsTheSameAndKeepsTheHostsX87WordWhateverItIs) {
  constexpr std::int32_t kFrames = 256;
  constexpr std::uint16_t kExtendedPrecision = 0x037F;
  constexpr std::uint16_t kDoublePrecision = 0x027F; // that of new threads on Windows
  constexpr std::uint16_t kSinglePrecisionUpwards = 0x087F;
  const auto heard = [&](std::uint16_t word) {
    std::vector<double> sound;
    const X87Word ofHost(word);
    const auto keeps = [&](const char* call) { EXPECT_EQ(X87Word::current(), word) << call; };
    EffectRecord* const effect = entry("VSTPluginMain")(host);
    keeps("entry");
    effect->dispatcher(effect, 10, 0, 0, nullptr, 44100.0F);
    effect->dispatcher(effect, 12, 0, 1, nullptr, 0.0F);
    keeps("dispatcher");
    std::array<double, kFrames> left{};
    std::array<double, kFrames> right{};
    std::array<double*, 2> buffers{left.data(), right.data()};
    for (int block = 0; block < 60; ++block) {
      // Filters of the amplifier, the horn and the drum are designed anew while they play.
      for (const std::int32_t index : {6, 9, 13, 15, 22, 29})
        effect->setParameter(effect, index, static_cast<float>(block % 9) / 8.0F);
      keeps("setParameter");
      for (std::size_t i = 0; i < left.size(); ++i) left[i] = right[i] = i % 64 < 32 ? 0.25 : -0.25;
      effect->processDoubleReplacing(effect, buffers.data(), buffers.data(), kFrames);
      keeps("processDoubleReplacing");
      sound.insert(sound.end(), left.begin(), left.end());
    }
    close(effect);
    keeps("close");
    return sound;
  };
  const std::vector<double> expected = heard(kExtendedPrecision);
  EXPECT_GT(*std::ranges::max_element(expected), 0.01);
  EXPECT_EQ(heard(kDoublePrecision), expected);
  EXPECT_EQ(heard(kSinglePrecisionUpwards), expected);
}

TEST_F(EntryTest, ScannersLeaveNoTrace) {
  version = 2;
  EffectRecord* const effect = entry("VSTPluginMain")(host);
  ASSERT_NE(effect, nullptr);
  std::array<char, 256> text{};
  for (const std::int32_t opcode : {0, 45, 47, 48, 35, 49, 58}) {
    effect->dispatcher(effect, opcode, 0, 0, text.data(), 0.0F);
  }
  close(effect);
  EXPECT_FALSE(settingsWereWritten());
}

TEST_F(EntryTest, UnloadingReallyUnloads) {
  EffectRecord* const effect = entry("VSTPluginMain")(host);
  ASSERT_NE(effect, nullptr);
  std::array<float, 512> samples{};
  float* buffers[] = {samples.data(), samples.data()};
  effect->dispatcher(effect, 12, 0, 1, nullptr, 0.0F);
  effect->processReplacing(effect, buffers, buffers, 512);
  close(effect);
  ASSERT_TRUE(isLoaded(PLUGIN));
  m_library.reset();
  EXPECT_FALSE(isLoaded(PLUGIN));
}

} // namespace
} // namespace qlx::test
