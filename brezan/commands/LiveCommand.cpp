// SPDX-License-Identifier: ISC
#include "brezan/commands/Commands.h"

#include "brezan/Interrupt.h"
#include "brezan/MemoryLock.h"
#include "brezan/System.h"
#include "brezan/Table.h"
#include "brezan/Words.h"
#include "brezan/plugin/EditorWindow.h"
#include "brezan/plugin/PluginLocation.h"
#include "brezan/plugin/StartingPoint.h"
#include "brezan/sound/PendingFile.h"
#include "live/JackSystem.h"
#include "live/LearnMenu.h"
#include "live/Player.h"
#include "live/RtSystem.h"
#include "live/SessionClient.h"
#include "platform/SettingsStore.h"
#include "presets/store/PersistentSettings.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <thread>
#include <unistd.h>
#include <vector>

namespace qlx::tools {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::microseconds kIdleTime{16667};
constexpr std::chrono::milliseconds kStatusTime{200};
constexpr const char* kClientName = "QLX Brezan";
constexpr const char* kLever = "Lever";
constexpr int kNone = -1; // of the parameters
constexpr const char* kManagerVariable = "NSM_URL";
// Value of the user's settings with the learned controllers.
constexpr const char* kMapName = "midi-controllers";

struct LiveOptions {
  std::string plugin;
  StartingPoint start;
  std::vector<std::string> connect;
  std::string map;
  std::string learn;
  std::string forget;
  int channel = live::EffectPlayer::kEveryChannel;
  bool wantsConnections = false;
  bool learnTouched = false; ///< the control that is moved in the window
  bool noWindow = false;
  bool list = false;
  std::string audio = "auto";
  live::RtSystem::Wishes card;
};

class Host final : public live::EffectHost {
 public:
  explicit Host(PluginHost& host) : m_host(host) {}
  sdk::EffectRecord& record() override { return m_host.record(); }
  void start(double rate, int longestBlock) override { m_host.start(rate, longestBlock, 2, 2); }
  void stop() override { m_host.stop(); }
  int presetCount() override { return static_cast<int>(m_host.presetNames().size()); }
  void selectPreset(int number) override { m_host.selectPreset(number); }

 private:
  PluginHost& m_host;
};

/// Names of the plug-in's parameters, both ways.
class Names {
 public:
  explicit Names(PluginHost& host) {
    for (int i = 0; i < host.parameterCount(); ++i) m_names.push_back(host.parameter(i).name);
  }
  std::optional<int> find(std::string_view name) const {
    const std::string wanted = folded(name);
    for (std::size_t i = 0; i < m_names.size(); ++i)
      if (!wanted.empty() && folded(m_names[i]) == wanted) return static_cast<int>(i);
    return std::nullopt;
  }
  int require(const std::string& name) const {
    if (const auto index = find(name)) return *index;
    throw std::runtime_error("no parameter '" + name + "'; 'brezan params' lists them");
  }
  const std::string& operator[](int index) const {
    return m_names.at(static_cast<std::size_t>(index));
  }

 private:
  std::vector<std::string> m_names;
};

/// The file of learned controllers: the one named, else a value of the user's settings.
class MapFile {
 public:
  MapFile(std::string path, const Names& names)
      : m_path(std::move(path)), m_names(names), m_settings(presets::openUserSettings()) {}

  live::MidiMap read() const {
    std::string text;
    std::error_code error;
    if (m_path.empty()) {
      text = m_settings->readText(kMapName);
    } else if (fs::exists(m_path, error)) {
      std::ifstream in(m_path, std::ios::binary);
      if (!in) throw std::runtime_error("cannot read '" + m_path + "'");
      text.resize(platform::SettingsStore::kMaxValueBytes);
      in.read(text.data(), static_cast<std::streamsize>(text.size()));
      text.resize(static_cast<std::size_t>(in.gcount()));
    }
    std::vector<std::string> faults;
    live::MidiMap map = live::MidiMap::parse(
        text, [this](std::string_view name) { return m_names.find(name); }, faults);
    for (const std::string& fault : faults)
      std::cerr << "brezan: " << (m_path.empty() ? kMapName : m_path) << ' ' << fault << '\n';
    return map;
  }

