// SPDX-License-Identifier: ISC
#include "brezan/validate/CheckRunner.h"

#include "brezan/Table.h"
#include "brezan/validate/host/OpcodeNames.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <optional>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace qlx::validate {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPoll{5};
// A whole check may take so many times the limit of one call, and so many times the seconds of
// sound: far more than a machine that is busy with other things needs.
constexpr double kCheckLimit = 20.0;
constexpr double kSoundLimit = 200.0;

/// Progress in memory that a forked process shares.
class SharedProgress {
 public:
  SharedProgress()
      : m_memory(::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
    if (m_memory == MAP_FAILED) throw std::bad_alloc();
    m_progress = new (m_memory) Progress;
  }
  ~SharedProgress() { ::munmap(m_memory, sizeof(Progress)); }
  SharedProgress(const SharedProgress&) = delete;
  SharedProgress& operator=(const SharedProgress&) = delete;
  Progress& operator*() const { return *m_progress; }
  Progress* operator->() const { return m_progress; }

 private:
  void* m_memory;
  Progress* m_progress;
};

/// A check's process, with all that it has started. Its end ends them.
class ChildGroup {
 public:
  explicit ChildGroup(pid_t pid) : m_pid(pid) {}
  ~ChildGroup() {
    ::kill(-m_pid, SIGKILL);
    if (!m_reaped) ::kill(m_pid, SIGKILL);
    while (!m_reaped && ::waitpid(m_pid, nullptr, 0) < 0 && errno == EINTR) continue;
  }
  ChildGroup(const ChildGroup&) = delete;
  ChildGroup& operator=(const ChildGroup&) = delete;

  /// The status when it has ended.
  std::optional<int> ended(rusage& usage) {
    int status = 0;
    if (m_reaped || ::wait4(m_pid, &status, WNOHANG, &usage) != m_pid) return std::nullopt;
    m_reaped = true;
    return status;
  }

 private:
  pid_t m_pid;
  bool m_reaped = false;
};

std::string lastCall(const Progress& progress) {
  const std::string trying = progress.trying.data();
  return std::string("in ") +
         callName(progress.kind.load(), progress.opcode.load(), progress.index.load()) +
         (trying.empty() ? "" : " (" + trying + ")");
}

std::string endWords(int status) {
  if (WIFSIGNALED(status)) return std::string("crash: ") + ::strsignal(WTERMSIG(status));
  return "the program was ended with exit code " + std::to_string(WEXITSTATUS(status));
}

void leave(Progress& progress, Outcome outcome, const char* reason) {
  std::strncpy(progress.reason.data(), reason, progress.reason.size() - 1);
  progress.outcome.store(outcome);
}

double secondsFrom(Clock::time_point begin, Clock::time_point end) {
  return std::chrono::duration<double>(end - begin).count();
}

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

} // namespace

CheckRunner::CheckRunner(const Settings& settings, std::string display, bool quiet)
    : m_settings(settings), m_display(std::move(display)), m_quiet(quiet) {
  std::string folder = (fs::temp_directory_path() / "brezan-validate-XXXXXX").string();
  if (::mkdtemp(folder.data()) == nullptr)
    throw std::system_error(errno, std::generic_category(), "cannot create a temporary folder");
  m_folder = folder;
}

CheckRunner::~CheckRunner() {
  std::error_code error;
  fs::remove_all(m_folder, error);
}

void CheckRunner::runInChild(const Check& check, const fs::path& home, Progress& progress) const {
  ::setpgid(0, 0);
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) std::signal(number, SIG_DFL);
  const rlimit noCore{0, 0};
  ::setrlimit(RLIMIT_CORE, &noCore);
  const int nowhere = ::open("/dev/null", O_RDWR);
  ::dup2(nowhere, STDIN_FILENO);
  ::dup2(m_quiet ? nowhere : STDERR_FILENO, STDOUT_FILENO);
  if (m_quiet) ::dup2(nowhere, STDERR_FILENO);
  ::close(nowhere);
  ::setenv("HOME", home.c_str(), 1);
  for (const char* folder :
       {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
    ::unsetenv(folder);
  if (check.opensWindow && !m_display.empty()) ::setenv("DISPLAY", m_display.c_str(), 1);
  CheckRun run(m_settings, check, home, progress); // outlives a failure, with the library
  try {
    if (check.opensWindow && m_display.empty()) run.skip("there is neither Xvfb nor a display");
    check.run(run);
    run.unloadLibrary();
    progress.outcome.store(Outcome::Passed);
  } catch (const CheckSkipped& skipped) {
    leave(progress, Outcome::Skipped, skipped.what());
  } catch (const CheckFailed& failed) {
    leave(progress, Outcome::Failed, failed.what());
  } catch (const std::exception& error) {
    leave(progress, Outcome::Failed,
          ("exception " + lastCall(progress) + ": " + error.what()).c_str());
  }
  ::_exit(0); // the rest of the program belongs to the parent
}

CheckResult CheckRunner::run(const Check& check, const std::function<void()>& waiting) {
  const fs::path home = m_folder / (std::string(check.group) + '.' + check.name);
  fs::create_directory(home);
  const SharedProgress progress;
  const auto begin = Clock::now();
  const pid_t pid = ::fork();
  if (pid < 0) throw std::system_error(errno, std::generic_category(), "cannot start a process");
  if (pid == 0) runInChild(check, home, *progress);
  ChildGroup child(pid);
  CheckResult result{&check, Outcome::Failed, "", 0.0, 0.0};
  rusage usage{};
  std::uint64_t calls = 0;
  auto lastNews = begin;
  for (;;) {
    if (const auto status = child.ended(usage)) {
      result.outcome = progress->outcome.load();
      result.reason = progress->reason.data();
      if (result.outcome == Outcome::Running || *status != 0) {
        result.outcome = Outcome::Failed;
        result.reason = endWords(*status) + ' ' + lastCall(*progress);
      }
      break;
    }
    const auto now = Clock::now();
    if (const std::uint64_t seen = progress->calls.load(); seen != calls) {
      calls = seen;
      lastNews = now;
    }
    if (secondsFrom(lastNews, now) > m_settings.limit) {
      result.reason =
          "no return after " + tools::fixed(m_settings.limit, 0) + " s " + lastCall(*progress);
      break;
    }
    if (const double whole = kCheckLimit * m_settings.limit + kSoundLimit * m_settings.seconds;
        secondsFrom(begin, now) > whole) {
      result.reason = "no end after " + tools::fixed(whole, 0) + " s, " + lastCall(*progress);
      break;
    }
    waiting();
    std::this_thread::sleep_for(kPoll);
  }
  result.seconds = secondsFrom(begin, Clock::now());
  result.cpuSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
  return result;
}

} // namespace qlx::validate
