// SPDX-License-Identifier: ISC
// Hosts that answer oddly, and those that call back from inside a call.
#include "brezan/validate/checks/AudioRun.h"
#include "brezan/validate/host/EventMemory.h"

#include <string>

namespace qlx::validate {

namespace {

using sdk::EffectOpcode;
using sdk::HostOpcode;

/// Some of everything, so that the effect has reason to call its host.
void session(CheckRun& run, bool connected = true) {
  const Effect effect(run);
  scan(effect);
  effect.start(48000.0, 256);
  AudioRun<float> audio(effect, 256);
  if (!connected) audio.listenTo(0);
  TestSound sound(run.random());
  for (int i = run.rounds(10, 300); i > 0; --i) {
    if (effect.parameters() > 0)
      effect.set(run.random().below(effect.parameters()), run.random().value());
    const EventMemory events(1);
    events.midi(0,
                {0xB0, static_cast<std::uint8_t>(run.random().below(128)),
                 static_cast<std::uint8_t>(run.random().below(128))},
                0);
    effect.call(EffectOpcode::ProcessEvents, 0, 0, events.list());
    audio.process(256, std::ref(sound));
    effect.call(EffectOpcode::SetProgram, 0, run.random().below(3));
    if (effect.has(sdk::kProgramChunks) && run.random().chance(4)) effect.setState(effect.state());
    if (run.random().chance(8)) effect.start(44100.0, 64);
  }
  effect.requireValuesInRange();
}

/// Answers that are pointers cannot be 1.
bool answersPointer(const HostCall& call) {
  return call.is(HostOpcode::GetTime) || call.is(HostOpcode::GetDirectory);
}

void zeros(CheckRun& run) {
  setHost([](const HostCall& call) -> std::intptr_t {
    return call.is(HostOpcode::Version) ? sdk::kVstVersion : 0;
  });
  session(run);
}

void ones(CheckRun& run) {
  setHost([](const HostCall& call) -> std::intptr_t {
    return call.is(HostOpcode::Version) ? sdk::kVstVersion : answersPointer(call) ? 0 : 1;
  });
  session(run, false); // 1 says that nothing is connected
}

void enormous(CheckRun& run) {
  setHost([](const HostCall& call) -> std::intptr_t {
    return call.is(HostOpcode::Version) ? sdk::kVstVersion
           : answersPointer(call)       ? 0
           : (call.index & 1) != 0      ? -1
                                        : std::intptr_t{1} << 62;
  });
  session(run, false);
}

/// `reply` is called for the calls of an effect that is not being created, but not from inside
/// itself.
template <typename Reply>
void setReplyingHost(Reply reply) {
  setHost([reply](const HostCall& call) {
    static thread_local bool busy = false;
    if (call.effect != nullptr && call.effect->object != nullptr && !busy) {
      busy = true;
      reply(call,
            [&call](EffectOpcode opcode, int index, std::intptr_t value, void* ptr, float opt) {
              return call.effect->dispatcher(call.effect, static_cast<std::int32_t>(opcode), index,
                                             value, ptr, opt);
            });
      busy = false;
    }
    return usualAnswer(call);
  });
}

void writesBack(CheckRun& run) {
  setReplyingHost([](const HostCall& call, auto) {
    if (call.is(HostOpcode::Automate)) call.effect->setParameter(call.effect, call.index, call.opt);
  });
  session(run);
}

void ratesInside(CheckRun& run) {
  setReplyingHost([](const HostCall& call, auto ask) {
    if (!call.is(HostOpcode::GetSampleRate) && !call.is(HostOpcode::GetBlockSize)) return;
    ask(EffectOpcode::SetSampleRate, 0, 0, nullptr, 48000.0F);
    ask(EffectOpcode::SetBlockSize, 0, 256, nullptr, 0.0F);
  });
  session(run);
}

void readsInside(CheckRun& run) {
  setReplyingHost([](const HostCall& call, auto ask) {
    char text[256] = {};
    ask(EffectOpcode::GetProgramName, 0, 0, text, 0.0F);
    for (int i = 0; i < call.effect->numParams; ++i) {
      call.effect->getParameter(call.effect, i);
      ask(EffectOpcode::GetParameterDisplay, i, 0, text, 0.0F);
    }
    void* data = nullptr;
    ask(EffectOpcode::GetChunk, 0, 0, &data, 0.0F);
  });
  session(run);
}

void setsInside(CheckRun& run) {
  setReplyingHost([](const HostCall& call, auto ask) {
    for (int i = 0; i < call.effect->numParams; ++i)
      call.effect->setParameter(call.effect, i, 0.5F);
    ask(EffectOpcode::SetProgram, 0, 0, nullptr, 0.0F);
  });
  session(run);
}

constexpr Check kChecks[] = {
    {"hosts", "zeros", 2, "every call is answered with 0", zeros},
    {"hosts", "ones", 2, "every call is answered with 1", ones},
    {"hosts", "enormous", 4, "calls are answered with -1 and enormous numbers", enormous},
    {"hosts", "write-back", 2, "automation that is told is written back at once", writesBack},
    {"hosts", "rates", 3, "asked for its rate the host sets it at once", ratesInside},
    {"hosts", "read-inside", 3, "all is read from inside every call", readsInside},
    {"hosts", "set-inside", 4, "parameters and program are set from inside every call", setsInside},
};

} // namespace

std::span<const Check> hostChecks() { return kChecks; }

} // namespace qlx::validate
