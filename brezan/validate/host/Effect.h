// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/validate/CheckRun.h"
#include "brezan/validate/host/Host.h"
#include "sdk/VstTypes.h"

#include <cstdint>
#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace qlx::validate {

enum class StateKind : std::int32_t { Bank = 0, Program = 1 };

/// One instance, spoken to through its record. Every call is noted for the report of a crash. Calls
/// are made on the caller's thread.
class Effect {
 public:
  /// Creates it and sends Open. Fails the check when the entry returns none.
  explicit Effect(CheckRun& run);
  /// Closes it, unless the check has failed: what then comes would hide why.
  ~Effect() {
    if (std::uncaught_exceptions() == 0) close();
  }
  Effect(const Effect&) = delete;
  Effect& operator=(const Effect&) = delete;
  Effect(Effect&& other) noexcept
      : m_run(other.m_run), m_record(std::exchange(other.m_record, nullptr)) {}
  Effect& operator=(Effect&& other) noexcept {
    std::swap(m_run, other.m_run);
    std::swap(m_record, other.m_record);
    return *this;
  }

  /// What the entry returns, null for a refusal; not opened. The caller sends Close.
  static sdk::EffectRecord* create(CheckRun& run);

  CheckRun& run() const { return *m_run; }
  sdk::EffectRecord& record() const { return *m_record; }
  bool has(std::int32_t flag) const { return (m_record->flags & flag) != 0; }
  int parameters() const { return m_record->numParams; }

  std::intptr_t call(sdk::EffectOpcode opcode, int index = 0, std::intptr_t value = 0,
                     void* ptr = nullptr, float opt = 0.0F) const {
    return callNumber(static_cast<std::int32_t>(opcode), index, value, ptr, opt);
  }
  std::intptr_t callNumber(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                           float opt) const;
  void process(float** in, float** out, int frames) const;
  void process(double** in, double** out, int frames) const;
  void set(int index, float value) const;
  float get(int index) const;
  /// Close destroys the instance; further calls do nothing.
  void close();

  void setRate(double hz) const {
    call(sdk::EffectOpcode::SetSampleRate, 0, 0, nullptr, static_cast<float>(hz));
  }
  void setBlock(int frames) const { call(sdk::EffectOpcode::SetBlockSize, 0, frames); }
  void mains(bool on) const { call(sdk::EffectOpcode::MainsChanged, 0, on ? 1 : 0); }
  /// Rate, block size and on.
  void start(double hz, int block) const;

  /// A text read into a large buffer.
  std::string text(sdk::EffectOpcode opcode, int index = 0) const;
  /// Empty when it gives none.
  std::vector<char> state(StateKind kind = StateKind::Bank) const;
  std::intptr_t setState(const std::vector<char>& bytes, StateKind kind = StateKind::Bank) const;
  /// All parameters.
  std::vector<float> values() const;
  void randomizeValues() const;
  /// Fails the check when a parameter's value is not within 0 to 1.
  void requireValuesInRange() const;

 private:
  CheckRun* m_run;
  sdk::EffectRecord* m_record;
};

/// Asks all that scanners ask of a new effect.
void scan(const Effect& effect);

} // namespace qlx::validate
