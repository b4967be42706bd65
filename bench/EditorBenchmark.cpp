// SPDX-License-Identifier: ISC
#include "tests/support/EditorRig.h"

#include "presets/panel/LoadBitmap.h"

#include <benchmark/benchmark.h>

namespace {

using qlx::test::EditorRig;

// The argument is the window's size in per cent.
void setSize(EditorRig& rig, const benchmark::State& state) {
  rig.editor->setHostScale(static_cast<double>(state.range(0)) / 100.0);
}

/// What a host's user waits for, without the desktop's part of it.
void openAndClose(benchmark::State& state) {
  EditorRig rig;
  setSize(rig, state);
  for (auto run : state) {
    rig.open();
    rig.editor->close();
  }
}

/// The same of a process's only instance: what its window shows is decoded.
void openFirst(benchmark::State& state) {
  for (auto run : state) {
    state.PauseTiming();
    auto rig = std::make_unique<EditorRig>();
    setSize(*rig, state);
    state.ResumeTiming();
    rig->open();
    rig->editor->close();
    state.PauseTiming();
    rig.reset();
    state.ResumeTiming();
  }
}

void decodeStrip(benchmark::State& state) {
  for (auto run : state)
    benchmark::DoNotOptimize(qlx::presets::loadBitmap(static_cast<int>(state.range(0)))->pixels());
}

/// One idle with both rotors turning at full speed, drawn but not sent to a screen.
void idleWithRotorsTurning(benchmark::State& state) {
  EditorRig rig;
  setSize(rig, state);
  rig.open();
  for (auto run : state) {
    rig.effect.horn += 0.11;
    rig.effect.horn -= std::floor(rig.effect.horn);
    rig.effect.drum += 0.10;
    rig.effect.drum -= std::floor(rig.effect.drum);
    rig.editor->idle();
  }
}

void idleAtRest(benchmark::State& state) {
  EditorRig rig;
  rig.open();
  for (auto run : state) rig.editor->idle();
}

void sizes(benchmark::internal::Benchmark* each) {
  for (const int perCent : {100, 150, 200, 300}) each->Arg(perCent);
}

} // namespace

BENCHMARK(openFirst)->Apply(sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(openAndClose)->Apply(sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeStrip)->Arg(2002)->Arg(2005)->Arg(3999)->Arg(4000)->Unit(benchmark::kMillisecond);
BENCHMARK(idleWithRotorsTurning)->Apply(sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(idleAtRest)->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
