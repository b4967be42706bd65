// SPDX-License-Identifier: ISC
#include "brezan/commands/Commands.h"

#include "brezan/Table.h"
#include "brezan/analysis/LeverMarks.h"
#include "brezan/analysis/RotorMoves.h"
#include "brezan/plugin/PluginLocation.h"
#include "brezan/plugin/StartingPoint.h"
#include "brezan/sound/InputFile.h"
#include "brezan/sound/PlayThrough.h"
#include "brezan/sound/RunRate.h"
#include "brezan/sound/SoundLevel.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <stdexcept>

namespace qlx::tools {

namespace {

constexpr double kPilotPeak = 0.25;
constexpr double kSettleSeconds = 8.0; // for rotors that start slowly
constexpr double kLearnSeconds = 10.0; // of even turning before the first move
constexpr double kWindowSeconds = 0.1; // more than the analysis looks ahead at the end
constexpr double kRestLevel = 3.16e-4; // of the dry sound: -70 dBFS
constexpr double kShortestRest = 0.7;
constexpr double kReverberation = 0.3; // seconds that the room sounds into a rest

struct ReportOptions {
  std::string dry;
  std::string wet;
  std::string plugin;
  StartingPoint start;
  std::string midi;
  std::string automation;
};

// What is said of a rotor that cannot be seen turning.
struct RotorColumn {
  std::vector<RotorMove> moves;
  std::string failure;
};

class Report {
 public:
  explicit Report(const ReportOptions& options)
      : m_options(options), m_plugin(locatePlugin(options.plugin)) {
    if (!options.midi.empty()) m_midi = readMidiFile(options.midi);
    if (!options.automation.empty()) {
      std::ifstream in = openToRead(options.automation);
      m_lines = readAutomation(in, options.automation);
    }
    m_marks = leverMarks(m_midi, m_lines);
    AudioInput dry(options.dry);
    m_dryRate = dry.rate();
    m_dry = readChannels(dry);
    AudioInput wet(options.wet);
    m_rate = wet.rate();
    m_sound = readChannels(wet);
    m_seconds = static_cast<double>(m_sound.front().size()) / m_rate;
  }

  void print() {
    const SoundLevel whole = levelBetween(m_sound, m_rate, 0.0, m_seconds);
    std::cout << m_options.wet << ": " << fixed(m_seconds, 1) << " s at " << fixed(m_rate, 0)
              << " Hz, peak " << decibels(whole.peak) << " dBFS, RMS " << decibels(whole.rms)
              << " dBFS\n\n";
    printMoves();
    printRests(whole);
  }

 private:
  // The rotor's answer to the moves, seen by tones that only it turns; the other one is muted.
  RotorColumn rotor(const PilotTones& tones, const char* otherGain) {
    ParameterText parameters(m_plugin);
    PluginHost host(m_plugin);
    m_options.start.apply(host, parameters);
    for (const char* silent : {"Mech", otherGain}) host.setValue(parameters.index(silent), 0.0F);
    Moves moves{resolved(m_lines, m_options.automation, parameters), m_midi};
    for (AutomationMove& move : moves.automation) move.seconds += kLearnSeconds;
    for (TimedMidi& message : moves.midi) message.seconds += kLearnSeconds;
    const double runRate = runRateFor(m_rate); // as the render ran
    const std::vector<double> pilot =
        pilotSound(tones, runRate, kLearnSeconds + m_seconds + kWindowSeconds, kPilotPeak);
    const auto heard = playThrough(host, pilot, runRate, moves, kSettleSeconds);
    try {
      const RotorTrace trace(heard, runRate, tones, 0.1, kLearnSeconds);
      std::vector<double> times;
      for (const LeverMark& mark : m_marks) times.push_back(mark.seconds + kLearnSeconds);
      return {rotorMoves(trace, times, kLearnSeconds + m_seconds), ""};
    } catch (const std::runtime_error& error) {
      return {{}, error.what()};
    }
  }

  void printMoves() {
    const RotorColumn horn = rotor(kHornPilot, "DGain");
    const RotorColumn drum = rotor(kDrumPilot, "HGain");
    Table table({"from s", "lever", "peak dBFS", "RMS dBFS", "horn rev/s", "10-90 % s",
                 "drum rev/s", "10-90 % s"});
    bool open = false;
    for (std::size_t i = 0; i < m_marks.size(); ++i) {
      const double from = m_marks[i].seconds;
      const double to = i + 1 < m_marks.size() ? m_marks[i + 1].seconds : m_seconds;
      const SoundLevel level = levelBetween(m_sound, m_rate, from, to);
      std::vector<std::string> row = {fixed(from, 2), m_marks[i].words, decibels(level.peak),
                                      decibels(level.rms)};
      for (const RotorColumn* column : {&horn, &drum}) {
        if (column->moves.empty()) {
          row.insert(row.end(), {"", ""});
          continue;
        }
        const RotorMove& move = column->moves[i];
        open = open || !move.settled;
        row.push_back(fixed(move.reached, 2) + (move.settled ? "" : " *"));
        row.push_back(move.tenToNinety ? fixed(*move.tenToNinety, 2) : "");
      }
      table.add(row);
    }
    table.print(std::cout);
    std::cout
        << "Speeds at each section's end and times from 10 % to 90 % of the change, measured on"
           " steady tones\nplayed through the same moves, the plug-in running at "
        << fixed(runRateFor(m_rate), 0) << " Hz.\n";
    if (open)
      std::cout << "* still changing when the next move came; the time is that of the way gone.\n";
    for (const auto& [name, column] : {std::pair{"horn", &horn}, std::pair{"drum", &drum}})
      if (!column->failure.empty()) std::cout << "The " << name << ": " << column->failure << ".\n";
  }

  void printRests(const SoundLevel& whole) {
    std::cout << "\nThe machine alone, while the organ rests:\n";
    Table table({"from s", "to s", "RMS dBFS", "dB below the whole"});
    for (const Stretch& rest :
         restsOf(m_dry, m_dryRate, kRestLevel, kShortestRest + kReverberation)) {
      const double from = rest.from + kReverberation;
      const SoundLevel level = levelBetween(m_sound, m_rate, from, rest.to);
      if (level.rms > 0.0)
        table.add({fixed(from, 2), fixed(rest.to, 2), decibels(level.rms),
                   decibels(whole.rms / level.rms)});
    }
    table.print(std::cout);
  }

  const ReportOptions& m_options;
  std::filesystem::path m_plugin;
  std::vector<TimedMidi> m_midi;
  std::vector<AutomationLine> m_lines;
  std::vector<LeverMark> m_marks;
  double m_dryRate = 0.0;
  std::vector<std::vector<double>> m_dry;
  double m_rate = 0.0;
  std::vector<std::vector<double>> m_sound;
  double m_seconds = 0.0;
};

} // namespace

void addReportCommand(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "report", "Tell levels, rotor speeds and the machine's noise of a render");
  auto options = std::make_shared<ReportOptions>();
  command->add_option("DRY", options->dry, "Sound file that was rendered")->required();
  command->add_option("WET", options->wet, "Sound file that the render wrote")->required();
  addPluginOption(*command, options->plugin);
  options->start.addOptions(*command);
  command->add_option("--automate", options->automation, "Automation file of the render");
  command->add_option("--midi", options->midi, "MIDI file of the render");
  command->footer(
      "Give the options of the render again: the rotors' speeds are measured by playing\n"
      "tones through the plug-in with the same moves.");
  command->callback([options] { Report(*options).print(); });
}

} // namespace qlx::tools
