// SPDX-License-Identifier: ISC
#include "brezan/organ/OrganPhrase.h"

#include "brezan/Table.h"

#include <span>

namespace qlx::tools {

namespace {

constexpr double kBeat = 60.0 / 74.0; // seconds; four beats a bar, each of three triplets
constexpr double kLead = 0.25;        // seconds before the first beat
constexpr double kBeats = 38.0;       // with the last chord's end
constexpr double kAfterglow = 1.0;    // seconds of silence at the end
constexpr double kThird = 1.0 / 3.0;  // of a beat
constexpr int kLowestNote = 36;       // the MIDI number of every manual's left key

constexpr double kFastBeat = 8.0;
constexpr double kSlowAgainBeat = 18.4;
constexpr double kBrakeBeat = 25.0;
constexpr double kRestartBeat = 29.5;

constexpr double at(double beat) { return kLead + beat * kBeat; }

// Up to five keys pressed together; 0 is none.
struct Chord {
  double beat;
  double beats;
  std::array<int, 5> notes;
};

constexpr Chord kLower[] = {
    {0, 1.95, {57, 60, 65}},      // F
    {2, 1.95, {57, 60, 63, 65}},  // F7 over A
    {4, 1.95, {58, 62, 65}},      // B flat
    {6, 1.9, {56, 59, 62, 65}},   // B diminished
    {8, 1.95, {60, 65, 69}},      // F over C
    {10, 1.95, {60, 62, 66, 69}}, // D7
    {12, 1.9, {58, 62, 65, 67}},  // G minor 7
    {14, 0.95, {58, 62, 65}},     // C9 suspended
    {15, 0.9, {58, 62, 64}},      // C9
    {16, 0.3, {57, 60, 65}},      // F
    {16 + 2 * kThird, 0.3, {57, 60, 65}},
    {17, 0.25, {58, 62, 65}},                 // B flat over F
    {17 + kThird, 0.3, {57, 60, 65}},         // F
    {20, 1.95, {57, 60, 62, 65}},             // D minor 7
    {22, 1.95, {58, 62, 65, 67}},             // G minor 7
    {24, 3.95, {58, 62, 65, 67}},             // C9 suspended, into the brake
    {28, 3.9, {58, 64, 69}},                  // C13
    {32, 1.3, {58, 61, 65, 67}},              // B flat minor 6 over F
    {32 + 4 * kThird, 4.3, {57, 60, 65, 67}}, // F with the ninth
};

constexpr Chord kUpper[] = {
    // Melody with percussion over the slow rotors.
    {2 * kThird, 0.3, {72}},
    {1, 0.3, {74}},
    {1 + kThird, 1.0, {77}},
    {2 + 2 * kThird, 0.3, {77}},
    {3, 0.3, {75}},
    {3 + kThird, 0.3, {72}},
    {3 + 2 * kThird, 0.3, {69, 72}},
    {4, 1.2, {70, 74}},
    {5 + kThird, 0.3, {74, 79}},
    {5 + 2 * kThird, 0.3, {74, 77}},
    {6, 0.95, {74, 77, 80}},
    // The chord the glissando runs into, held while the horn speeds up.
    {8, 1.95, {72, 77, 81, 84}},
    {10, 1.3, {74, 78, 81, 84}},
    {11 + kThird, 0.3, {75, 78, 81, 84}},
    {11 + 2 * kThird, 0.3, {74, 78, 81, 84}},
    // Stabs.
    {12, 0.3, {70, 74, 77, 82}},
    {12 + 2 * kThird, 0.25, {70, 74, 77, 82}},
    {13, 0.25, {70, 74, 77, 82}},
    {13 + kThird, 0.6, {72, 74, 79, 84}},
    {14, 0.6, {70, 74, 77, 81}},
    {14 + 2 * kThird, 0.3, {70, 74, 77, 79}},
    {15, 0.3, {70, 74, 76, 81}},
    {15 + 2 * kThird, 0.3, {70, 73, 76, 79}},
    {16, 0.3, {69, 72, 77, 81}},
    {16 + 2 * kThird, 0.3, {69, 72, 77, 81}},
    {17, 0.25, {70, 74, 77, 82}},
    {17 + kThird, 0.2, {69, 72, 77, 81}},
    // Quietly, slow again.
    {20 + 2 * kThird, 0.3, {72}},
    {21, 0.3, {74}},
    {21 + kThird, 0.95, {69, 77}},
    {22 + kThird, 0.3, {77}},
    {22 + 2 * kThird, 0.3, {74}},
    {23, 0.3, {70}},
    {23 + kThird, 0.3, {72}},
    {23 + 2 * kThird, 0.3, {74}},
    {24, 3.9, {70, 74, 77}},
    // A run on the standing rotors, and the cadence while they start again.
    {28, 0.6, {70, 76, 79}},
    {28 + 2 * kThird, 0.3, {81}},
    {29, 0.3, {79}},
    {29 + kThird, 0.3, {76}},
    {29 + 2 * kThird, 2.2, {70, 74, 76, 81}},
    {32, 1.3, {70, 73, 77, 79}},
    {32 + 4 * kThird, 4.3, {69, 72, 77, 81}},
};

constexpr Chord kPedal[] = {
    {0, 1.6, {41}},
    {1 + 2 * kThird, 0.3, {43}},
    {2, 1.9, {45}},
    {4, 1.6, {46}},
    {5 + 2 * kThird, 0.3, {46}},
    {6, 1.9, {47}},
    {8, 1.9, {48}},
    {10, 1.6, {38}},
    {11 + 2 * kThird, 0.3, {42}},
    {12, 1.6, {43}},
    {13 + 2 * kThird, 0.3, {38}},
    {14, 0.9, {36}},
    {15, 0.9, {40}},
    {16, 0.5, {41}},
    {16 + 2 * kThird, 0.3, {41}},
    {17, 0.25, {41}},
    {17 + kThird, 0.3, {41}},
    {20, 1.9, {38}},
    {22, 1.9, {43}},
    {24, 3.9, {36}},
    {28, 3.9, {36}},
    {32, 5.6, {41}},
};

struct RegistrationAt {
  double beat;
  Manual manual;
  std::array<int, 9> drawbars;
  bool percussion;
};
constexpr RegistrationAt kRegistrations[] = {
    {-0.3, Manual::Upper, {8, 8, 8, 0, 0, 0, 0, 0, 0}, true},
    {-0.3, Manual::Lower, {0, 0, 8, 4, 0, 0, 0, 0, 0}, false},
    {-0.3, Manual::Pedal, {8, 0, 6, 0, 0, 0, 0, 0, 0}, false},
    {6.9, Manual::Upper, {8, 8, 8, 8, 0, 0, 0, 0, 6}, false},
    {7.9, Manual::Lower, {0, 0, 8, 6, 0, 4, 0, 0, 0}, false},
    {19, Manual::Upper, {8, 3, 8, 0, 0, 0, 0, 0, 0}, true},
    {19, Manual::Lower, {0, 0, 7, 4, 0, 0, 0, 0, 0}, false},
    {23.9, Manual::Upper, {8, 6, 8, 4, 0, 0, 0, 2, 4}, false},
    {27.9, Manual::Upper, {8, 6, 8, 6, 2, 2, 0, 3, 5}, false},
};

struct SwellAt {
  double beat;
  double opening;
};
constexpr SwellAt kSwell[] = {{0, 0.86},    {6, 0.88},  {8, 0.92},    {12, 0.95}, {16, 1.0},
                              {18, 1.0},    {20, 0.84}, {24, 0.86},   {26, 0.92}, {28, 0.88},
                              {31.5, 0.94}, {33, 0.9},  {37.2, 0.62}, {37.7, 0.4}};

// The palm runs over the white keys, each released when the next few are down.
struct Glissando {
  double beat;
  double beats;
  int firstNote;
  int lastNote;
};
constexpr Glissando kGlissandi[] = {{7.0, 0.97, 60, 83}, {17.55, 0.6, 86, 55}};

constexpr bool isWhite(int note) {
  constexpr bool kWhite[12] = {true,  false, true,  false, true,  true,
                               false, true,  false, true,  false, true};
  return kWhite[note % 12];
}

void addChords(std::vector<OrganKey>& keys, Manual manual, std::span<const Chord> chords) {
  // Fingers don't land together: a few milliseconds from the lowest note to the highest.
  constexpr double kRoll = 0.004;
  for (const Chord& chord : chords) {
    double late = 0.0;
    for (const int note : chord.notes) {
      if (note == 0) break;
      keys.push_back(
          {at(chord.beat) + late, chord.beats * kBeat - late, manual, note - kLowestNote});
      late += kRoll;
    }
  }
}

void addGlissando(std::vector<OrganKey>& keys, const Glissando& run) {
  constexpr double kHeldSteps = 2.2;
  const int direction = run.lastNote > run.firstNote ? 1 : -1;
  std::vector<int> notes;
  for (int note = run.firstNote; note != run.lastNote + direction; note += direction)
    if (isWhite(note)) notes.push_back(note);
  const double step = run.beats / static_cast<double>(notes.size());
  for (std::size_t i = 0; i < notes.size(); ++i)
    keys.push_back({at(run.beat + step * static_cast<double>(i)), kHeldSteps * step * kBeat,
                    Manual::Upper, notes[i] - kLowestNote});
}

} // namespace

OrganScore organPhrase() {
  OrganScore score;
  addChords(score.keys, Manual::Lower, kLower);
  addChords(score.keys, Manual::Upper, kUpper);
  addChords(score.keys, Manual::Pedal, kPedal);
  for (const Glissando& run : kGlissandi) addGlissando(score.keys, run);
  for (const RegistrationAt& r : kRegistrations)
    score.registrations.push_back({at(r.beat), r.manual, r.drawbars, r.percussion});
  for (const SwellAt& point : kSwell) score.swell.push_back({at(point.beat), point.opening});
  score.seconds = at(kBeats) + kAfterglow;
  return score;
}

std::vector<TimedMidi> phrasePedal() {
  const MidiBytes down{0xB0, 64, 127};
  const MidiBytes up{0xB0, 64, 0};
  return {{0.0, up}, {at(kFastBeat), down}, {at(kSlowAgainBeat), up}};
}

std::string phraseBrake() {
  return "# seconds parameter value\n" + fixed(at(kBrakeBeat), 3) + " Stop Stopped\n" +
         fixed(at(kRestartBeat), 3) + " Stop Running\n";
}

} // namespace qlx::tools
