// SPDX-License-Identifier: ISC
#include "brezan/commands/Commands.h"

#include "brezan/Words.h"
#include "brezan/pictures/PngFile.h"
#include "brezan/plugin/EditorWindow.h"
#include "brezan/plugin/PluginLocation.h"
#include "brezan/plugin/SilentBlock.h"
#include "brezan/plugin/StartingPoint.h"
#include "platform/WindowRobot.h"
#include "resources/images/WindowLayout.h"

#include <chrono>
#include <cmath>
#include <iostream>
#include <stdexcept>
#include <thread>

namespace qlx::tools {

namespace {

using Click = sdk::EditorClick;

constexpr double kRate = 48000.0;
constexpr int kBlock = 480;
/// On the name plate, which opens the about screen.
constexpr Click kNamePlate{
    (resources::layout::kNamePlate.left + resources::layout::kNamePlate.right) / 2,
    (resources::layout::kNamePlate.top + resources::layout::kNamePlate.bottom) / 2};
constexpr int kIdlesPerStep = 12;
constexpr std::chrono::milliseconds kIdleTime{10};

struct ScreenshotOptions {
  std::string output;
  std::string plugin;
  StartingPoint start;
  std::vector<std::string> controls;
  std::vector<std::string> clicks;
  bool about = false;
  double playSeconds = 0.0;
  bool screen = false;
  double scale = 1.0;
  int enlarge = 1;
  int margin = 0;
};

/// "A<separator>B" as two numbers.
std::array<int, 2> pairOf(const std::string& text, char separator, const char* what) {
  const std::size_t at = text.find(separator);
  const auto first = asNumber(text.substr(0, at));
  const auto second = at == std::string::npos ? std::nullopt : asNumber(text.substr(at + 1));
  if (!first || !second || std::abs(*first) > 10000.0 || std::abs(*second) > 10000.0)
    throw std::runtime_error(std::string("'") + text + "' is no " + what);
  return {static_cast<int>(*first), static_cast<int>(*second)};
}

void sendControl(PluginHost& host, const std::string& text) {
  constexpr std::uint8_t kControlChange = 0xB0;
  const auto [number, value] = pairOf(text, '=', "controller, which is NUMBER=VALUE");
  const MidiBytes message{kControlChange, static_cast<std::uint8_t>(number & 0x7F),
                          static_cast<std::uint8_t>(value & 0x7F)};
  host.sendMidi({&message, 1});
}

void playSilence(PluginHost& host, double seconds) {
  SilentBlock block(kBlock);
  for (auto blocks = std::lround(seconds * kRate / kBlock); blocks > 0; --blocks) block.play(host);
}

/// The editor as the plug-in itself draws it.
std::optional<platform::WindowRobot::Picture>
drawnPicture(PluginHost& host, const std::vector<Click>& clicks, double scale) {
  constexpr auto kWindow = resources::layout::kWindow;
  const EditorSize size{static_cast<int>(kWindow.width() * scale),
                        static_cast<int>(kWindow.height() * scale)};
  auto pixels = host.editorPicture(size, clicks);
  if (!pixels) return std::nullopt;
  return platform::WindowRobot::Picture{size.width, size.height, std::move(*pixels)};
}

/// Gives the display time to carry out what has been asked of it.
void settle(EditorWindow& window) {
  for (int i = 0; i < kIdlesPerStep; ++i) {
    window.idle();
    std::this_thread::sleep_for(kIdleTime);
  }
}

/// What the desktop shows.
std::optional<platform::WindowRobot::Picture>
picturedScreen(PluginHost& host, const std::vector<Click>& clicks, double scale, int margin) {
  EditorWindow window(host);
  const auto robot = platform::openWindowRobot();
  if (robot == nullptr) return std::nullopt;
  settle(window);
  for (const Click& click : clicks) {
    robot->click(window.number(), static_cast<int>(click.x * scale),
                 static_cast<int>(click.y * scale));
    settle(window);
  }
  return robot->picture(window.number(), margin);
}

void screenshot(const ScreenshotOptions& options) {
  checkPictureName(options.output);
  wantEditorScale(options.scale);
  const std::filesystem::path plugin = locatePlugin(options.plugin);
  PluginHost host(plugin);
  ParameterText parameters(plugin);
  options.start.apply(host, parameters);
  host.start(kRate, kBlock, 2, 2);
  playSilence(host, options.playSeconds);
  for (const std::string& control : options.controls) sendControl(host, control);

  std::vector<Click> clicks;
  if (options.about) clicks.push_back(kNamePlate);
  for (const std::string& click : options.clicks) {
    const auto [x, y] = pairOf(click, ',', "place, which is X,Y");
    clicks.push_back({x, y});
  }
  const bool screen = options.screen || options.margin > 0;
  const auto picture = screen ? picturedScreen(host, clicks, options.scale, options.margin)
                              : drawnPicture(host, clicks, options.scale);
  if (!picture)
    throw std::runtime_error(screen ? "the editor's window cannot be seen on the screen"
                                    : "the plug-in draws no editor without a display; "
                                      "--screen takes it from the desktop");
  savePng(*picture, options.enlarge, options.output);
  std::cout << options.output << ": " << picture->width * options.enlarge << " x "
            << picture->height * options.enlarge << '\n';
}

} // namespace

void addScreenshotCommand(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("screenshot", "Save a picture of the plug-in's editor");
  auto options = std::make_shared<ScreenshotOptions>();
  ScreenshotOptions& o = *options;
  command->add_option("OUT", o.output, "PNG file to write")->required();
  addPluginOption(*command, o.plugin);
  o.start.addOptions(*command);
  command->add_option("--play", o.playSeconds, "Seconds of silence played before (0)")
      ->check(CLI::Range(0.0, 3600.0));
  command
      ->add_option("--control", o.controls,
                   "MIDI controller on channel 1 as NUMBER=VALUE, may be given again")
      ->allow_extra_args(false);
  command->add_flag("--about", o.about, "Open the about screen first");
  command
      ->add_option("--click", o.clicks,
                   "Click at X,Y of the smallest size first, may be given again")
      ->allow_extra_args(false);
  command->add_flag("--screen", o.screen,
                    "Take it from the desktop, with the menus and dialogs that lie over it");
  command->add_option("--margin", o.margin, "Pixels of the desktop around it (0); as --screen")
      ->check(CLI::Range(0, 4096));
  command->add_option("--scale", o.scale, "Size of the window: 1, 1.5, 2 or 3 (1)")
      ->check(CLI::IsMember({1.0, 1.5, 2.0, 3.0}));
  command->add_option("--enlarge", o.enlarge, "Times as large, each pixel a square (1)")
      ->check(CLI::Range(1, 16));
  command->callback([options] { screenshot(*options); });
}

} // namespace qlx::tools
