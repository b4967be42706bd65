// SPDX-License-Identifier: ISC
#pragma once

#include "tests/reference/Frame.h"

#include <array>
#include <cstdint>

namespace qlx::reference {

// The whole effect as a plain, slow, sample-by-sample model: 120 parameters, 32 preset slots, MIDI
// and the engine. One thread. Values are normalised; sound is in double precision.
class ReferenceEffect : private Frame {
 public:
  static constexpr int kNumSlots = 32, kNumPresetValues = 36, kNumParameters = 120;

  // Runs the whole construction, with the factory presets and preset 0 selected.
  explicit ReferenceEffect(const Recordings& recordings = {});

  void setSampleRate(float hz); // stored; taken over by the next reset
  void suspend();
  void resume();
  void setParameter(int index, float value);
  float getParameter(int index) const;
  void selectPreset(int slot); // 0..31
  // What handing the effect its own chunk back with another current slot does.
  void restoreSlots(int current);
  void processMidi(int status, int data1, int data2);
  // Any number of frames; input and output may share memory.
  void process(const double* l, const double* r, double* ol, double* orr, int frames);
  // Horn and drum speed in revolutions a second, as the rotors turn now.
  double hornSpeedHz() const { return horn1.motion.currentSpeed * engineRate; }
  double drumSpeedHz() const { return drum.motion.currentSpeed * engineRate; }

 private:
  void applySetup() override;
  double clipForHornDistance() const override;
  void forgetLever() override { m_lastLever = -1.0f; }

  void applySwitches(int index, float v);
  void applyTonePanel(int index, float v);
  void applyRotorPanel(int index, float v);
  void applyHornCalibration(int index, float v);
  void applyDrumCalibration(int index, float v);
  void applyLevelCalibration(int index, float v);
  void applyLever(float v);
  void applyHornDistance(float v);
  void applySize(float v);
  void applyHornSaturation(float v);
  void setMech(double horns, double drumLevel);
  void request(unsigned bits) { pending |= bits; }

  std::array<float, kNumParameters> m_values{};
  std::array<std::array<float, kNumPresetValues>, kNumSlots> m_slots{};
  int m_currentSlot = 0;
  bool m_presetLoading = false;
  float m_lastLever = -1.0f;
  int m_lastCpuMode = -1, m_lastSetup = -1, m_lastSize = -1, m_setup = 0, m_midiChannel = 0;
  double m_hornDistance = 0, m_mic2Offset = 0, m_drumDistance = 0;
  double m_mechLevel = 0, m_drumNoiseScale = 0;
};

} // namespace qlx::reference
