// SPDX-License-Identifier: ISC
#include "brezan/commands/Commands.h"

#include "brezan/Table.h"
#include "brezan/plugin/PluginLocation.h"
#include "brezan/plugin/StartingPoint.h"
#include "brezan/sound/InputFile.h"
#include "brezan/sound/Renderer.h"
#include "brezan/sound/RunRate.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace qlx::tools {

namespace {

struct RenderOptions {
  std::string input;
  std::string output;
  std::string plugin;
  StartingPoint start;
  std::string saveState;
  std::string automation;
  std::string midi;
  OutputSettings file;
  double gainDb = 0.0;
  double rate = 0.0;
  bool mono = false;
  RenderSettings render;
};

constexpr const char* kFooter =
    R"(Values of --set and --automate are what the plug-in displays, with or without the unit, which
may be another one of the same kind; norm:0 to norm:1 are the values that hosts store:
  Type=Tube  Setup="Front Rear"  Lever=Tremolo  Size=3  Drive=-6dB  HFastSpd=400rpm  DAccel=3200ms
  HDistance=0.65m  DLPF=1.2kHz  Amount=norm:0.25
Lines of an automation file, '#' begins a comment:
  seconds parameter value [ramp]     ramp: seconds of a straight move to the value
Times of automation and MIDI count from the first frame of IN.

Examples:
  brezan render organ.wav out.wav --set Lever=Tremolo
  brezan render organ.wav out.flac --preset 3 --set Drive=3dB --midi pedal.mid
  brezan render organ.wav out.wav --automate moves.txt --rate 96000 --double --format float)";

void saveState(PluginHost& host, const std::string& path) { writeFile(path, host.state()); }

void print(const RenderReport& report, const AudioOutput& output, const RenderOptions& options,
           std::ostream& out) {
  const double seconds = static_cast<double>(report.frames) / report.rate;
  out << options.output << ": " << fixed(seconds, 2) << " s at " << fixed(options.file.rate, 0)
      << " Hz";
  if (report.rate != options.file.rate)
    out << " (the plug-in ran at " << fixed(report.rate, 0) << " Hz; converted there and back)";
  out << ", peak " << decibels(output.peak()) << " dBFS, RMS " << decibels(output.rms()) << " dBFS";
  if (options.file.matching) out << ", gain " << decibels(output.gain()) << " dB";
  out << ", rendered in " << fixed(report.processingSeconds, 2) << " s";
  if (report.processingSeconds > 0.0)
    out << ", " << fixed(seconds / report.processingSeconds, 1) << " times real time";
  out << '\n';
}

/// "set Drive 3.0 dB, Type Tube" of what --set gave.
std::string whatWasSet(PluginHost& host, const ParameterText& parameters,
                       const std::vector<ParameterValue>& given) {
  std::string words;
  for (const ParameterValue& one : given) {
    const std::string label = host.label(one.index);
    words += (words.empty() ? "set " : ", ") + parameters.name(one.index) + ' ' +
             host.display(one.index) + (label == " " ? "" : ' ' + label);
  }
  return words;
}

