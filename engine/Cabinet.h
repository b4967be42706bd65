#pragma once

#include "engine/CrossTalk.h"
#include "engine/DrumModel.h"
#include "engine/HornCrossover.h"
#include "engine/HornModel.h"
#include "engine/OutputStage.h"
#include "engine/ReducedHornModel.h"
#include "engine/Room.h"
#include "engine/RotorTrack.h"
#include "engine/SmoothedSettings.h"

namespace qlx::engine {

/// Everything that runs at the engine rate: feeds, cross-over, both rotors, cross-talk, room,
/// microphones' output. The stages run one after the other over stretches of at most kRun samples.
/// Audio thread only.
class Cabinet {
 public:
  explicit Cabinet(const Recordings& recordings);

  // Settings, as they are taken by the stages; changed by the frame between stretches.
  HornSettings hornSettings;
  DrumSettings drumSettings;
  RoomSettings roomSettings;
  double hornLevel = 1.0;
  double noiseSendGain = 0.0;
  double distanceAmpClip = 0.0;

  HornModel& horn1() noexcept { return m_horn1; }
  HornModel& horn2() noexcept { return m_horn2; }
  DrumModel& drum() noexcept { return m_drum; }
  OutputStage& output() noexcept { return m_output; }
  RotorTrack& hornTrack() noexcept { return m_hornTrack; }
  RotorTrack& drumTrack() noexcept { return m_drumTrack; }

  void setLever(double v) noexcept;
  void setStop(double v) noexcept;
  void setHornFlip(double sign) noexcept;
  void setDrumFlip(double sign) noexcept;
  void setHornSaturation(double drive) noexcept { m_crossover.setSaturation(drive); }
  void setDrumSaturation(double drive) noexcept { m_drumPreFilter.setSaturation(drive); }
  void setColor(double midDb, double lowDb) noexcept;
  void applyHornReflectionLpf() noexcept;
  void applyDrumReflectionLpf() noexcept;
  void applyHornStaticCutoff() noexcept;
  template <class Action>
  void forHornPlayers(Action action) noexcept {
    action(m_horn1.noisePlayer());
    action(m_horn2.noisePlayer());
  }

  // The frame's re-initialisation steps.
  void setModelRates(double engineRate, int factor) noexcept;
  void clearState() noexcept;
  void updateFilterRates(double engineRate) noexcept;
  void setInstantUpdate() noexcept;
  void clearCrossRings() noexcept { m_crossTalk.clearRings(); }
  void rebuildHorn1() noexcept { m_horn1.rebuildGeometry(); }
  void rebuildHorn2() noexcept { m_horn2.rebuildGeometry(); }
  void rebuildReducedHorn() noexcept { m_reducedHorn.rebuildGeometry(); }
  void rebuildDrum() noexcept { m_drum.rebuildGeometry(); }
  void rebuildReducedDrum() noexcept { m_reducedDrum.rebuildGeometry(); }
  void computeRoomTaps() noexcept { m_room.computeTaps(roomSettings, m_engineRate); }
  void clearRoom() noexcept { m_room.clear(); }
  void computeCrossDelays(SmoothedSettings& settings) noexcept;

  /// Zeroes every memory there is, for the recovery from numbers that got out of hand.
  void clearEverything() noexcept;

  /// n engine samples of the input `x`; writes the stereo mix.
  void process(const RunBuffer& x, const SmoothedRun& settings, int n, RunBuffer& left,
               RunBuffer& right) noexcept;

 private:
  struct Microphones {
    RunBuffer horn1, horn2, drum;
    RunBuffer noise1, noise2, drumNoise;
    CrossTalk::Output cross;
  };

  void clearHorns() noexcept;
  void clearDrums() noexcept;
  void resetHornFilters() noexcept;
  void resetDrumFilters() noexcept;
  void runDrum(RunBuffer& feed, int n, RunBuffer& drumOut, RunBuffer& noise,
               RunBuffer& reduced) noexcept;
  void runHorns(const RunBuffer& x, const RunBuffer& feedGain, int n, Microphones& mics,
                RunBuffer& reduced) noexcept;
  void setLevels(const SmoothedRun& settings, int n, Microphones& mics) const noexcept;
  void addRoom(const SmoothedRun& settings, int n, Microphones& mics) noexcept;

  double m_engineRate = 44100.0;
  Biquad m_drumShelf;
  HornCrossover m_crossover;
  RotorTrack m_hornTrack{RotorMotion::Direction::Horn};
  RotorTrack m_drumTrack{RotorMotion::Direction::Drum};
  SoundLine m_hornLine, m_reducedHornLine, m_drumLine;
  DrumPreFilter m_drumPreFilter;
  HornModel m_horn1, m_horn2;
  ReducedHornModel m_reducedHorn;
  DrumModel m_drum;
  ReducedDrumModel m_reducedDrum;
  CrossTalk m_crossTalk;
  Room m_room;
  struct ColorFilters {
    Biquad mid, low;
  };
  std::array<ColorFilters, 2> m_color; ///< left, right
  OutputStage m_output;
};

} // namespace qlx::engine
