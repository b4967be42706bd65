// SPDX-License-Identifier: ISC
#include "brezan/commands/Commands.h"

#include "brezan/Interrupt.h"
#include "brezan/plugin/EditorWindow.h"
#include "brezan/plugin/PluginLocation.h"
#include "brezan/plugin/SilentBlock.h"
#include "brezan/plugin/StartingPoint.h"

#include <chrono>
#include <iostream>
#include <limits>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <syncstream>
#include <thread>
#include <utility>
#include <vector>

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
  bool describe = false;
  std::optional<double> scale;
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
    SilentBlock block(kBlock);
    auto next = Clock::now();
    while (!stop.stop_requested()) {
      block.play(host);
      next += std::chrono::duration_cast<Clock::duration>(kBlockTime);
      std::this_thread::sleep_until(next);
    }
  }

  std::jthread m_thread;
};

/// Prints what happens, a line each: "begin edit", "automate" and "end edit" as the host is told of
/// them, on whatever thread, "value" for every parameter that stands elsewhere after an idle, and
/// "key" for those that the editor leaves to its host.
class EditLog {
 public:
  EditLog(PluginHost& host, EditorWindow& window) : m_host(host), m_window(window) {
    for (int i = 0; i < host.parameterCount(); ++i) m_values.push_back(host.value(i));
    host.setEditListener([this](const HostEdit& edit) { onEdit(edit); });
    window.setKeyListener([](const platform::WindowEvent& key) {
      write("key " + std::to_string(static_cast<int>(key.key)) + ' ' + key.text);
    });
    write("open");
  }
  ~EditLog() {
    m_window.setKeyListener({});
    m_host.setEditListener({});
  }
  EditLog(const EditLog&) = delete;
  EditLog& operator=(const EditLog&) = delete;

  void printChanges() {
    for (std::size_t i = 0; i < m_values.size(); ++i) {
      const float value = m_host.value(static_cast<int>(i));
      if (std::exchange(m_values[i], value) != value) print("value", static_cast<int>(i), value);
    }
  }

 private:
  /// In one piece and at once, from any thread.
  static void write(const std::string& line) {
    std::osyncstream(std::cout) << line << '\n' << std::flush;
  }

  void print(const char* what, int index, std::optional<float> value) {
    std::ostringstream line;
    line << what << ' ' << index;
    if (index < m_host.parameterCount()) line << ' ' << m_host.parameter(index).name;
    if (value) line << ' ' << *value;
    write(line.str());
  }

  void onEdit(const HostEdit& edit) {
    constexpr std::array kWords{"begin edit", "automate", "end edit"};
    const bool hasValue = edit.kind == HostEdit::Kind::Automate;
    print(kWords[static_cast<std::size_t>(edit.kind)], edit.index,
          hasValue ? std::optional(edit.value) : std::nullopt);
  }

  PluginHost& m_host;
  EditorWindow& m_window;
  std::vector<float> m_values;
};

void edit(const EditOptions& options) {
  if (options.scale) wantEditorScale(*options.scale);
  const std::filesystem::path plugin = locatePlugin(options.plugin);
  PluginHost host(plugin);
  {
    ParameterText parameters(plugin);
    options.start.apply(host, parameters);
  }
  host.start(kRate, kBlock, 2, 2);
  if (options.describe) {
    const std::string text = host.editorDescription();
    if (text.empty()) throw std::runtime_error("the plug-in does not describe its editor");
    std::cout << text;
    return;
  }
  EditorWindow window(host);
  std::optional<EditLog> log;
  if (options.log) log.emplace(host, window);
  const SilentPlayer player(host);
  const auto begun = Clock::now();
  for (auto next = begun; window.isOpen(); next += kIdleTime) {
    throwIfInterrupted();
    if (std::chrono::duration<double>(Clock::now() - begun).count() >= options.seconds) break;
    window.idle();
    if (log) log->printChanges();
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
  command->add_flag("--log", options->log,
                    "Print what the plug-in tells its host, and which parameters change");
  command->add_flag("--describe", options->describe,
                    "Print the controls with names and values as a tree, and open no window");
  command->add_option("--scale", options->scale, "Size of the window: 1, 1.5, 2 or 3")
      ->check(CLI::IsMember({1.0, 1.5, 2.0, 3.0}));
  command->add_option("--seconds", options->seconds, "Close after so many seconds")
      ->check(CLI::NonNegativeNumber);
  command->callback([options] { edit(*options); });
}

} // namespace qlx::tools
