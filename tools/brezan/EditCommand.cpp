#include "tools/brezan/Commands.h"

#include "tools/brezan/EditorWindow.h"
#include "tools/brezan/Interrupt.h"
#include "tools/brezan/PluginLocation.h"
#include "tools/brezan/StartingPoint.h"

#include <chrono>
#include <iostream>
#include <limits>
#include <thread>

namespace qlx::tools {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double kRate = 48000.0;
constexpr int kBlock = 512;
constexpr std::chrono::duration<double> kBlockTime{kBlock / kRate};
constexpr std::chrono::microseconds kIdleTime{16667};

struct EditOptions {
  std::string plugin;
  StartingPoint start;
  bool log = false;
  double seconds = std::numeric_limits<double>::infinity();
};

/// Plays silence through the plug-in in real time on a thread of its own, as a host's audio thread
/// does, so that the rotors turn.
class SilentPlayer {
 public:
  explicit SilentPlayer(PluginHost& host)
      : m_thread([&host](const std::stop_token& stop) { play(host, stop); }) {}

 private:
  static void play(PluginHost& host, const std::stop_token& stop) {
    std::array<std::vector<float>, 4> buffers;
    buffers.fill(std::vector<float>(kBlock));
    std::array inputs{buffers[0].data(), buffers[1].data()};
    std::array outputs{buffers[2].data(), buffers[3].data()};
    auto next = Clock::now();
    while (!stop.stop_requested()) {
      host.process(inputs.data(), outputs.data(), kBlock);
      next += std::chrono::duration_cast<Clock::duration>(kBlockTime);
      std::this_thread::sleep_until(next);
    }
  }

  std::jthread m_thread;
};

void print(PluginHost& host, const HostEdit& edit) {
  constexpr std::array kWords{"begin edit", "automate", "end edit"};
  std::cout << kWords[static_cast<std::size_t>(edit.kind)] << ' ' << edit.index;
  if (edit.index < host.parameterCount()) std::cout << ' ' << host.parameter(edit.index).name;
  if (edit.kind == HostEdit::Kind::Automate) std::cout << ' ' << edit.value;
  std::cout << std::endl; // whoever watches sees it at once
}

void edit(const EditOptions& options) {
  const std::filesystem::path plugin = locatePlugin(options.plugin);
  PluginHost host(plugin);
  {
    ParameterText parameters(plugin);
    options.start.apply(host, parameters);
  }
  if (options.log) host.setEditListener([&host](const HostEdit& edit) { print(host, edit); });
  host.start(kRate, kBlock, 2, 2);
  EditorWindow window(host);
  const SilentPlayer player(host);
  const auto begun = Clock::now();
  for (auto next = begun; window.isOpen(); next += kIdleTime) {
    throwIfInterrupted();
    if (std::chrono::duration<double>(Clock::now() - begun).count() >= options.seconds) break;
    window.idle();
    std::this_thread::sleep_until(next);
  }
}

} // namespace

void addEditCommand(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "edit", "Open the plug-in's editor in a window, with silence played through it");
  auto options = std::make_shared<EditOptions>();
  addPluginOption(*command, options->plugin);
  options->start.addOptions(*command);
  command->add_flag("--log", options->log, "Print what the plug-in tells its host");
  command->add_option("--seconds", options->seconds, "Close after so many seconds")
      ->check(CLI::NonNegativeNumber);
  command->callback([options] { edit(*options); });
}

} // namespace qlx::tools
