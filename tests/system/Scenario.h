// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/System.h"
#include "sdk/VstTypes.h"
#include "tests/reference/ReferenceEffect.h"

#include <filesystem>
#include <string>
#include <vector>

namespace qlx::test {

struct Stereo {
  std::vector<double> left, right;
};

/// What a scenario's player moves: the plug-in file through its binary interface, or the reference
/// model.
class Player {
 public:
  virtual ~Player() = default;
  virtual void setSampleRate(float hz) = 0;
  virtual void suspend() = 0;
  virtual void resume() = 0;
  virtual void setParameter(int index, float value) = 0;
  virtual void selectPreset(int number) = 0;
  virtual void midi(int status, int data1, int data2) = 0;
  virtual void process(const double* l, const double* r, double* outLeft, double* outRight,
                       int n) = 0;
};

class PluginPlayer final : public Player {
 public:
  explicit PluginPlayer(const std::filesystem::path& file);
  ~PluginPlayer() override;
  void setSampleRate(float hz) override;
  void suspend() override;
  void resume() override;
  void setParameter(int index, float value) override;
  void selectPreset(int number) override;
  void midi(int status, int data1, int data2) override;
  void process(const double* l, const double* r, double* outLeft, double* outRight, int n) override;

 private:
  std::intptr_t call(sdk::EffectOpcode opcode, std::intptr_t value = 0, void* ptr = nullptr,
                     float opt = 0.0F);

  tools::SharedObject m_library;
  sdk::EffectRecord* m_effect;
};

class ReferencePlayer final : public Player {
 public:
  explicit ReferencePlayer(const reference::Recordings& recordings) : m_effect(recordings) {}
  void setSampleRate(float hz) override { m_effect.setSampleRate(hz); }
  void suspend() override { m_effect.suspend(); }
  void resume() override { m_effect.resume(); }
  void setParameter(int index, float value) override { m_effect.setParameter(index, value); }
  void selectPreset(int number) override { m_effect.restoreSlots(number); }
  void midi(int status, int data1, int data2) override {
    m_effect.processMidi(status, data1, data2);
  }
  void process(const double* l, const double* r, double* outLeft, double* outRight,
               int n) override {
    m_effect.process(l, r, outLeft, outRight, n);
  }

 private:
  reference::ReferenceEffect m_effect;
};

/// A script of host actions, a line each: signal NAME (noise, chord, impulse, silence), rate R,
/// suspend, resume, preset N, param INDEX VALUE, midi STATUS DATA1 DATA2, blocks B N (N frames in
/// blocks of B). Lines starting with # and empty lines say nothing. Throws std::runtime_error on
/// any other line.
Stereo play(const std::string& script, Player& player);

/// The reference model's view of the plug-in's own recordings.
reference::Recordings plugInRecordings();

/// Power of the difference relative to the power of `expected`, in decibels.
double errorDb(const Stereo& expected, const Stereo& actual);

/// The part of a long render that a fixture keeps: the first `keep` frames of every `of`.
Stereo thinned(const Stereo& render, std::size_t keep, std::size_t of);
inline constexpr std::size_t kKeptFrames = 96;
inline constexpr std::size_t kFramesPerWindow = 4096;

} // namespace qlx::test
