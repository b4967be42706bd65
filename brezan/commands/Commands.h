// SPDX-License-Identifier: ISC
#pragma once

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace qlx::tools {

/// Each adds one command to the program. What a command finds wrong it throws as
/// std::runtime_error with a line for the user.
void addRenderCommand(CLI::App& program);
void addParamsCommand(CLI::App& program);
void addPresetsCommand(CLI::App& program);
void addInfoCommand(CLI::App& program);
void addBenchCommand(CLI::App& program);
void addOrganCommand(CLI::App& program);
void addPictureCommand(CLI::App& program);
void addReportCommand(CLI::App& program);
void addEditCommand(CLI::App& program);
void addScreenshotCommand(CLI::App& program);
void addManualCommand(CLI::App& program);
#ifdef QLX_INSTALL
void addInstallCommands(CLI::App& program);
#endif
#ifdef QLX_VALIDATE
void addValidateCommand(CLI::App& program);
#endif
#ifdef QLX_LIVE
void addLiveCommand(CLI::App& program);
#endif

/// The option --plugin, alike in every command that loads one.
void addPluginOption(CLI::App& command, std::string& plugin);

} // namespace qlx::tools
