// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace qlx::platform {

/// Opens documents with the programs that the desktop has for them. Never blocks its caller: asked
/// for once, then polled from idle. At most one request is under way. For the user-interface
/// thread.
class DocumentOpener {
 public:
  enum class Outcome {
    Opened,
    NoProgram, ///< the desktop knows no program for this type of file
    Failed,    ///< no such file, or anything else
  };

  virtual ~DocumentOpener() = default;

  /// @param path full path, as bytes that this system opens files by
  /// @param ownerWindow native number of the window that asks; 0 for none
  /// @return false when that is not possible or a request is under way
  virtual bool open(const std::string& path, std::uintptr_t ownerWindow) = 0;

  /// How it went, once; nothing before that is known.
  virtual std::optional<Outcome> poll() = 0;

  /// Nobody waits for the outcome any more; what has been started goes on.
  virtual void cancel() = 0;

 protected:
  DocumentOpener() = default;
  DocumentOpener(const DocumentOpener&) = default;
  DocumentOpener& operator=(const DocumentOpener&) = default;
};

/// The way of this system's desktops.
std::unique_ptr<DocumentOpener> desktopDocumentOpener();

} // namespace qlx::platform