  void write(const live::MidiMap& map) const {
    const std::string text = map.text([this](int parameter) { return m_names[parameter]; });
    if (!m_path.empty())
      writeFile(m_path, text);
    else if (!m_settings->writeText(kMapName, text))
      std::cerr << "brezan: cannot keep the learned controllers in the user's settings\n";
  }

 private:
  std::string m_path;
  const Names& m_names;
  std::shared_ptr<platform::SettingsStore> m_settings;
};

/// One line on a terminal, drawn again and again; elsewhere nothing.
class StatusLine {
 public:
  void show(const std::string& words) {
    if (!m_terminal) return;
    const auto width = static_cast<std::size_t>(std::max(1, errorStreamColumns() - 1));
    std::cerr << '\r' << words.substr(0, width) << "\x1b[K" << std::flush;
    m_shown = true;
  }
  void clear() {
    if (std::exchange(m_shown, false)) std::cerr << "\r\x1b[K" << std::flush;
  }
  ~StatusLine() { clear(); }

 private:
  bool m_terminal = errorStreamIsTerminal();
  bool m_shown = false;
};

std::string level(float linear) { return decibels(static_cast<double>(linear)) + " dB"; }

std::string percent(float share) { return std::to_string(std::lround(100.0F * share)) + " %"; }

std::string status(live::Player& player, PluginHost& host, int lever) {
  const live::Meters meters = player.effect().readMeters();
  std::string words = "in " + level(meters.in) + "  out " + level(meters.out) + "  " +
                      host.display(lever) + "  load " + percent(meters.load) + " (" +
                      percent(meters.worstLoad) + ")  xruns " + std::to_string(player.lateBlocks());
  if (player.system() == nullptr)
    words += "  waiting for the audio system";
  else if (player.system()->isFreewheeling())
    words += "  freewheel";
  return words;
}

/// A session manager that has started the program, and what it wants to have opened.
class ManagedSession {
 public:
  /// Without a manager it does nothing. Waits until the manager has said what to open.
  ManagedSession() {
    const char* url = std::getenv(kManagerVariable);
    if (url == nullptr || *url == '\0') return;
    m_client.emplace(url, kClientName, "brezan", static_cast<int>(::getpid()));
    while (!m_session) {
      m_session = m_client->awaitSession(kStatusTime);
      if (takeInterrupt()) throw std::runtime_error("ended before the session was open");
    }
  }
  bool isThere() const { return m_session.has_value(); }
  /// The name for the audio system.
  std::string clientName() const { return isThere() ? m_session->id : kClientName; }
  std::string stateFile() const { return m_session->path + ".state"; }
  /// The manager is told once, whichever comes first.
  void tellOpened() {
    if (isThere() && !std::exchange(m_answered, true)) m_client->tellOpened();
  }
  void tellFailed(const std::string& words) {
    if (isThere() && !std::exchange(m_answered, true)) m_client->tellFailed(words);
  }
  void idle(PluginHost& host) {
    if (!isThere()) return;
    m_client->idle([this, &host] {
      std::error_code error;
      fs::create_directories(fs::path(stateFile()).parent_path(), error); // else writing says it
      writeFile(stateFile(), host.state());
    });
  }

