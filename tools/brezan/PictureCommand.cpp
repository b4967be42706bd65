#include "tools/brezan/Commands.h"

#include "tools/brezan/AudioFile.h"
#include "tools/brezan/LeverMarks.h"
#include "tools/brezan/Picture.h"
#include "tools/brezan/Table.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace qlx::tools {

namespace {

struct PictureOptions {
  std::string input;
  std::string output;
  std::string midi;
  std::string automation;
  std::string title;
};

PictureSound load(const PictureOptions& options) {
  AudioInput input(options.input);
  PictureSound sound{options.title, {}, input.rate(), {}};
  if (sound.title.empty()) sound.title = std::filesystem::path(options.input).filename().string();
  const auto channels = static_cast<std::size_t>(input.channels());
  sound.channels.resize(channels);
  std::vector<double> block(channels * 4096);
  for (int got = input.read(block); got > 0; got = input.read(block))
    for (std::size_t i = 0; i < static_cast<std::size_t>(got); ++i)
      for (std::size_t c = 0; c < channels; ++c)
        sound.channels[c].push_back(block[channels * i + c]);
  return sound;
}

// Peak and mean level between the lever's moves.
void printSections(const PictureSound& sound) {
  Table table({"from s", "to s", "lever", "peak dBFS", "RMS dBFS"});
  for (std::size_t i = 0; i < sound.marks.size(); ++i) {
    const double from = sound.marks[i].seconds;
    const double to = i + 1 < sound.marks.size() ? sound.marks[i + 1].seconds : sound.seconds();
    const auto frame = [&sound](double seconds) {
      return std::min(static_cast<std::size_t>(std::max(0.0, seconds * sound.rate)),
                      sound.channels.front().size());
    };
    double peak = 0.0;
    double power = 0.0;
    for (const auto& channel : sound.channels)
      for (std::size_t k = frame(from); k < frame(to); ++k) {
        peak = std::max(peak, std::abs(channel[k]));
        power += channel[k] * channel[k];
      }
    const auto count = static_cast<double>(std::max<std::size_t>(1, frame(to) - frame(from))) *
                       static_cast<double>(sound.channels.size());
    table.add({fixed(from, 2), fixed(to, 2), sound.marks[i].words, decibels(peak),
               decibels(std::sqrt(power / count))});
  }
  table.print(std::cout);
}

void picture(const PictureOptions& options) {
  PictureSound sound = load(options);
  std::vector<TimedMidi> midi;
  if (!options.midi.empty()) midi = readMidiFile(options.midi);
  std::vector<AutomationLine> automation;
  if (!options.automation.empty()) {
    std::ifstream in(options.automation);
    if (!in) throw std::runtime_error("cannot read '" + options.automation + "'");
    automation = readAutomation(in, options.automation);
  }
  sound.marks = leverMarks(midi, automation);
  drawPicture(sound, options.output);
  printSections(sound);
}

} // namespace

void addPictureCommand(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("picture", "Draw a sound file's level and spectrogram over time");
  auto options = std::make_shared<PictureOptions>();
  command->add_option("IN", options->input, "Sound file of one or two channels")->required();
  command->add_option("OUT", options->output, "PNG file to write")->required();
  command->add_option("--midi", options->midi, "MIDI file whose pedal moves are marked");
  command->add_option("--automate", options->automation,
                      "Automation file whose Lever and Stop moves are marked");
  command->add_option("--title", options->title, "Words over the picture");
  command->callback([options] { picture(*options); });
}

} // namespace qlx::tools
