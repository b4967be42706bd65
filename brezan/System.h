// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The few things that the command-line host asks of the operating system. Everything else in this
/// folder is portable.
namespace qlx::tools {

/// A loaded shared object, unloaded with the last copy's end. Throws std::runtime_error with the
/// loader's own words.
class SharedObject {
 public:
  explicit SharedObject(const std::filesystem::path& path);
  ~SharedObject();
  SharedObject(const SharedObject&) = delete;
  SharedObject& operator=(const SharedObject&) = delete;

  /// Null when there is no such symbol.
  void* symbol(const char* name) const;

 private:
  void* m_handle;
};

/// The running program's own file; empty when the system does not tell.
std::filesystem::path executablePath();

/// Folders in which hosts look for plug-ins, most particular first.
std::vector<std::filesystem::path> pluginFolders();

/// Those folders in the user's words.
std::string pluginFolderWords();

/// File name of the plug-in on this system.
std::string pluginFileName();

/// Main memory that this process occupies now, in bytes; nothing when the system does not tell.
std::optional<std::size_t> residentBytes();

/// Processor time that the calling thread has used, in seconds.
double threadCpuSeconds();

/// Keeps the calling thread on one of the processors that this process may use, counted from 0.
/// False when that cannot be had.
bool pinThread(int processor);

/// Sets a variable of this process's environment, for what is loaded from now on.
void setEnvironment(const std::string& name, const std::string& value);

/// From now on calls `note` with a number above 0 when the user or the system wants this program to
/// end (on Windows: Ctrl+C, Ctrl+Break, a console window that is closed, a shutdown), on any
/// thread or inside a signal handler. Signals that the caller had ignored stay so. A reader that
/// has gone and a limit of the file's size become errors of writing.
void watchForInterrupts(void (*note)(int));

/// Standard streams carry bytes and UTF-8, whatever the system makes of them otherwise.
void prepareStandardStreams();

/// A file descriptor to read the file's bytes from, -1 with errno when there is none.
int openForReading(const std::filesystem::path& path);

/// A file descriptor to write and read a file that goes with its last use, -1 with errno.
int openTemporaryFile();

/// True when standard error is a terminal that can redraw a line.
bool errorStreamIsTerminal();

/// Columns of that terminal, 80 when it does not tell.
int errorStreamColumns();

} // namespace qlx::tools