 private:
  std::optional<live::SessionClient> m_client;
  std::optional<live::SessionClient::Session> m_session;
  bool m_answered = false;
};

/// A file that cannot be saved after the music is refused before it.
void requireFolder(const std::string& file, bool writable) {
  if (file.empty()) return;
  std::error_code error;
  const fs::path folder = fs::weakly_canonical(fs::absolute(file, error), error).parent_path();
  if (!fs::is_directory(folder, error))
    throw std::runtime_error("there is no folder for '" + file + "'");
  if (writable && ::access(folder.c_str(), W_OK) != 0)
    throw std::runtime_error("'" + file + "' could not be saved: its folder may not be written to");
}

void play(const LiveOptions& options, ManagedSession& session) {
  PluginHost host(locatePlugin(options.plugin));
  const Names names(host);
  const int learned = options.learn.empty() ? kNone : names.require(options.learn);
  StartingPoint start = options.start;
  if (session.isThere())
    start.state = session.stateFile();
  else
    requireFolder(start.state, true);
  requireFolder(options.map, false);
  std::error_code error;
  if (!fs::exists(start.state, error)) start.state.clear(); // saved there for the first time
  {
    ParameterText parameters(host.file());
    start.apply(host, parameters);
  }
  const MapFile mapFile(options.map, names);
  live::MidiMap map = mapFile.read();
  if (!options.forget.empty()) {
    map.forget(names.require(options.forget));
    mapFile.write(map);
  }

  StatusLine line;
  const auto say = [&line](const std::string& words) {
    line.clear();
    std::cout << words << '\n' << std::flush;
  };
  live::JackSystem::Wishes wishes;
  wishes.physical = options.wantsConnections && options.connect.empty();
  wishes.names = options.connect;
  live::Player* running = nullptr;
  live::Player::Events events;
  bool useJack = options.audio != "alsa";
  events.open = [&]() -> std::unique_ptr<live::AudioSystem> {
    if (useJack) {
      std::unique_ptr<live::JackSystem> jack = live::JackSystem::open(session.clientName(), wishes);
      if (!jack && options.audio == "jack" && wishes.strict)
        throw std::runtime_error("no JACK server is running");
      if (jack || !wishes.strict) return jack;
    }
    useJack = false;
    return std::make_unique<live::RtSystem>(options.card);
  };
  events.ended = [&wishes](const live::AudioSystem& gone) {
    const auto* jack = dynamic_cast<const live::JackSystem*>(&gone);
    if (jack == nullptr) return;
    wishes.connections = jack->connections();
    wishes.strict = false;
  };
  events.say = say;
  events.mapChanged = [&] {
    try {
      mapFile.write(running->map());
    } catch (const std::runtime_error& fault) { // the music goes on
      say(fault.what());
    }
  };
  events.learned = [&](int parameter, live::Controller controller) {
    say(names[parameter] + " follows controller " + std::to_string(controller.number) +
        " of channel " + std::to_string(controller.channel));
  };
  if (options.learnTouched) {
    // Set before blocks come, since it is called on the audio thread, too: pedal and wheel move the
    // lever there, which is no wish to learn.
    host.setEditListener([&running, control = std::this_thread::get_id()](const HostEdit& edit) {
      if (edit.kind == HostEdit::Kind::Automate && std::this_thread::get_id() == control &&
          running != nullptr)
        running->learn(edit.index);
    });
  }
  Host effectHost(host);
  std::optional<live::Player> player;
  player.emplace(effectHost, std::move(map), std::move(events));
  running = &*player;
  player->effect().setProgramChannel(options.channel);
  if (const auto* client = dynamic_cast<const live::JackSystem*>(player->system()))
    say("playing as JACK client \"" + client->name() + "\" at " + fixed(client->rate(), 0) +
        " Hz in blocks of " + std::to_string(client->blockFrames()) + " frames");
  if (const auto* card = dynamic_cast<const live::RtSystem*>(player->system()))
    say("playing on the sound card at " + fixed(card->rate(), 0) + " Hz in blocks of " +
        std::to_string(card->blockFrames()) + " frames, " + std::to_string(card->midiInputs()) +
        " MIDI inputs");
  if (learned != kNone) {
    player->learn(learned);
    say("move a controller for " + names[learned]);
  }
  if (options.learnTouched)
    say("move a control in the window, then the controller that shall move it");
  // A server that runs in real time needs the same right of its user and has said so.
  if (!lockMemory() && dynamic_cast<const live::RtSystem*>(player->system()) != nullptr)
    std::cerr << "brezan: warning: this user may not lock memory; see 'ulimit -l'\n";

  live::LearnMenu menu(*player, [&names](int parameter) { return names[parameter]; });
  host.setMenuListener([&menu](sdk::EditorMenu& shown) { return menu.answer(shown); });
  std::optional<EditorWindow> window;
  if (!options.noWindow) window.emplace(host);
  session.tellOpened();
  const int lever = names.require(kLever);
  auto nextStatus = Clock::now();
  for (auto next = nextStatus; !takeInterrupt() && (!window || window->isOpen());
       next += kIdleTime) {
    player->idle();
    if (window) window->idle();
    session.idle(host);
    if (Clock::now() >= nextStatus) {
      line.show(status(*player, host, lever));
      nextStatus = Clock::now() + kStatusTime;
    }
    next = std::max(next, Clock::now() - kIdleTime); // after a pause not all at once
    std::this_thread::sleep_until(next);
  }
  window.reset();
  host.setMenuListener({});
  const auto* jack = dynamic_cast<const live::JackSystem*>(player->system());
  say("played " + std::to_string(player->effect().blocks()) + " blocks" +
      (jack == nullptr ? "" : " since JACK frame " + std::to_string(jack->firstFrame())) + ", " +
      std::to_string(player->lateBlocks()) + " xruns");
  player.reset();
  // A session's is saved when its manager says so.
  if (!session.isThere() && !options.start.state.empty())
    writeFile(options.start.state, host.state());
}

void play(const LiveOptions& options) {
  if (options.list) {
    for (const std::string& line : live::RtSystem::list()) std::cout << line << '\n';
    return;
  }
  ManagedSession session;
  try {
    play(options, session);
  } catch (const std::exception& error) {
    session.tellFailed(error.what());
    throw;
  }
}

} // namespace

