// SPDX-License-Identifier: ISC
#include "platform/linux/desktop/DetachedCommand.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qlx::platform {
namespace {

// The shell exits at once, so that its child is inherited by the system's first process.
constexpr const char* kScript = R"({ "$@" 3>&-; echo $? >&3; } &)";
constexpr int kStatusDescriptor = 3;

struct Pipe {
  FileDescriptor reader; ///< doesn't block
  FileDescriptor writer; ///< clear of the numbers that the program finds its own streams under
};

std::optional<Pipe> makePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  FileDescriptor reader(ends[0]);
  const FileDescriptor low(ends[1]);
  FileDescriptor writer(::fcntl(low.get(), F_DUPFD_CLOEXEC, kStatusDescriptor + 1));
  if (!writer || ::fcntl(reader.get(), F_SETFL, O_NONBLOCK) != 0) return std::nullopt;
  return Pipe{std::move(reader), std::move(writer)};
}

bool isForHostOnly(std::string_view variable) {
  return variable.starts_with("LD_LIBRARY_PATH=") || variable.starts_with("LD_PRELOAD=");
}

std::vector<char*> cleanEnvironment() {
  std::vector<char*> kept;
  for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
    if (!isForHostOnly(*variable)) kept.push_back(*variable);
  }
  kept.push_back(nullptr);
  return kept;
}

/// What the starting shell gets: streams, session and signals.
class SpawnSettings {
 public:
  SpawnSettings(int output, int status) {
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_init(&m_attributes);
    posix_spawnattr_setsigmask(&m_attributes, &none);
    posix_spawnattr_setsigdefault(&m_attributes, &all);
    posix_spawnattr_setflags(&m_attributes,
                             POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    posix_spawn_file_actions_init(&m_actions);
    posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (output < 0) {
      posix_spawn_file_actions_addopen(&m_actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    } else {
      posix_spawn_file_actions_adddup2(&m_actions, output, STDOUT_FILENO);
    }
    posix_spawn_file_actions_addopen(&m_actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&m_actions, status, kStatusDescriptor);
    posix_spawn_file_actions_addclosefrom_np(&m_actions, kStatusDescriptor + 1);
  }
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&m_actions);
    posix_spawnattr_destroy(&m_attributes);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  const posix_spawn_file_actions_t* actions() const { return &m_actions; }
  const posix_spawnattr_t* attributes() const { return &m_attributes; }

 private:
  posix_spawn_file_actions_t m_actions{};
  posix_spawnattr_t m_attributes{};
};

/// As many bytes as there are now, appended. False once the other end is closed.
bool readAvailable(int descriptor, std::string& text) {
  std::array<char, 1024> buffer;
  for (;;) {
    const ssize_t got = ::read(descriptor, buffer.data(), buffer.size());
    if (got > 0) {
      text.append(buffer.data(), static_cast<std::size_t>(got));
      if (text.size() > DetachedCommand::kMaxOutput) return true;
    } else if (got == 0) {
      return false;
    } else if (errno != EINTR) {
      return errno == EAGAIN;
    }
  }
}

} // namespace

std::optional<DetachedCommand> DetachedCommand::start(const std::vector<std::string>& arguments,
                                                      Output output) {
  auto status = makePipe();
  auto text = output == Output::Keep ? makePipe() : std::nullopt;
  if (!status || (output == Output::Keep && !text)) return std::nullopt;
  std::vector<std::string> words{"sh", "-c", kScript, "sh"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> raw;
  raw.reserve(words.size() + 1);
  for (std::string& word : words) raw.push_back(word.data());
  raw.push_back(nullptr);
  std::vector<char*> environment = cleanEnvironment();
  const SpawnSettings settings(text ? text->writer.get() : -1, status->writer.get());
  pid_t starter = 0;
  if (::posix_spawn(&starter, "/bin/sh", settings.actions(), settings.attributes(), raw.data(),
                    environment.data()) != 0) {
    return std::nullopt;
  }
  return DetachedCommand(starter, text ? std::move(text->reader) : FileDescriptor(),
                         std::move(status->reader));
}

DetachedCommand::DetachedCommand(DetachedCommand&& other) noexcept
    : m_session(std::exchange(other.m_session, 0)), m_starter(std::exchange(other.m_starter, 0)),
      m_outputPipe(std::move(other.m_outputPipe)), m_statusPipe(std::move(other.m_statusPipe)),
      m_output(std::move(other.m_output)) {}

DetachedCommand& DetachedCommand::operator=(DetachedCommand&& other) noexcept {
  std::swap(m_session, other.m_session);
  std::swap(m_starter, other.m_starter);
  std::swap(m_outputPipe, other.m_outputPipe);
  std::swap(m_statusPipe, other.m_statusPipe);
  std::swap(m_output, other.m_output);
  return *this;
}

// Waiting is short: the starter exits as soon as it has started the command.
DetachedCommand::~DetachedCommand() { reapStarter(true); }

void DetachedCommand::reapStarter(bool wait) {
  if (m_starter <= 0) return;
  pid_t reaped = 0;
  do {
    reaped = ::waitpid(m_starter, nullptr, wait ? 0 : WNOHANG);
  } while (reaped < 0 && errno == EINTR);
  if (reaped != 0) m_starter = 0; // also when a host has reaped it
}

bool DetachedCommand::readOutput() {
  if (m_outputPipe && !readAvailable(m_outputPipe.get(), m_output)) {
    m_outputPipe = FileDescriptor();
  }
  return m_output.size() <= kMaxOutput;
}

std::optional<DetachedCommand::Result> DetachedCommand::poll() {
  if (!m_statusPipe) return std::nullopt;
  reapStarter(false);
  std::string text;
  const bool open = readAvailable(m_statusPipe.get(), text);
  const bool bounded = readOutput(); // after the status, which is written last
  if (open && bounded && !text.ends_with('\n')) return std::nullopt;
  Result result;
  if (bounded) {
    std::from_chars(text.data(), text.data() + text.size(), result.status);
    result.output = std::move(m_output);
  } else {
    terminate();
  }
  m_session = 0;
  m_outputPipe = FileDescriptor();
  m_statusPipe = FileDescriptor();
  return result;
}

void DetachedCommand::terminate() const {
  if (m_session > 0) ::kill(-m_session, SIGTERM);
}

} // namespace qlx::platform