void render(RenderOptions options) {
  options.render.outputs = options.mono ? 1 : 2;
  const std::filesystem::path plugin = locatePlugin(options.plugin);
  // Opened once: what comes through a pipe cannot be read again.
  AudioInput input(options.input, [&options](double own) {
    if (options.rate == 0.0) options.rate = own;
    return runRateFor(options.rate);
  });
  if (options.file.matching) input.measureLoudness();
  PluginHost host(plugin);
  if (options.render.useDouble && !host.hasDouble())
    throw std::runtime_error("the plug-in has no double precision processing");
  ParameterText parameters(plugin);
  const std::string settings = whatWasSet(host, parameters, options.start.apply(host, parameters));
  std::vector<AutomationMove> moves;
  if (!options.automation.empty()) {
    std::ifstream in = openToRead(options.automation);
    moves = resolved(readAutomation(in, options.automation), options.automation, parameters);
  }
  std::vector<TimedMidi> messages;
  if (!options.midi.empty()) messages = readMidiFile(options.midi);

  OutputSettings& file = options.file;
  file.rate = options.rate;
  file.channels = options.render.outputs;
  file.sourceRate = input.rate();
  file.gain = std::pow(10.0, options.gainDb / 20.0);
  const double seconds =
      static_cast<double>(input.frames()) / input.rate() + options.render.tailSeconds;
  file.mostFrames = static_cast<long long>(std::min(seconds * file.rate, 1e15));
  AudioOutput output(options.output, file);
  output.copyTags(input);
  AutomationPlayer automation(moves, input.rate());
  MidiPlayer midi(std::move(messages), input.rate());
  RenderReport report;
  {
    ProgressBar progress;
    report = Renderer(host, options.render).render(input, output, automation, midi, progress);
  }
  output.finish(file.matching ? std::optional(input.loudness()) : std::nullopt);
  if (!options.saveState.empty()) saveState(host, options.saveState);
  std::ostream& words = isStandardOutput(options.output) ? std::cerr : std::cout;
  if (!settings.empty()) words << settings << '\n';
  print(report, output, options, words);
  if (output.clipped())
    std::cerr << "brezan: warning: the peak is above full scale and was cut; lower a level or use "
                 "--format float\n";
}

} // namespace

void addRenderCommand(CLI::App& program) {
  CLI::App* command = program.add_subcommand("render", "Play a sound file through the plug-in");
  auto options = std::make_shared<RenderOptions>();
  RenderOptions& o = *options;
  command->add_option("IN", o.input, "Sound file of one or two channels; - is standard input")
      ->required();
  command
      ->add_option(
          "OUT", o.output,
          "Sound file to write (.wav, .aiff, .flac, .w64, .caf, .au); - is standard output, "
          "as WAV")
      ->required();
  addPluginOption(*command, o.plugin);
  o.start.addOptions(*command);
  command->add_option("--automate", o.automation, "File of parameter moves");
  command->add_option("--midi", o.midi, "Standard MIDI file played to the plug-in");
  command->add_option("--save-state", o.saveState, "Save the plug-in's state after the render");
  command
      ->add_option(
          "--rate", o.rate,
          "Rate in Hz of OUT; IN is converted when its own differs. The plug-in runs at it "
          "when it lies at 44.1-50, 88.2-100 or 176.4-192 kHz, otherwise at a multiple, "
          "part or 48 kHz, and the sound is converted there and back")
      ->check(CLI::Range(8000.0, 384000.0));
  command->add_option("--block", o.render.blockFrames, "Frames in a block (512)")
      ->check(CLI::Range(1, 1 << 20));
  command->add_flag("--double", o.render.useDouble, "Process in double precision");
  command->add_flag("--mono", o.mono, "One channel out");
  command
      ->add_option(
          "--tail", o.render.tailSeconds,
          "Longest tail in seconds after IN has ended (10); it ends earlier when the "
          "programme, without the noise of the motors, is below -90 dBFS for half a second")
      ->check(CLI::Range(0.0, 3600.0));
  command
      ->add_option("--settle", o.render.settleSeconds,
                   "Seconds of silence played, and not written, before IN begins (1), for the "
                   "rotors to start")
      ->check(CLI::Range(0.0, 60.0));
  command->add_option("--gain", o.gainDb, "Gain of the result in dB (0)")
      ->check(CLI::Range(-120.0, 120.0));
  command->add_flag("--match", o.file.matching,
                    "Give OUT the loudness of IN (ITU-R BS.1770, integrated), before --gain");
  command->add_option("--format", o.file.format, "pcm16, pcm24, pcm32, float or double (pcm24)");
  command->footer(kFooter);
  command->callback([options] { render(*options); });
}

} // namespace qlx::tools
