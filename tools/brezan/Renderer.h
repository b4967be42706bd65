#pragma once

#include "tools/brezan/AudioFile.h"
#include "tools/brezan/Automation.h"
#include "tools/brezan/MidiFile.h"
#include "tools/brezan/PluginHost.h"
#include "tools/brezan/ProgressBar.h"

#include <vector>

namespace qlx::tools {

struct RenderSettings {
  int blockFrames = 512;
  bool useDouble = false;
  int outputs = 2;
  double settleSeconds = 1.0; ///< silence played before the file's first frame and thrown away
  double tailSeconds = 10.0;  ///< longest tail after the file's last frame
};

struct RenderReport {
  long long frames = 0;           ///< written
  double rate = 0.0;              ///< Hz
  double processingSeconds = 0.0; ///< spent inside the effect
  double peak = 0.0;              ///< linear
  double meanSquare = 0.0;        ///< over all channels
};

/// Plays a sound file through an effect into another sound file, with MIDI and automation, both
/// counted from the file's first frame.
class Renderer {
 public:
  Renderer(PluginHost& host, const RenderSettings& settings);

  /// Throws std::runtime_error, or Interrupted when the user stops the program.
  RenderReport render(AudioInput& input, AudioOutput& output, AutomationPlayer& automation,
                      MidiPlayer& midi, ProgressBar& progress);

 private:
  template <typename Sample>
  struct Buffers {
    std::vector<Sample> memory;
    Sample* in[2];
    Sample* out[2];
  };
  template <typename Sample>
  void prepare(Buffers<Sample>& buffers) const;
  template <typename Sample>
  void process(Buffers<Sample>& buffers, std::span<const double> in, std::span<double> out,
               int frames);
  void processBlock(std::span<const double> in, std::span<double> out, int frames);
  void settle();
  void measure(std::span<const double> out);
  bool quiet(std::span<const double> out);

  PluginHost& m_host;
  RenderSettings m_settings;
  int m_inputs = 2;
  Buffers<float> m_single;
  Buffers<double> m_double;
  RenderReport m_report;
  long long m_quietFrames = 0;
};

} // namespace qlx::tools
