// SPDX-License-Identifier: ISC
#include "presets/panel/PresetFileDialog.h"

#include "platform/Files.h"

namespace qlx::presets {
namespace {

using Style = platform::FileRequest::Style;

platform::FileType fileType(Scope scope) {
  if (scope == Scope::Preset) return {"QLX Preset", "qlx"};
  return {"QLX Bank", "qlb"};
}

std::string title(const FileTask& task) {
  std::string text = task.style == Style::Save ? "Save " : "Load ";
  text += task.scope == Scope::Preset ? "preset" : "bank";
  if (task.style == Style::Open && task.otherOrder) text += " (endian-reversed)";
  return text;
}

std::string& fileName(FileLocations& locations, Scope scope) {
  return scope == Scope::Preset ? locations.presetFileName : locations.bankFileName;
}

} // namespace

void PresetFileDialog::ask(const FileTask& task, const FileLocations& locations,
                           std::uintptr_t ownerWindow) {
  if (!m_selector || m_task) return;
  platform::FileRequest request;
  request.style = task.style;
  request.title = title(task);
  request.directory = locations.presetDirectory;
  if (task.style == Style::Save) {
    FileLocations proposed = locations;
    request.fileName = fileName(proposed, task.scope);
  }
  request.types = {fileType(task.scope)};
  request.ownerWindow = ownerWindow;
  if (m_selector->open(request)) m_task = task;
}

std::optional<PresetFileDialog::Choice> PresetFileDialog::poll(FileLocations& locations) {
  if (!m_task) return std::nullopt;
  const auto paths = m_selector->poll();
  if (m_selector->hasFailed()) m_task.reset();
  if (!paths) return std::nullopt;
  const FileTask task = *m_task;
  m_task.reset();
  if (paths->size() != 1 || paths->front().empty()) return std::nullopt;

  auto [directory, name] = platform::splitPath(paths->front());
  Choice choice{task, directory + name};
  platform::changeDirectory(directory);
  locations.presetDirectory = std::move(directory);
  fileName(locations, task.scope) = std::move(name);
  return choice;
}

void PresetFileDialog::dismiss() {
  if (m_task) m_selector->cancel();
  m_task.reset();
}

} // namespace qlx::presets
