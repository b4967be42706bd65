// SPDX-License-Identifier: ISC
#include "brezan/commands/Commands.h"

#include "brezan/Table.h"
#include "brezan/organ/OrganPhrase.h"
#include "brezan/sound/AudioFile.h"
#include "brezan/sound/PendingFile.h"

#include <functional>
#include <iostream>
#include <sstream>
#include <stdexcept>

namespace qlx::tools {

namespace {

constexpr double kPeak = 0.7079457843841379; // -3 dB below full scale

struct OrganOptions {
  std::string output;
  std::string midi;
  std::string automation;
  std::string format = "pcm24";
  double rate = 44100.0;
};

void writeWhole(const std::string& path, const std::function<void(std::ostream&)>& write) {
  std::ostringstream out;
  write(out);
  writeFile(path, out.view());
}

void organ(const OrganOptions& options) {
  AudioOutput output(options.output, options.format, options.rate, 1);
  const std::vector<double> sound = playOrgan(organPhrase(), options.rate, kPeak);
  output.write(sound);
  output.finish();
  if (!options.midi.empty())
    writeWhole(options.midi, [](std::ostream& out) { writeMidi(out, phrasePedal()); });
  if (!options.automation.empty())
    writeWhole(options.automation, [](std::ostream& out) { out << phraseBrake(); });
  (isStandardOutput(options.output) ? std::cerr : std::cout)
      << options.output << ": " << fixed(static_cast<double>(sound.size()) / options.rate, 2)
      << " s, peak " << decibels(output.peak()) << " dBFS\n";
}

} // namespace

void addOrganCommand(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("organ", "Write the demonstration phrase of a tone wheel organ, dry");
  auto options = std::make_shared<OrganOptions>();
  command->add_option("OUT", options->output, "Sound file to write, one channel")->required();
  command->add_option("--midi", options->midi, "Also write the player's pedal, for render --midi");
  command->add_option("--automation", options->automation,
                      "Also write the brake, for render --automate");
  command->add_option("--rate", options->rate, "Rate in Hz (44100)")
      ->check(CLI::Range(22050.0, 192000.0));
  command->add_option("--format", options->format, "pcm16, pcm24, pcm32, float or double (pcm24)");
  command->footer("Example:\n  brezan organ organ.wav --midi pedal.mid --automation brake.txt\n"
                  "  brezan render organ.wav out.wav --midi pedal.mid --automate brake.txt");
  command->callback([options] { organ(*options); });
}

} // namespace qlx::tools
