// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qlx::platform {

/// One entry of a file dialog's list of types; the extension has no dot.
struct FileType {
  std::string description;
  std::string extension;
};

struct FileRequest {
  enum class Style { Save, Open };

  Style style = Style::Open;
  std::string title;
  std::string directory;          ///< where to start; empty: the dialog's own choice
  std::string fileName;           ///< proposed for saving
  std::vector<FileType> types;    ///< the first is the default one
  std::uintptr_t ownerWindow = 0; ///< native number of the window to stay in front of; 0 for none
};

/// A file dialog that never blocks its caller: asked for once, then polled from idle. At most one
/// dialog is open per selector. For the user-interface thread. Destroying the selector dismisses
/// the dialog.
class FileSelector {
 public:
  /// Full paths, as bytes that this system opens files by; empty when the user cancelled.
  using Paths = std::vector<std::string>;

  virtual ~FileSelector() = default;

  /// Shows the dialog; false when that is not possible or one is open.
  virtual bool open(const FileRequest& request) = 0;

  /// The answer, once; nothing while the dialog is open or none was asked for.
  virtual std::optional<Paths> poll() = 0;

  /// Whether the dialog last asked for turned out impossible, or was lost, in a poll(): no answer
  /// comes any more, and another one can be asked for.
  virtual bool hasFailed() const = 0;

  /// Dismisses the dialog, which then gives no answer.
  virtual void cancel() = 0;

 protected:
  FileSelector() = default;
  FileSelector(const FileSelector&) = default;
  FileSelector& operator=(const FileSelector&) = default;
};

/// The dialogs that this system's desktops have, the best one that works.
std::unique_ptr<FileSelector> desktopFileSelector();

} // namespace qlx::platform
