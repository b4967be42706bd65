// SPDX-License-Identifier: ISC
#pragma once

#include "engine/signal/FilterLaws.h"

namespace qlx::engine::kernels {

// Memory that the kernels work on, laid out by field so that neighbouring lanes lie side by side.
// Plain data without functions: files compiled for different instruction sets share it.

/// Longest sub-block, samples; the buffers have room for whole groups of four beyond it.
inline constexpr int kLongestSubBlock = 64;
/// Samples of the lines of sound and of angles, which are followed by the first of them again:
/// eight more than the longest sub-block.
inline constexpr int kLineSize = 2048;
/// Pieces of a level law, four coefficients each, from the constant up.
inline constexpr int kLevelPieces = 511;

/// One sub-block of a rotor: where its samples stand in the lines, and the samples at which filters
/// that follow the mouth's angle are re-tuned.
struct RayPass {
  int writeIndex;
  int n;
  int firstUpdate; ///< at or after 0; may lie beyond the sub-block
  int updateInterval;
};

/// Paths from a rotor's mouth to a microphone, one lane each.
template <int N>
struct RayLanes {
  // From the rotor's angle to the phase of the mouth's movement.
  double angle[N];     ///< turns at which the mouth passes the ray's direction
  double halfWidth[N]; ///< turns
  double nearRate[N];  ///< radians a turn, with the sign of the mirrored rotation
  double farRate[N];
  // Delay (samples) and level (pieces of the level law): a centre, and the depth of the modulation
  // by the movement's sine.
  double delay[N], delayDepth[N];
  double levelPosition[N], levelDepth[N];
  double levelScale[N], lowestLevel[N], gain[N];
  double reflectionPole[N]; ///< 0 where nothing is lost
  double reflection[N];     ///< state
  const double* angles[N];  ///< the rotor's angles in a line as the sound's
  int angleLag[N];          ///< whole samples from the oldest angle to the one that arrives now
  const double* line[N];    ///< kLineSize samples and the first again
  const double* levels[N];  ///< kLevelPieces x 4 coefficients
};

/// Second-order sections whose roots and gain move in straight lines, one lane each; by
/// SectionRoot.
template <int N>
struct GlideLanes {
  double root[kRootCount][N];
  double increment[kRootCount][N];
  double x1[N], x2[N], y1[N], y2[N];
  double angularRate; ///< radians a sample of 1 Hz
  double edgeHz;      ///< where the counter-warp of the Q reaches zero
  double share;       ///< of the way that a sample covers
};

/// How a mouth colours a ray over the angle: rows of (Hz, Q, dB, dB), one turn from end to end, the
/// second row once more behind the last.
struct DirectivityTable {
  const double (*row)[4];
  int intervals;
};

/// The counter-warp of the horn's peak is approximated between kPeakWarpCentreHz -+
/// kPeakWarpReachHz.
inline constexpr double kPeakWarpCentreHz = 1750.0, kPeakWarpReachHz = 450.0;

inline constexpr int kHornLanes = 24; ///< lane = 2 x ray + microphone
struct HornBank {
  alignas(64) RayLanes<kHornLanes> rays;
  GlideLanes<kHornLanes> peak, shelf;
  DirectivityTable table; ///< of the peak, and in the fourth column the shelf's dB
  double shelfHz, shelfQ;
  // What settleHorn prepares for the rate.
  double shelfCosine, shelfSlope; ///< cosine and sine over Q of the shelf
  double warpAtCentre;            ///< counter-warp of a peak's Q at kPeakWarpCentreHz
};

inline constexpr int kDrumLanes =
    8; ///< direct, back, back and B, back and A, wall B, wall A, unused
struct DrumBank {
  alignas(64) RayLanes<kDrumLanes> rays;
  GlideLanes<kDrumLanes> lowPass;
  DirectivityTable table;
  double hz[kDrumLanes], q[kDrumLanes]; ///< of the low-passes when they were tuned last
  double lowBand[kDrumLanes];           ///< state of the splitter
  double splitterPole;
  double lowestSine;
};

/// Horn direct, horn back wall, drum direct, drum back wall; then horn wall B, horn wall A, drum
/// wall B, drum wall A.
inline constexpr int kReducedLanes = 8;
struct ReducedBank {
  alignas(64) RayLanes<kReducedLanes> rays;
  const double* cutoff[kReducedLanes]; ///< Hz over the mouth's angle, one turn and one entry more
  double cutoffStart[kReducedLanes];   ///< entry at the mouth's angle 0
  double cutoffStep[kReducedLanes];    ///< entries a turn
  double settling;                     ///< binary logarithm of the pole of 1 Hz
  double smoothing;                    ///< pole of the poles' smoothing
  double pole[kReducedLanes], wantedPole[kReducedLanes], lowPass[kReducedLanes];
};

/// Two sounds that arrive at a fixed delay: four points and their weights, a one-pole low-pass and
/// a gain each.
struct FixedPair {
  const double* first[2]; ///< oldest of the four points of the sub-block's first sample
  double weight[4][2];
  double pole[2], gain[2];
  double state[2];
};

/// Taps on the past of a pair signal.
struct PairTaps {
  static constexpr int kCount = 4;
  int back[kCount]; ///< samples
  double weight[kCount];
};

/// Second-order sections side by side, whose sum and a direct part make up a series: from
/// v = x - a1 v' - a2 v'' each adds c0 v + c1 v'. Lane = section x channels + channel; channels
/// that go together have the same coefficients.
template <int Sections, int Channels>
struct ParallelSections {
  static constexpr int kLanes = Sections * Channels;
  alignas(32) double a1[kLanes], a2[kLanes], c0[kLanes], c1[kLanes];
  alignas(32) double v1[kLanes], v2[kLanes];
  double direct;
};

inline constexpr int kBodySections = 28, kReducedBodySections = 8;
using BodySections = ParallelSections<kBodySections, 2>;
using ReducedBodySections = ParallelSections<kReducedBodySections, 1>;

/// Fields of second-order sections that run one after the other, by field.
enum SectionField : int { kA1, kA2, kB0, kB1, kB2, kX1, kX2, kY1, kY2, kSectionFields };

/// Sections of two channels; lane = 2 x section + channel. N is even.
template <int N>
struct PairSections {
  alignas(32) double field[kSectionFields][2 * N];
};

/// Sections of one channel. A limiter y / (|y + offset| k + 1) stands inside the recursion; k = 0
/// leaves it open. N is a multiple of four.
template <int N>
struct ChainSections {
  alignas(32) double field[kSectionFields][N];
  alignas(32) double limit[N], offset[N];
};

/// `count` sections of PairSections or ChainSections; field f stands at fields + f x stride.
struct PairSeries {
  double* fields;
  int stride, count;
};
struct ChainSeries {
  double* fields;
  int stride, count;
};

/// Two sections of a rotor's noise whose tuning follows the rotor's speed with every sample: a
/// low-pass on the slow recording, a high shelf on the fast one. Cell 2 x SectionRoot is the
/// low-pass's, the one behind it the shelf's.
struct NoiseTreble {
  static constexpr int kCells = 2 * kRootCount;
  alignas(16) double root[kCells];
  alignas(16) double target[kCells];
  alignas(16) double increment[kCells];
  double x1[2], x2[2], y1[2], y2[2];
  double angularRate; ///< radians a sample of 1 Hz
  double highestHz;
  double lowPassEdge, shelfEdge; ///< Hz at which the counter-warp of the Q reaches zero
  double share;
  int steps, remaining;
  double between; ///< for which the last tuning was made; 0: none since the start
};

/// One side of the room: twelve taps on a line that is continued behind its end.
struct RoomSide {
  static constexpr int kTaps = 12;
  const double* first[kTaps]; ///< older of the two points of the sub-block's first sample
  double older[kTaps], newer[kTaps];
  double pole[kTaps], state[kTaps];
};

inline constexpr int kFirTaps = 32;

/// Signals of one sub-block at the microphones.
struct MixSignals {
  double *horn1, *horn2, *drum;
  double *noise1, *noise2, *drumNoise; ///< of the motors; noise1 and noise2 become each side's own
  const double *toHorns, *hornEcho, *toDrum;
};

/// Their gains, one value a sample.
struct MixGains {
  const double *horn, *microphone2, *drum;
  const double *pan1Left, *pan1Right, *pan2Left, *pan2Right, *drumLeft, *drumRight;
  const double *noiseA, *noiseB;
  double hornLevel, noiseSend;
};

/// The filtered microphones and how much of them is taken, one value a sample.
struct MixFilters {
  const double *horn1, *horn2, *drum;
  const double *hornShare, *drumShare;
};

/// The kernels of one instruction set. All work in the memory they are given, on the audio thread.
struct Kernels {
  const char* name;

