// SPDX-License-Identifier: ISC
#pragma once

#include "platform/linux/files/FileDescriptor.h"

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace qlx::platform {

/// A program started apart from this process: in a session of its own, with none of its open
/// descriptors, with signals as they are by default, and without the library paths that a bundled
/// host sets for itself. It is no child of this process, so it leaves no zombie and may outlive it,
/// whatever the host does about its own children. Never waits for the program.
class DetachedCommand {
 public:
  enum class Output { Keep, Discard };

  struct Result {
    /// As a shell tells it: 127 no such program, 128 + n ended by signal n; -1 when nobody told.
    int status = -1;
    std::string output; ///< at most kMaxOutput bytes
  };

  static constexpr std::size_t kMaxOutput = std::size_t{1} << 16;

  /// `arguments` begins with the program's name, looked up in PATH. Nothing when no process can be
  /// had.
  static std::optional<DetachedCommand> start(const std::vector<std::string>& arguments,
                                              Output output);

  DetachedCommand(DetachedCommand&& other) noexcept;
  DetachedCommand& operator=(DetachedCommand&& other) noexcept;
  /// The program goes on.
  ~DetachedCommand();

  /// How it ended, once it has.
  std::optional<Result> poll();

  /// Asks the program, and what it has started in its turn, to end.
  void terminate() const;

 private:
  DetachedCommand(pid_t starter, FileDescriptor output, FileDescriptor status)
      : m_session(starter), m_starter(starter), m_outputPipe(std::move(output)),
        m_statusPipe(std::move(status)) {}
  void reapStarter(bool wait);
  bool readOutput();

  pid_t m_session;
  pid_t m_starter; ///< the child that starts the program, until it is reaped; then 0
  FileDescriptor m_outputPipe;
  FileDescriptor m_statusPipe;
  std::string m_output;
};

} // namespace qlx::platform
