// SPDX-License-Identifier: ISC
// The effect's window inside a host's, opened and closed as hosts do.
#include "brezan/validate/Worker.h"
#include "brezan/validate/checks/AudioRun.h"
#include "brezan/validate/host/ParentWindow.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

namespace qlx::validate {

namespace {

using sdk::EffectOpcode;

constexpr int kMostPixels = 16384;

/// Skips effects without an editor.
sdk::EditRectangle rectangle(const Effect& effect) {
  if (!effect.has(sdk::kHasEditor)) effect.run().skip("it has no editor");
  sdk::EditRectangle* found = nullptr;
  const auto answer = effect.call(EffectOpcode::EditGetRectangle, 0, 0, &found);
  if (answer == 0 || found == nullptr) return {0, 0, 480, 640};
  return *found;
}

/// An effect, and a window of its editor's size to open it in.
struct Stage {
  explicit Stage(CheckRun& run)
      : effect(run), size(rectangle(effect)),
        parent(std::max(1, size.right - size.left), std::max(1, size.bottom - size.top)) {}

  bool open() const { return effect.call(EffectOpcode::EditOpen, 0, 0, parent.handle()) != 0; }
  void close() const { effect.call(EffectOpcode::EditClose); }
  void idle(int times) const {
    for (; times > 0; --times) {
      effect.call(EffectOpcode::EditIdle);
      std::this_thread::sleep_for(std::chrono::milliseconds(1)); // events need to come
    }
  }

  Effect effect;
  sdk::EditRectangle size;
  ParentWindow parent;
};

void size(CheckRun& run) {
  const Effect effect(run);
  const sdk::EditRectangle r = rectangle(effect);
  const int width = r.right - r.left, height = r.bottom - r.top;
  run.require(width >= 0 && height >= 0 && width <= kMostPixels && height <= kMostPixels,
              "the editor's rectangle is none");
}

void opening(CheckRun& run) {
  const Stage stage(run);
  for (int i = run.rounds(2, 50); i > 0; --i) {
    run.require(stage.open(), "the editor does not open");
    stage.idle(5);
    stage.close();
    stage.idle(1);
    run.require(stage.parent.becomesEmpty(), "the closed editor leaves a window behind");
  }
}

void unordered(CheckRun& run) {
  const Stage stage(run);
  Random& random = run.random();
  stage.close();
  stage.idle(2);
  run.trying("opened twice");
  stage.open();
  stage.open();
  stage.close();
  run.trying("closed twice");
  stage.close();
  stage.idle(2);
  for (int i = run.rounds(10, 300); i > 0; --i) {
    run.trying("open, close, idle, sizes and programs in any order");
    switch (random.below(5)) {
    case 0: stage.open(); break;
    case 1: stage.close(); break;
    case 2: (void)rectangle(stage.effect); break;
    case 3: stage.effect.call(EffectOpcode::SetProgram, 0, random.below(3)); break;
    default: stage.idle(2);
    }
  }
}

void keys(CheckRun& run) {
  const Stage stage(run);
  for (const bool open : {false, true}) {
    run.trying(open ? "keys to an open editor" : "keys to a closed editor");
    if (open) stage.open();
    for (int i = run.rounds(50, 3000); i > 0; --i) {
      const auto key = run.random().chance(2) ? EffectOpcode::EditKeyDown : EffectOpcode::EditKeyUp;
      stage.effect.call(key, run.random().between(-1, 300), run.random().between(-1, 80), nullptr,
                        static_cast<float>(run.random().below(16)));
      stage.effect.call(EffectOpcode::SetEditKnobMode, 0, run.random().between(-1, 4));
      if (i % 25 == 0) stage.idle(1);
    }
    stage.effect.requireValuesInRange();
  }
  stage.close();
}

void parentFirst(CheckRun& run) {
  for (const bool idle : {true, false}) {
    Stage stage(run);
    run.trying(idle ? "the parent window goes first, then idle and close"
                    : "the parent window goes first, then close");
    stage.open();
    stage.idle(3);
    stage.parent.destroy();
    if (idle) stage.idle(5);
    stage.close();
    ParentWindow second(640, 480);
    run.trying("opened again in another window");
    stage.effect.call(EffectOpcode::EditOpen, 0, 0, second.handle());
    stage.idle(3);
    stage.close();
  }
}

void effectFirst(CheckRun& run) {
  Stage stage(run);
  stage.open();
  stage.idle(2);
  stage.effect.close();
  run.require(stage.parent.becomesEmpty(), "the destroyed effect leaves its window behind");
}

void whilePlaying(CheckRun& run) {
  const Stage stage(run);
  stage.effect.start(48000.0, 64);
  Worker audio([&] {
    AudioRun<float> block(stage.effect, 64);
    TestSound sound(Random(10, "audio"));
    for (int i = framesOf(run.seconds(), 48000.0) / 64; i > 0; --i)
      block.process(64, std::ref(sound));
  });
  do {
    stage.open();
    for (int i = 0; i < 5; ++i) {
      stage.effect.randomizeValues();
      stage.idle(1);
    }
    stage.close();
  } while (!audio.done());
  audio.join();
}

void two(CheckRun& run) {
  const Stage first(run);
  Stage second(run);
  first.open();
  second.open();
  first.idle(2);
  second.idle(2);
  second.effect.close();
  first.idle(2);
  first.close();
}

void noDisplay(CheckRun& run) {
  const Stage stage(run);
  ::unsetenv("DISPLAY");
  run.require(!stage.open() || stage.parent.children() > 0,
              "without a display the editor claims to be open");
  stage.idle(2);
  stage.close();
}

constexpr Check kChecks[] = {
    {"editor", "size", 1, "the rectangle, before there is a window", size, true},
    {"editor", "open", 2, "opened and closed again and again", opening, true},
    {"editor", "order", 3, "opened twice, closed twice, idle without a window", unordered, true},
    {"editor", "keys", 3, "any keys, open or closed", keys, true},
    {"editor", "parent-first", 3, "the parent window is destroyed first", parentFirst, true},
    {"editor", "effect-first", 3, "the effect is destroyed with its window open", effectFirst,
     true},
    {"editor", "playing", 4, "opened and closed while another thread plays", whilePlaying, true},
    {"editor", "two", 3, "two effects with a window each", two, true},
    {"editor", "no-display", 3, "opened without a display", noDisplay, true},
};

} // namespace

std::span<const Check> editorChecks() { return kChecks; }

} // namespace qlx::validate
