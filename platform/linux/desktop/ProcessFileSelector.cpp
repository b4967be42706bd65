// SPDX-License-Identifier: ISC
#include "platform/linux/desktop/ProcessFileSelector.h"

#include "platform/linux/desktop/FilePatterns.h"

namespace qlx::platform {
namespace {

constexpr int kChosen = 0;
constexpr int kCancelled = 1;

bool saves(const FileRequest& request) { return request.style == FileRequest::Style::Save; }

/// Folder and, for saving, name proposed.
std::string startingPath(const FileRequest& request) {
  return saves(request) ? request.directory + request.fileName : request.directory;
}

std::string patternList(const FileType& type) {
  const auto patterns = filePatterns(type);
  return patterns[0] + " " + patterns[1];
}

} // namespace

std::vector<std::string> zenityCommandLine(const FileRequest& request) {
  std::vector<std::string> words{"zenity", "--file-selection", "--modal",
                                 "--title=" + request.title};
  if (request.ownerWindow != 0) {
    words.push_back("--attach=" + std::to_string(request.ownerWindow));
  }
  if (saves(request)) words.insert(words.end(), {"--save", "--confirm-overwrite"});
  if (const std::string start = startingPath(request); !start.empty()) {
    words.push_back("--filename=" + start);
  }
  for (const FileType& type : request.types) {
    words.push_back("--file-filter=" + type.description + " | " + patternList(type));
  }
  return words;
}

std::vector<std::string> kdialogCommandLine(const FileRequest& request) {
  std::vector<std::string> words{"kdialog", "--title", request.title};
  if (request.ownerWindow != 0) {
    words.insert(words.end(), {"--attach", std::to_string(request.ownerWindow)});
  }
  words.insert(words.end(),
               {saves(request) ? "--getsavefilename" : "--getopenfilename", startingPath(request)});
  std::string filters;
  for (const FileType& type : request.types) {
    filters += (filters.empty() ? "" : "\n") + type.description + " (" + patternList(type) + ")";
  }
  words.push_back(std::move(filters));
  return words;
}

bool ProcessFileSelector::open(const FileRequest& request) {
  if (m_dialog) return false;
  m_failed = false;
  m_dialog = DetachedCommand::start(m_commandLine(request), DetachedCommand::Output::Keep);
  return m_dialog.has_value();
}

std::optional<FileSelector::Paths> ProcessFileSelector::poll() {
  if (!m_dialog) return std::nullopt;
  auto result = m_dialog->poll();
  if (!result) return std::nullopt;
  m_dialog.reset();
  std::string& path = result->output;
  if (path.ends_with('\n')) path.pop_back();
  if (result->status == kChosen && !path.empty()) return Paths{std::move(path)};
  if (result->status == kCancelled) return Paths();
  m_failed = true;
  return std::nullopt;
}

void ProcessFileSelector::cancel() {
  if (m_dialog) m_dialog->terminate();
  m_dialog.reset();
  m_failed = false;
}

} // namespace qlx::platform
