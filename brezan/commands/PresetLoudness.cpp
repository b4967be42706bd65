// SPDX-License-Identifier: ISC
#include "brezan/commands/PresetLoudness.h"

#include "brezan/ProgressBar.h"
#include "brezan/Table.h"
#include "brezan/commands/ListOutput.h"
#include "brezan/organ/DrawbarOrgan.h"
#include "brezan/organ/OrganPhrase.h"
#include "brezan/sound/LoudnessMeter.h"
#include "brezan/sound/PlayThrough.h"

#include <cmath>
#include <iostream>

namespace qlx::tools {

namespace {

constexpr double kRate = 44100.0;
constexpr double kOrganPeak = 0.7079457843841379; // -3 dB below full scale, as 'brezan organ'
constexpr double kSettleSeconds = 1.0;

double loudness(std::span<const std::vector<double>> channels) {
  LoudnessMeter meter(static_cast<int>(channels.size()), kRate);
  std::vector<double> interleaved(channels.size() * channels.front().size());
  for (std::size_t i = 0; i < interleaved.size(); ++i)
    interleaved[i] = channels[i % channels.size()][i / channels.size()];
  meter.add(interleaved);
  return meter.integrated();
}

Json number(double lufs) { return std::isfinite(lufs) ? Json(lufs) : Json(nullptr); }

} // namespace

void printPresetLoudness(const std::filesystem::path& plugin, bool json) {
  const std::vector<std::vector<double>> organ = {playOrgan(organPhrase(), kRate, kOrganPeak)};
  const double dry = loudness(organ);
  Json list = Json::array();
  Table table({"number", "name", "LUFS", "against dry LU"});
  const std::vector<std::string> names = PluginHost(plugin).presetNames();
  {
    ProgressBar progress;
    for (std::size_t i = 0; i < names.size(); ++i) {
      PluginHost host(plugin); // rotors begin alike
      host.selectPreset(static_cast<int>(i));
      const double wet =
          loudness(playThrough(host, organ.front(), kRate, {{}, phrasePedal()}, kSettleSeconds));
      list.push_back({{"number", i}, {"name", names[i]}, {"lufs", number(wet)}});
      table.add({std::to_string(i), names[i], fixed(wet, 1), fixed(wet - dry, 1)});
      progress.show(static_cast<double>(i + 1) / static_cast<double>(names.size()));
    }
  }
  if (json) return print(Json{{"dryLufs", number(dry)}, {"presets", list}});
  table.print(std::cout);
  std::cout << "The organ phrase itself has " << fixed(dry, 1)
            << " LUFS (integrated, ITU-R BS.1770).\n";
}

} // namespace qlx::tools