void addLiveCommand(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("live", "Play through the plug-in live, in a window of its own");
  auto options = std::make_shared<LiveOptions>();
  LiveOptions& o = *options;
  addPluginOption(*command, o.plugin);
  o.start.addOptions(*command);
  command->get_option("--state")->description(
      "File of the plug-in's state: taken at the start when it is there, saved at the end");
  CLI::Option* connect = command->add_option(
      "--connect", o.connect,
      "Connect to the machine's own JACK ports, or to the ports and clients named");
  connect->expected(0, -1);
  command
      ->add_option("--audio", o.audio,
                   "jack, alsa, or auto: JACK when its server runs, else the sound card (auto)")
      ->check(CLI::IsMember({"auto", "jack", "alsa"}));
  command->add_flag("--list", o.list,
                    "Only list sound cards and MIDI inputs, for use without JACK");
  command->add_option("--input", o.card.input, "Sound card to hear, by number or part of its name");
  command->add_option("--output", o.card.output, "Sound card to play on, likewise");
  command->add_option("--midi", o.card.midi,
                      "MIDI inputs without JACK, by part of their name (all)");
  command->add_option("--rate", o.card.rate, "Rate in Hz without JACK (48000)")
      ->check(CLI::Range(8000U, 384000U));
  command->add_option("--block", o.card.blockFrames, "Frames in a block without JACK (256)")
      ->check(CLI::Range(16U, 8192U));
  command->add_flag("--no-window", o.noWindow,
                    "No editor: a line with levels, lever, load and xruns in the terminal");
  CLI::Option* learn =
      command->add_option("--learn", o.learn,
                          "The next MIDI controller that moves is kept for this parameter; without "
                          "a name, for the control moved last in the window");
  learn->expected(0, 1);
  command->add_option("--forget", o.forget, "Forget the controller of this parameter");
  command->add_option("--map", o.map,
                      "File of learned controllers instead of the one in the user's settings");
  command
      ->add_option("--channel", o.channel,
                   "MIDI channel of program changes, which choose presets 1 to 32; else any")
      ->check(CLI::Range(1, live::kChannels));
  command->callback([options, connect, learn] {
    options->learnTouched = learn->count() > 0 && options->learn.empty();
    if (options->learnTouched && options->noWindow)
      throw std::runtime_error("--learn needs a parameter's name where there is no window");
    options->wantsConnections = connect->count() > 0;
    std::erase(options->connect, std::string()); // what stands for no name at all
    play(*options);
  });
}

} // namespace qlx::tools
