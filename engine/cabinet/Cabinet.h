// SPDX-License-Identifier: ISC
#pragma once

#include "engine/cabinet/CrossTalk.h"
#include "engine/cabinet/DriverFilters.h"
#include "engine/cabinet/DrumModel.h"
#include "engine/cabinet/HornModel.h"
#include "engine/cabinet/MicrophoneMix.h"
#include "engine/cabinet/ReducedModels.h"
#include "engine/cabinet/Room.h"
#include "engine/rotor/RotorHistory.h"
#include "engine/settings/SmoothedSettings.h"
#include "engine/signal/BiquadLanes.h"
#include "engine/signal/SubBlock.h"

namespace qlx::engine {

/// Everything that runs at the engine rate: feeds, cross-over, both rotors, cross-talk, room,
/// microphones' output. The stages run one after the other over sub-blocks of at most kSubBlock
/// samples. Audio thread only.
class Cabinet {
 public:
  Cabinet(const Recordings& recordings, const kernels::Kernels& kernels);

  // Settings, as they are taken by the stages; changed by the frame between sub-blocks.
  HornSettings hornSettings;
  DrumSettings drumSettings;
  RoomSettings roomSettings;
  double hornLevel = 1.0;
  double noiseSendGain = 0.0;
  double distanceAmpClip = 0.0;

  HornModel& horn() noexcept { return m_horn; }
  DrumModel& drum() noexcept { return m_drum; }
  MicrophoneMix& microphoneMix() noexcept { return m_microphoneMix; }
  RotorHistory& hornHistory() noexcept { return m_hornHistory; }
  RotorHistory& drumHistory() noexcept { return m_drumHistory; }

  void setLever(double v) noexcept;
  void setStop(double v) noexcept;
  void setHornFlip(double sign) noexcept;
  void setDrumFlip(double sign) noexcept;
  void setHornSaturation(double drive) noexcept { m_driverFilters.setHornSaturation(drive); }
  void setDrumSaturation(double drive) noexcept { m_driverFilters.setDrumSaturation(drive); }
  void setColor(double midDb, double lowDb) noexcept;
  void applyHornReflectionLpf() noexcept;
  void applyDrumReflectionLpf() noexcept;
  void applyHornStaticCutoff() noexcept;
  void applyDrumStaticCutoff() noexcept;
  template <class Action>
  void forHornPlayers(Action action) noexcept {
    action(m_horn.microphone(0).noisePlayer());
    action(m_horn.microphone(1).noisePlayer());
  }

  // The frame's re-initialisation steps.
  void setModelRates(double engineRate, int factor) noexcept;
  void clearState() noexcept;
  void updateFilterRates(double engineRate) noexcept;
  void setInstantUpdate() noexcept;
  void clearCrossRings() noexcept { m_crossTalk.clearRings(); }
  void rebuildHorn1() noexcept { m_horn.rebuildGeometry(0); }
  void rebuildHorn2() noexcept { m_horn.rebuildGeometry(1); }
  void rebuildReducedHorn() noexcept { m_reduced.rebuildHorn(); }
  void rebuildDrum() noexcept { m_drum.rebuildGeometry(); }
  void rebuildReducedDrum() noexcept { m_reduced.rebuildDrum(); }
  void computeRoomTaps() noexcept { m_room.computeTaps(roomSettings, m_engineRate); }
  void clearRoom() noexcept { m_room.clear(); }
  void computeCrossDelays(SmoothedSettings& settings) noexcept;

  /// Zeroes every memory there is, for the recovery from numbers that got out of hand.
  void clearEverything() noexcept;

  /// n engine samples of the input `x`; writes the stereo mix.
  void process(const SubBlock& x, const SmoothedValues& settings, int n, SubBlock& left,
               SubBlock& right) noexcept;

 private:
  struct Microphones {
    SubBlock horn1, horn2, drum;
    SubBlock noise1, noise2, drumNoise;
    CrossTalk::Output cross;
  };

  void clearHorns() noexcept;
  void clearDrums() noexcept;
  void resetHornFilters() noexcept;
  void resetDrumFilters() noexcept;
  /// What the cross-talk paths are fed with.
  struct Reduced {
    SubBlock horn, drum;
  };

  void runRotors(const SubBlock& x, const SmoothedValues& settings, int n, Microphones& mics,
                 Reduced& reduced) noexcept;
  void runNoise(int n, Microphones& mics) noexcept;
  kernels::MixGains mixGains(const SmoothedValues& settings) const noexcept;
  void addRoom(const SmoothedValues& settings, const kernels::MixSignals& signals,
               const kernels::MixGains& gains, int n) noexcept;

  const kernels::Kernels& m_kernels;
  double m_engineRate = 44100.0;
  Biquad m_drumShelf;
  DriverFilters m_driverFilters;
  RotorHistory m_hornHistory{RotorMotion::Direction::Horn};
  RotorHistory m_drumHistory{RotorMotion::Direction::Drum};
  DelayLine m_hornLine, m_reducedHornLine, m_drumLine;
  HornModel m_horn;
  DrumModel m_drum;
  ReducedModels m_reduced;
  CrossTalk m_crossTalk;
  Room m_room;
  using ColorFilters = std::array<Biquad, 2>; ///< mid, low
  std::array<ColorFilters, 2> m_color;        ///< left, right
  PairRunner m_pairs;
  MicrophoneMix m_microphoneMix;
};

} // namespace qlx::engine
