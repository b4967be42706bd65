// SPDX-License-Identifier: ISC
#include "platform/linux/desktop/PortalFileSelector.h"

#include "platform/linux/desktop/FilePatterns.h"

namespace qlx::platform {
namespace {

void writeFilter(MessageWriter& filters, const FileType& type) {
  constexpr std::uint32_t kNamePattern = 0;
  filters.structure([&type](MessageWriter& filter) {
    filter.text(type.description);
    filter.array("(us)", [&type](MessageWriter& patterns) {
      for (const std::string& pattern : filePatterns(type)) {
        patterns.structure([&pattern](MessageWriter& entry) {
          entry.number(kNamePattern);
          entry.text(pattern);
        });
      }
    });
  });
}

void writeOptions(MessageWriter& options, const FileRequest& request) {
  options.option("modal", "b", [](MessageWriter& value) { value.truth(true); });
  options.option("filters", "a(sa(us))", [&request](MessageWriter& value) {
    value.array("(sa(us))", [&request](MessageWriter& filters) {
      for (const FileType& type : request.types) writeFilter(filters, type);
    });
  });
  if (!request.directory.empty()) {
    options.option("current_folder", "ay",
                   [&request](MessageWriter& value) { value.pathBytes(request.directory); });
  }
  const bool nameable = dbus_validate_utf8(request.fileName.c_str(), nullptr) != FALSE;
  if (request.style == FileRequest::Style::Save && !request.fileName.empty() && nameable) {
    options.option("current_name", "s",
                   [&request](MessageWriter& value) { value.text(request.fileName); });
  }
}

} // namespace

bool PortalFileSelector::open(const FileRequest& request) {
  if (m_request != nullptr) return false;
  PortalRequest::Call call;
  call.interface = "FileChooser";
  call.method = request.style == FileRequest::Style::Save ? "SaveFile" : "OpenFile";
  call.writeArguments = [request](MessageWriter& arguments) {
    arguments.text(portalWindowName(request.ownerWindow));
    arguments.text(request.title);
  };
  call.writeOptions = [request](MessageWriter& options) { writeOptions(options, request); };
  m_request = PortalRequest::start(std::move(call));
  m_failed = false;
  return m_request != nullptr;
}

std::optional<FileSelector::Paths> PortalFileSelector::poll() {
  if (m_request == nullptr) return std::nullopt;
  const PortalRequest::State state = m_request->poll();
  if (state == PortalRequest::State::Failed) {
    m_request = nullptr;
    m_failed = true;
    return std::nullopt;
  }
  if (state != PortalRequest::State::Answered) return std::nullopt;
  // A dialog closed by its title bar is told apart from a cancelled one by some desktops only.
  const bool chosen = m_request->answer() == PortalRequest::Answer::Success;
  Paths paths = chosen ? m_request->paths() : Paths();
  m_request = nullptr;
  return paths;
}

void PortalFileSelector::cancel() {
  m_request = nullptr;
  m_failed = false;
}

} // namespace qlx::platform
