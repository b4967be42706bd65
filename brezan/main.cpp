// SPDX-License-Identifier: ISC
#include "brezan/Interrupt.h"
#include "brezan/System.h"
#include "brezan/commands/Commands.h"

#include <iostream>

namespace qlx::tools {

namespace {

// What shells report for a program that Ctrl-C ended.
constexpr int kInterruptedStatus = 130;

int run(int argc, char** argv) {
  noteInterrupts();
  CLI::App program("brezan: plays sound through the rotary speaker plug-in, without a studio");
  program.require_subcommand(0, 1);
  program.footer("'brezan COMMAND --help' says more about each command.");
  addRenderCommand(program);
  addParamsCommand(program);
  addPresetsCommand(program);
  addInfoCommand(program);
  addBenchCommand(program);
  addOrganCommand(program);
  addPictureCommand(program);
  addReportCommand(program);
  addEditCommand(program);
  addScreenshotCommand(program);
  addManualCommand(program);
  try {
    program.parse(argc, argv);
    if (program.get_subcommands().empty()) throw CLI::RequiredError("A command");
  } catch (const CLI::Success& wanted) { // --help
    return program.exit(wanted);
  } catch (const CLI::ParseError& error) {
    std::cerr << "brezan: " << error.what() << "; see brezan --help\n";
    return 2;
  } catch (const Interrupted& stop) {
    std::cerr << "brezan: " << stop.what() << '\n';
    return kInterruptedStatus;
  } catch (const std::exception& error) {
    std::cerr << "brezan: " << error.what() << '\n';
    return 1;
  }
  return 0;
}

} // namespace

void addPluginOption(CLI::App& command, std::string& plugin) {
  command.add_option("--plugin", plugin,
                     "Plug-in file; by default " + pluginFileName() +
                         " beside this program, in $VST_PATH, ~/.vst, /usr/local/lib/vst, "
                         "/usr/lib/vst");
}

} // namespace qlx::tools

int main(int argc, char** argv) { return qlx::tools::run(argc, argv); }
