// SPDX-License-Identifier: ISC
// What a host does that looks for plug-ins: create the effect, ask, destroy it, anywhere and often.
#include "brezan/validate/host/Effect.h"
#include "brezan/validate/host/ProcessState.h"

#include <cstdlib>

namespace qlx::validate {

namespace {

void scanOnce(CheckRun& run) { scan(Effect(run)); }

void cold(CheckRun& run) { scanOnce(run); }

void warm(CheckRun& run) {
  for (int i = 0; i < 3; ++i) {
    run.trying("library loaded " + std::to_string(i + 1) + " times");
    scanOnce(run);
    run.unloadLibrary();
  }
}

/// Runs in the child's own environment.
void withoutVariables(CheckRun& run, std::initializer_list<const char*> names) {
  for (const char* name : names) ::unsetenv(name);
  scanOnce(run);
}

void noDisplay(CheckRun& run) {
  withoutVariables(run, {"DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS"});
}

void noHome(CheckRun& run) {
  withoutVariables(run, {"HOME", "USER", "XDG_RUNTIME_DIR"});
  run.trying("home folder that does not exist");
  ::setenv("HOME", (run.home() / "none").c_str(), 1);
  scanOnce(run);
}

void leavesHomeAlone(CheckRun& run) {
  scanOnce(run);
  for (const auto& entry : std::filesystem::directory_iterator(run.home()))
    run.fail("it has written " + entry.path().filename().string() + " into the home folder");
}

void leavesNothingRunning(CheckRun& run) {
  scanOnce(run); // what libraries keep for the whole process
  const ProcessState before;
  scanOnce(run);
  const ProcessState after;
  run.require(after.threads() <= before.threads(), "a thread goes on after Close");
  run.require(after.children() <= before.children(), "it has started a process");
  run.require(after.descriptors() <= before.descriptors(), "a file is left open");
}

void fifty(CheckRun& run) {
  for (int i = 0; i < 50; ++i) scanOnce(run);
}

void unopened(CheckRun& run) {
  sdk::EffectRecord* effect = Effect::create(run);
  run.require(effect != nullptr, "the entry point returned no effect");
  run.entering(CallKind::Dispatcher, 1, 0);
  effect->dispatcher(effect, static_cast<std::int32_t>(sdk::EffectOpcode::Close), 0, 0, nullptr,
                     0.0F);
}

void zeros(CheckRun& run) {
  setHost([](const HostCall& call) -> std::intptr_t {
    return call.is(sdk::HostOpcode::Version) ? sdk::kVstVersion : 0;
  });
  scanOnce(run);
  run.trying("version 2");
  setHost([](const HostCall& call) -> std::intptr_t {
    return call.is(sdk::HostOpcode::Version) ? 2 : 0;
  });
  scanOnce(run);
  run.trying("0 also for the version");
  setHost([](const HostCall&) -> std::intptr_t { return 0; });
  sdk::EffectRecord* effect = Effect::create(run); // may refuse
  if (effect != nullptr)
    effect->dispatcher(effect, static_cast<std::int32_t>(sdk::EffectOpcode::Close), 0, 0, nullptr,
                       0.0F);
}

constexpr Check kChecks[] = {
    {"scan", "cold", 1, "the first effect of a process: created, asked, destroyed", cold},
    {"scan", "warm", 1, "again after the library was unloaded", warm},
    {"scan", "no-display", 1, "without display and session", noDisplay},
    {"scan", "no-home", 1, "without a home folder", noHome},
    {"scan", "home-alone", 1, "nothing is written at creation", leavesHomeAlone},
    {"scan", "nothing-left", 1, "no thread, process or open file stays after Close",
     leavesNothingRunning},
    {"scan", "fifty", 1, "fifty times in a row", fifty},
    {"scan", "unopened", 1, "closed without having been opened", unopened},
    {"scan", "zeros", 1, "a scanner that answers 0 to everything", zeros},
};

} // namespace

std::span<const Check> scanChecks() { return kChecks; }

} // namespace qlx::validate
