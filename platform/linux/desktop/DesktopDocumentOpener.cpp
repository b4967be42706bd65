// SPDX-License-Identifier: ISC
#include "platform/linux/desktop/DesktopDocumentOpener.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace qlx::platform {
namespace {

/// On plain desktops the command stays until the reader is closed. One that has found no reader
/// says so sooner than this.
constexpr std::chrono::seconds kFailsWithin{5};

FileDescriptor openDocument(const std::string& path) {
  FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  struct stat status {};
  const bool ordinary = file && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
  return ordinary ? std::move(file) : FileDescriptor();
}

DocumentOpener::Outcome outcomeOf(int status) {
  constexpr int kNoMethod = 3;
  constexpr int kNoSuchCommand = 127;
  if (status == 0) return DocumentOpener::Outcome::Opened;
  const bool noProgram = status == kNoMethod || status == kNoSuchCommand;
  return noProgram ? DocumentOpener::Outcome::NoProgram : DocumentOpener::Outcome::Failed;
}

} // namespace

bool DesktopDocumentOpener::open(const std::string& path, std::uintptr_t ownerWindow) {
  if (m_underWay) return false;
  const auto file = std::make_shared<FileDescriptor>(openDocument(path));
  if (!*file) return false;
  m_underWay = true;
  m_path = path;
  PortalRequest::Call call;
  call.interface = "OpenURI";
  call.method = "OpenFile";
  call.handsOverFile = true;
  call.writeArguments = [ownerWindow, file](MessageWriter& arguments) {
    arguments.text(portalWindowName(ownerWindow));
    arguments.descriptor(file->get());
  };
  call.writeOptions = [](MessageWriter& /*options*/) {};
  m_request = PortalRequest::start(std::move(call));
  if (m_request == nullptr) startCommand();
  return true;
}

void DesktopDocumentOpener::startCommand() {
  m_command = DetachedCommand::start({"xdg-open", m_path}, DetachedCommand::Output::Discard);
  m_commandStart = std::chrono::steady_clock::now();
}

std::optional<DocumentOpener::Outcome> DesktopDocumentOpener::pollCommand() {
  if (!m_command) return Outcome::Failed;
  if (const auto result = m_command->poll()) return outcomeOf(result->status);
  const bool reading = std::chrono::steady_clock::now() - m_commandStart >= kFailsWithin;
  return reading ? std::optional(Outcome::Opened) : std::nullopt;
}

std::optional<DocumentOpener::Outcome> DesktopDocumentOpener::poll() {
  if (!m_underWay) return std::nullopt;
  std::optional<Outcome> outcome;
  if (m_request == nullptr) {
    outcome = pollCommand();
  } else {
    const PortalRequest::State state = m_request->poll();
    const bool done = state == PortalRequest::State::Answered;
    if (done && m_request->answer() != PortalRequest::Answer::Other) {
      outcome = Outcome::Opened; // or the user, asked for a reader, wanted none
    } else if (done || state == PortalRequest::State::Failed) {
      m_request = nullptr;
      startCommand();
    }
  }
  if (outcome) cancel();
  return outcome;
}

void DesktopDocumentOpener::cancel() {
  m_underWay = false;
  m_request = nullptr;
  m_command.reset();
}

} // namespace qlx::platform
