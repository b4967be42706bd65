// SPDX-License-Identifier: ISC
// The DLL in a host that loads and unloads it again and again: nothing may be left behind.
#include "brezan/System.h"
#include "platform/windows/Windows.h"
#include "sdk/VstTypes.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThisSystem.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <gtest/gtest.h>
#include <psapi.h>
#include <thread>
#include <vector>

namespace qlx::test {
namespace {

using sdk::EffectOpcode;
using sdk::EffectRecord;

std::intptr_t host(EffectRecord* /*effect*/, std::int32_t opcode, std::int32_t /*index*/,
                   std::intptr_t /*value*/, void* /*ptr*/, float /*opt*/) {
  return opcode == static_cast<std::int32_t>(sdk::HostOpcode::Version) ? 2400 : 0;
}

std::intptr_t call(EffectRecord* effect, EffectOpcode opcode, std::intptr_t value = 0,
                   void* ptr = nullptr, float opt = 0.0F) {
  return effect->dispatcher(effect, static_cast<std::int32_t>(opcode), 0, value, ptr, opt);
}

/// How many objects of a kind are alive: free numbers are given out first, so the greatest of many
/// new ones tells it. (Wine does not count for GetProcessHandleCount and GetGuiResources.)
template <class Make, class End>
int alive(int step, const Make& make, const End& end) {
  std::vector<decltype(make())> fresh(2000);
  int greatest = 0;
  for (auto& object : fresh) {
    object = make();
    constexpr std::uintptr_t kNumber = 0xFFFF; // the rest tells its reuse
    const auto number = reinterpret_cast<std::uintptr_t>(object) & kNumber;
    greatest = std::max(greatest, static_cast<int>(number) / step);
  }
  for (const auto& object : fresh) end(object);
  return greatest - static_cast<int>(fresh.size());
}

/// What this process holds of the system.
struct Held {
  double privateMegabytes = 0.0;
  int handles = 0;
  int drawingObjects = 0;
  int windows = 0;

  static Held now() {
    Held held;
    PROCESS_MEMORY_COUNTERS memory{};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    held.privateMegabytes = static_cast<double>(memory.PagefileUsage) / 1e6;
    constexpr int kHandleStep = 4;
    held.handles = alive(
        kHandleStep, [] { return CreateEventW(nullptr, TRUE, FALSE, nullptr); }, CloseHandle);
    held.drawingObjects = alive(
        1, [] { return CreateSolidBrush(1); }, DeleteObject);
    const auto window = [] {
      return CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    };
    held.windows = alive(2, window, DestroyWindow);
    return held;
  }
  void print(int round) const {
    std::printf("after %3d: private %.2f MB, handles %d, GDI %d, windows %d\n", round,
                privateMegabytes, handles, drawingObjects, windows);
  }
};

/// Plays noise into an effect and turns its knobs, on a thread of its own.
class Player {
 public:
  explicit Player(EffectRecord* effect) : m_thread([this, effect] { play(effect); }) {}
  ~Player() {
    m_stop = true;
    m_thread.join();
  }
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

 private:
  void play(EffectRecord* effect) const {
    constexpr std::int32_t kFrames = 512;
    std::array<std::array<float, kFrames>, 2> channels{};
    std::array<float*, 2> buffers{channels[0].data(), channels[1].data()};
    for (std::uint32_t noise = 1; !m_stop;) {
      for (float& sample : channels[0]) {
        noise = noise * 1664525U + 1013904223U;
        sample = static_cast<float>(noise >> 8) / 16777216.0F - 0.5F;
      }
      effect->processReplacing(effect, buffers.data(), buffers.data(), kFrames);
      effect->setParameter(effect, 5 + static_cast<std::int32_t>(noise >> 8) % 26,
                           static_cast<float>(noise >> 8 & 1023U) / 1023.0F);
    }
  }

  std::atomic<bool> m_stop{false};
  std::thread m_thread;
};

void messages() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) DispatchMessageW(&message);
}

/// Three instances with editors, of which one plays. On every other round the host closes the
/// editors before the effects.
void loadAndUnload(HWND parent, int round) {
  const tools::SharedObject library(PLUGIN);
  const auto entry = reinterpret_cast<sdk::EntryFunction>(library.symbol("VSTPluginMain"));
  std::array<EffectRecord*, 3> effects{};
  for (EffectRecord*& effect : effects) {
    effect = entry(host);
    ASSERT_NE(effect, nullptr);
    call(effect, EffectOpcode::SetSampleRate, 0, nullptr, 48000.0F);
    call(effect, EffectOpcode::MainsChanged, 1);
    ASSERT_EQ(call(effect, EffectOpcode::EditOpen, 0, parent), 1);
  }
  {
    const Player player(effects[0]);
    for (int i = 0; i < 10; ++i) {
      messages();
      for (EffectRecord* const effect : effects) call(effect, EffectOpcode::EditIdle);
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
  }
  for (EffectRecord* const effect : effects) {
    if (round % 2 == 1) call(effect, EffectOpcode::EditClose);
    call(effect, EffectOpcode::Close);
  }
}

TEST(WindowsHost, AHundredLoadsLeaveLittleBehind) {
  constexpr int kRounds = 100;
  constexpr int kWarmUp = 20; // what the system itself keeps has been made by then
  const TemporaryFolder home;
  keepSettingsIn(home.path());
  const HWND parent = CreateWindowW(L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 50,
                                    450, 620, nullptr, nullptr, nullptr, nullptr);
  Held before;
  for (int round = 0; round < kRounds; ++round) {
    ASSERT_NO_FATAL_FAILURE(loadAndUnload(parent, round));
    messages();
    ASSERT_FALSE(isLoaded(PLUGIN));
    if (round == kWarmUp) before = Held::now();
    if (round % kWarmUp == 0) Held::now().print(round);
  }
  const Held after = Held::now();
  after.print(kRounds);
  constexpr int kOthers = 20; // what the system itself makes meanwhile, and other programs' windows
  // Wine's printer library, which the file dialogs' library loads, leaves a mutex each time.
  constexpr int kHandlesOfEachRound = 1;
  EXPECT_LT(after.handles, before.handles + kHandlesOfEachRound * (kRounds - kWarmUp) + kOthers);
  EXPECT_LT(after.drawingObjects, before.drawingObjects + kOthers);
  EXPECT_LT(after.windows, before.windows + kOthers);
  constexpr double kMegabytesOfEachRound = 0.02;
  EXPECT_LT(after.privateMegabytes - before.privateMegabytes,
            kMegabytesOfEachRound * (kRounds - kWarmUp));
  DestroyWindow(parent);
}

} // namespace
} // namespace qlx::test
