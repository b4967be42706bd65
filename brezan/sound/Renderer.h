// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/ProgressBar.h"
#include "brezan/plugin/Automation.h"
#include "brezan/plugin/MidiFile.h"
#include "brezan/plugin/PluginHost.h"
#include "brezan/sound/AudioFile.h"
#include "brezan/sound/EffectBlocks.h"

namespace qlx::tools {

struct RenderSettings {
  int blockFrames = 512;
  bool useDouble = false;
  int outputs = 2;
  double settleSeconds = 1.0; ///< silence played before the file's first frame and thrown away
  double tailSeconds = 10.0;  ///< longest tail after the file's last frame
};

struct RenderReport {
  long long frames = 0;           ///< that the effect gave
  double rate = 0.0;              ///< of the effect, Hz
  double processingSeconds = 0.0; ///< spent inside the effect
};

/// Plays a sound file through an effect into another sound file, with MIDI and automation, both
/// counted from the file's first frame, at the rate that the input gives.
class Renderer {
 public:
  Renderer(PluginHost& host, const RenderSettings& settings);

  /// Throws std::runtime_error, or Interrupted when the user stops the program.
  RenderReport render(AudioInput& input, AudioOutput& output, AutomationPlayer& automation,
                      MidiPlayer& midi, ProgressBar& progress);

 private:
  PluginHost& m_host;
  RenderSettings m_settings;
};

} // namespace qlx::tools