  /// Writes n pairs (microphone 1, microphone 2) of the horn's first `lanes` lanes.
  void (*hornRays)(HornBank& bank, int lanes, const RayPass& pass, double* pairs);
  /// Writes n samples of the drum's first `lanes` lanes.
  void (*drumRays)(DrumBank& bank, int lanes, const RayPass& pass, double* out);
  /// Writes n pairs (horn, drum) of the reduced models' first `lanes` lanes, four or all.
  void (*reducedRays)(ReducedBank& bank, int lanes, const RayPass& horn, const RayPass& drum,
                      double* pairs);
  /// Puts the filters of all lanes where a stopped mouth that faces along the ray, or for the drum
  /// the last tuning, would leave them; their memory stays.
  void (*settleHorn)(HornBank& bank);
  void (*settleDrum)(DrumBank& bank);

  /// Adds n pairs of sounds at fixed delays to `pairs`.
  void (*fixedPair)(FixedPair& fixed, double* pairs, int n);
  /// Adds taps on the signal itself to n pairs; `past` is where they stand among what came before.
  void (*pairTaps)(const PairTaps& taps, const double* past, double* pairs, int n);

  /// Runs the horn's body over n pairs, and the reduced horn's over n samples, in place.
  void (*body)(BodySections& sections, double* pairs, int n);
  void (*reducedBody)(ReducedBodySections& sections, double* samples, int n);

