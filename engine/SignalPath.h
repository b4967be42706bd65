// SPDX-License-Identifier: ISC
#pragma once

#include "engine/cabinet/Cabinet.h"
#include "engine/rotor/RotorReadout.h"
#include "engine/settings/Setting.h"
#include "engine/signal/Amplifier.h"
#include "engine/signal/RateConverter.h"

#include <array>

namespace qlx::engine {

/// What happens to the samples: amplifier and tone controls, conversion to the engine rate and
/// back, the cabinet between them, and the cross-fades to the dry signal (mute) and to the
/// untouched input (bypass). Audio thread only.
class SignalPath {
 public:
  explicit SignalPath(const Recordings& recordings);

  // Settings; SettingTable says which goes where.
  SmoothedSettings& settings() noexcept { return m_settings; }
  Amplifier& amplifier() noexcept { return m_amplifier; }
  Cabinet& cabinet() noexcept { return m_cabinet; }
  void setBypass(double share) noexcept { m_bypass.target = share; }
  void jumpToBypass(double share) noexcept { m_bypass.level = share; }
  void setSpeakersBypassed(double on) noexcept { m_speakersBypassed = on >= 0.5; }
  void setTone(Amplifier::Tone tone, double db) noexcept;
  void setColorMidDb(double db) noexcept;
  void setColorLowDb(double db) noexcept;
  void setHornHighPass(double hz) noexcept; ///< 0 switches it off
  void setDrumLowPass(double hz) noexcept;  ///< 0 switches it off
  /// Constant-power panorama: 0 all left, 1 all right.
  void setPan(Smoothed left, Smoothed right, double position) noexcept;

  /// The tone and colour filters take what was set since the last call.
  void updateTone() noexcept;

  // The mute, a cross-fade of 20 ms between the cabinet and the dry signal.
  void setMuted(bool on) noexcept { m_mute.target = on ? 1.0 : 0.0; }
  bool isFadedOut() const noexcept;
  bool isFadedIn() const noexcept;
  void finishFadeOut() noexcept { m_mute.level = 1.0; }
  void finishFadeIn() noexcept { m_mute.level = 0.0; }

  // Steps of re-initialisation, behind the mute.
  void setHostRate(double hz) noexcept { m_hostRate = hz; }
  double hostRate() const noexcept { return m_hostRate; }
  void setupEngineRate(CpuMode mode) noexcept;
  void computeCrossDelays() noexcept { m_cabinet.computeCrossDelays(m_settings); }
  void rebuildGeometry() noexcept; ///< rays of all microphones and of the reduced models
  void resume(CpuMode mode) noexcept;
  void reset(CpuMode mode) noexcept;
  /// Zeroes all memory, where a sample was not finite.
  void recover() noexcept;

  /// One sub-block of host samples, in and out.
  struct HostSubBlock {
    SubBlock in0, in1;
    SubBlock out0, out1;
    int n;
  };
  /// Fills out0 and out1; false where one of their values is not finite.
  bool process(HostSubBlock& s) noexcept;

  RotorReadout::Rotor hornRotor() noexcept;
  RotorReadout::Rotor drumRotor() noexcept;

 private:
  /// A share (0 .. 1) that follows its target exponentially.
  struct Fade {
    double level = 0.0;
    double target = 0.0;
    double step(double coefficient) noexcept;
    bool isOff() const noexcept { return level == 0.0 && target == 0.0; }
  };

  void clearState() noexcept;
  void updateFilterRates() noexcept;
  void updateRateCoefficients() noexcept;
  void blend(HostSubBlock& s, const SubBlock& inputGain, const SubBlock& wetLeft,
             const SubBlock& wetRight) noexcept;

  const kernels::Kernels& m_kernels;
  double m_hostRate = 44100.0;
  double m_engineRate = 44100.0;
  int m_engineFactor = 1; ///< host samples per engine sample

  Fade m_mute, m_bypass;
  double m_fadeCoefficient = 0.0;
  bool m_speakersBypassed = false;
  double m_dryPole = 0.0;
  OnePole m_dryLeft, m_dryRight;

  bool m_toneChanged = false; ///< the tone and colour filters wait for updateTone
  std::array<double, static_cast<std::size_t>(Amplifier::Tone::Count)> m_toneDb{};
  double m_colorMidDb = 0.0;
  double m_colorLowDb = 0.0;

  SmoothedSettings m_settings;
  Amplifier m_amplifier;
  RateConverter m_converter;
  Cabinet m_cabinet;
};

} // namespace qlx::engine
