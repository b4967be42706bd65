// SPDX-License-Identifier: ISC
#include "brezan/sound/PendingFile.h"

#include "brezan/Interrupt.h"
#include "brezan/StandardStreams.h"
#include "brezan/System.h"
#include "platform/TemporaryFile.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <io.h>
#include <stdexcept>

namespace qlx::tools {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void cannotWrite(const fs::path& target, const std::string& reason) {
  throw std::runtime_error("cannot write '" + target.string() + "': " + reason);
}

struct File {
  int number;
  explicit File(int opened) : number(opened) {}
  ~File() {
    if (number >= 0) _close(number);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
};

int openToWrite(const fs::path& path) {
  return _wopen(path.c_str(), _O_WRONLY | _O_TRUNC | _O_BINARY | _O_NOINHERIT);
}

} // namespace

bool isStandardOutput(const fs::path& target) { return target == "-"; }

bool isStream(const fs::path& target) {
  std::error_code error;
  return isStandardOutput(target) || fs::is_other(target, error);
}

PendingFile::PendingFile(fs::path target) : m_target(std::move(target)) {
  std::error_code error;
  if (fs::is_directory(m_target, error))
    throw std::runtime_error("'" + m_target.string() + "' is a folder");
  m_through = isStream(m_target);
  if (!m_through && fs::exists(m_target, error)) {
    m_target = fs::canonical(m_target, error); // a link stays
    if (error) cannotWrite(m_target, error.message());
    if ((fs::status(m_target, error).permissions() & fs::perms::owner_write) == fs::perms::none)
      cannotWrite(m_target, "it may only be read");
  }
  const fs::path folder = m_target.parent_path();
  const fs::path made = m_through ? fs::temp_directory_path() : folder;
  if (!made.empty() && !fs::is_directory(made, error))
    cannotWrite(m_target, "there is no folder '" + made.string() + "'");
  const std::string directory = made.empty() ? "" : (made / "").string();
  platform::removeAbandonedFiles(directory);
  m_part = std::make_unique<platform::TemporaryFile>(directory, false);
  if (!*m_part) cannotWrite(m_target, "its folder takes no new file");
}

PendingFile::~PendingFile() = default;

fs::path PendingFile::path() const { return m_part->path(); }

void PendingFile::copyThrough() const {
  const File from(openForReading(path()));
  const File to(isStandardOutput(m_target) ? _dup(_fileno(stdout)) : openToWrite(m_target));
  if (from.number < 0 || to.number < 0) cannotWrite(m_target, std::strerror(errno));
  const auto bytes = std::make_unique<std::array<char, 1 << 16>>();
  for (;;) {
    const int got = _read(from.number, bytes->data(), static_cast<unsigned>(bytes->size()));
    if (got < 0) cannotWrite(m_target, std::strerror(errno));
    if (got == 0) return;
    throwIfInterrupted();
    if (const int error = writeAll(to.number, {bytes->data(), static_cast<std::size_t>(got)});
        error != 0)
      cannotWrite(m_target, std::strerror(error));
  }
}

void PendingFile::commit() {
  throwIfInterrupted();
  if (m_through) return copyThrough(); // the end removes the copy
  if (!m_part->moveTo(m_target.string()))
    cannotWrite(m_target, "another program has it open, or its folder may not be written");
}

void writeFile(const fs::path& target, std::span<const char> bytes) {
  PendingFile pending(target);
  {
    const File file(openToWrite(pending.path()));
    if (file.number < 0) cannotWrite(target, std::strerror(errno));
    if (const int error = writeAll(file.number, bytes); error != 0)
      cannotWrite(target, std::strerror(error));
    if (_commit(file.number) != 0) cannotWrite(target, std::strerror(errno));
  }
  pending.commit();
}

} // namespace qlx::tools
