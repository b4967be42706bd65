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
#include "engine/signal/Biquad.h"
#include "engine/signal/SubBlock.h"

namespace qlx::engine {

/// Everything that runs at the engine rate: crossover and driver filters, both rotors, cross-talk,
/// room, mix of the microphones. The stages run one after the other over sub-blocks of at most
/// kSubBlock samples. Audio thread only.
class Cabinet {
 public:
  Cabinet(const Recordings& recordings, const kernels::Kernels& kernels);

  // Settings, as they are taken by the stages; changed between sub-blocks (SettingTable).
  HornSettings hornSettings;
  DrumSettings drumSettings;
  RoomSettings roomSettings;
  double distanceAmpClip = 0.0; ///< what a full reset sets hornSettings.ampClip to

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
  void setHornReflectionLpf(double octaves) noexcept;
  void setDrumReflectionLpf(double octaves) noexcept;
  void setHornStaticCutoff(double hz) noexcept;
  void setDrumStaticCutoff(double hz) noexcept;
  void setDrumSplitter(double hz) noexcept;

  // Steps of re-initialisation.
  void setModelRates(double engineRate, int factor) noexcept;
  void clearState() noexcept;
  void updateFilterRates(double engineRate) noexcept;
  void setInstantUpdate() noexcept;
  void clearCrossRings() noexcept { m_crossTalk.clearRings(); }
  void rebuildHorn1() noexcept { m_horn.rebuildGeometry(0); }
  void rebuildHorn2() noexcept { m_horn.rebuildGeometry(1); }
  void rebuildReducedHorn() noexcept { m_reduced.rebuildHorn(m_horn.microphone(0).attenuation()); }
  void rebuildDrum() noexcept { m_drum.rebuildGeometry(); }
  void rebuildReducedDrum() noexcept { m_reduced.rebuildDrum(m_drum.attenuation()); }
  void computeRoomTaps() noexcept { m_room.computeTaps(roomSettings, m_engineRate); }
  void clearRoom() noexcept { m_room.clear(); }
  void computeCrossDelays(SmoothedSettings& settings) noexcept;

  /// Zeroes every memory there is, where a sample was not finite.
  void clearEverything() noexcept;

  /// n engine samples of the input `x`; writes the stereo mix.
  void process(const SubBlock& x, const SmoothedValues& settings, int n, SubBlock& left,
               SubBlock& right) noexcept;

 private:
  void triggerHornNoise() noexcept;
  void clearHorns() noexcept;
  void clearDrums() noexcept;
  void resetHornFilters() noexcept;
  void resetDrumFilters() noexcept;
  /// What the cross-talk paths are fed with.
  struct Reduced {
    SubBlock horn, drum;
  };

  void runRotors(const SubBlock& x, const SmoothedValues& settings, int n, MicrophoneSignals& mics,
                 Reduced& reduced) noexcept;
  void runNoise(int n, MicrophoneSignals& mics) noexcept;

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
  MicrophoneMix m_microphoneMix;
};

} // namespace qlx::engine