  /// Runs an even number of sections over n pairs in place.
  void (*pairSeries)(const PairSeries& series, double* pairs, int n);
  /// Runs a multiple of four sections over n samples of one channel in place.
  void (*chainSeries)(const ChainSeries& series, double* samples, int n);
  /// The same for chains of four sections with limiters, on a signal each, all over n samples.
  void (*limitedChains)(ChainSections<4>* const* chains, double* const* signals, int count, int n);

  /// Adds gain x what stands at n positions (samples, -1 .. 2 lengths) of a looped recording, which
  /// is followed by its first three samples, to `sum`; whole vectors, also beyond n.
  void (*loopRead)(const float* loop, int length, const double* position, const double* gain,
                   double* sum, int n);

  /// Tunes the sections by `between` (0 .. 1 between the speeds of slow and fast noise, negative
  /// where the tuning stays), runs them over n samples of both recordings and writes their sum.
  void (*noiseTreble)(NoiseTreble& treble, const double* between, const double* slow,
                      const double* fast, double* out, int n);
  /// Puts both sections where the last tuning wants them: the tuning for `between`, or both open.
  void (*settleTreble)(NoiseTreble& treble);

  /// Writes the sum of a side's taps over n samples.
  void (*roomSide)(RoomSide& side, double* out, int n);

  /// Sets the microphones' levels, shares out the noise and writes what goes into the room.
  void (*mixSends)(const MixSignals& signals, const MixGains& gains, double* sendLeft,
                   double* sendRight, int n);
  /// Adds the room, by its level at the two horn microphones and the drum's, and the noise.
  void (*mixRoom)(const MixSignals& signals, const MixGains& gains, const double* left,
                  const double* right, const double* levels, int n);
  /// The microphones' panorama.
  void (*mixOutput)(const MixSignals& signals, const MixGains& gains, const MixFilters& filters,
                    double* left, double* right, int n);

  /// Low-pass of kFirTaps taps, the last of the table on the newest sample; `past` stands on the
  /// oldest sample that the first output needs. Outputs are `step` samples apart.
  void (*fir)(const double* table, const double* past, int step, double* out, int n);

  /// Drives n samples of the tube stage in place; the tracker follows the DC that its asymmetry
  /// makes.
  void (*tube)(const double* drive, double trackerShare, double& tracker, double* samples, int n);
  void (*transistor)(const double* drive, double* samples, int n);
};

/// The fastest kernels for the processor at hand, or those that the environment variable QLX_ISA
/// names ("avx512", "avx2", "baseline") if the processor and the operating system can run them.
const Kernels& chooseKernels() noexcept;

/// Whether processor and operating system have all that these kernels need.
bool canRun(const Kernels& kernels) noexcept;

extern const Kernels kBaselineKernels;
extern const Kernels kAvx2Kernels;
extern const Kernels kAvx512Kernels;

} // namespace qlx::engine::kernels
