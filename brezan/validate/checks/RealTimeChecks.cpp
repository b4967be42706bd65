// SPDX-License-Identifier: ISC
// What an effect does on the audio thread while it plays: nothing whose time has no bound.
#include "brezan/validate/Worker.h"
#include "brezan/validate/checks/AudioRun.h"
#include "brezan/validate/host/EventMemory.h"
#include "brezan/validate/host/RealTimeWatch.h"

#include <string>

namespace qlx::validate {

namespace {

constexpr double kRate = 48000.0;
constexpr int kBlock = 128;

/// Calls `what` on this thread and fails for a stall in it.
template <typename What>
void watched(const Effect& effect, Stall kind, const char* during, What what) {
  RealTimeWatch watch;
  what();
  watch.end();
  if (const std::string seen = watch.seen(kind); !seen.empty())
    effect.run().fail(seen + " during " + during);
}

/// A block's buffers filled beforehand, as AudioRun's own work is no business of the watch's.
class Block {
 public:
  explicit Block(const Effect& effect)
      : m_effect(effect), m_in(make(effect.record().numInputs)),
        m_out(make(effect.record().numOutputs)) {}

  void fill(TestSound& sound) {
    for (std::size_t i = 0; i < kBlock; ++i)
      for (std::size_t c = 0; c < m_in.size(); ++c)
        m_in[c][i] = static_cast<float>(sound(static_cast<int>(c)));
    m_inputs = pointers(m_in);
    m_outputs = pointers(m_out);
  }
  void process() { m_effect.process(m_inputs.data(), m_outputs.data(), kBlock); }

 private:
  using Channels = std::vector<std::vector<float>>;
  static Channels make(int count) {
    return Channels(static_cast<std::size_t>(count), std::vector<float>(kBlock));
  }
  static std::vector<float*> pointers(Channels& channels) {
    std::vector<float*> all;
    for (auto& channel : channels) all.push_back(channel.data());
    return all;
  }

  const Effect& m_effect;
  Channels m_in;
  Channels m_out;
  std::vector<float*> m_inputs;
  std::vector<float*> m_outputs;
};

void playWatched(const Effect& effect, Stall kind, Random random, int blocks) {
  Block block(effect);
  TestSound sound(random);
  const EventMemory events(4);
  for (int i = 0; i < blocks; ++i) {
    block.fill(sound);
    if (effect.parameters() > 0 && random.chance(2)) {
      const int index = random.below(effect.parameters());
      const float value = random.value();
      watched(effect, kind, "setParameter on the audio thread", [&] { effect.set(index, value); });
    }
    if (random.chance(4)) {
      events.randomMidi(random, kBlock);
      watched(effect, kind, "process events",
              [&] { effect.call(sdk::EffectOpcode::ProcessEvents, 0, 0, events.list()); });
    }
    watched(effect, kind, "processReplacing", [&] { block.process(); });
  }
}

void watch(CheckRun& run, Stall kind) {
  if (!RealTimeWatch::works(kind)) run.skip("this program or system cannot see them");
  const Effect effect(run);
  effect.start(kRate, kBlock);
  const int blocks = framesOf(run.seconds(), kRate) / kBlock;
  Worker audio([&] { playWatched(effect, kind, Random(3, "audio"), blocks); });
  // Meanwhile what a user does on another thread.
  do {
    if (effect.parameters() > 0)
      effect.set(run.random().below(effect.parameters()), run.random().value());
    if (effect.has(sdk::kProgramChunks)) effect.setState(effect.state());
    (void)effect.text(sdk::EffectOpcode::GetProgramName);
  } while (!audio.done());
  audio.join();
}

void allocations(CheckRun& run) { watch(run, Stall::Allocation); }
void locks(CheckRun& run) { watch(run, Stall::Lock); }
void systemCalls(CheckRun& run) { watch(run, Stall::SystemCall); }

constexpr Check kChecks[] = {
    {"realtime", "allocations", 4, "no memory is taken or given back on the audio thread",
     allocations},
    {"realtime", "locks", 4, "the audio thread waits for no other", locks},
    {"realtime", "system-calls", 4, "the audio thread makes no system calls", systemCalls},
};

} // namespace

std::span<const Check> realTimeChecks() { return kChecks; }

} // namespace qlx::validate
