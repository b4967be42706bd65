// SPDX-License-Identifier: ISC
#include "brezan/commands/Commands.h"

#include "brezan/Table.h"
#include "brezan/analysis/LeverMarks.h"
#include "brezan/pictures/PngFile.h"
#include "brezan/pictures/SoundPicture.h"
#include "brezan/sound/AudioFile.h"
#include "brezan/sound/SoundLevel.h"

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
  sound.channels = readChannels(input);
  return sound;
}

// Peak and mean level between the lever's moves.
void printSections(const PictureSound& sound) {
  Table table({"from s", "to s", "lever", "peak dBFS", "RMS dBFS"});
  for (std::size_t i = 0; i < sound.marks.size(); ++i) {
    const double from = sound.marks[i].seconds;
    const double to = i + 1 < sound.marks.size() ? sound.marks[i + 1].seconds : sound.seconds();
    const SoundLevel level = levelBetween(sound.channels, sound.rate, from, to);
    table.add({fixed(from, 2), fixed(to, 2), sound.marks[i].words, decibels(level.peak),
               decibels(level.rms)});
  }
  table.print(std::cout);
}

void picture(const PictureOptions& options) {
  checkPictureName(options.output);
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
