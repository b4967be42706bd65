// SPDX-License-Identifier: ISC
#include "brezan/commands/Commands.h"

#include "brezan/Interrupt.h"
#include "brezan/StandardStreams.h"
#include "brezan/System.h"
#include "platform/Version.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>

namespace qlx::tools {

namespace {

// What shells report for a program that went because nobody reads on.
constexpr int kBrokenPipeStatus = 128 + 13; // 13 is SIGPIPE's number

void addHelpCommand(CLI::App& program) {
  CLI::App* command = program.add_subcommand("help", "Say more about a command");
  auto words = std::make_shared<std::vector<std::string>>();
  command->add_option("COMMAND", *words, "Such as: render, presets save");
  command->callback([&program, words] {
    const CLI::App* about = &program;
    std::string parents;
    for (const std::string& word : *words) {
      parents += (parents.empty() ? "" : " ") + about->get_name();
      about = about->get_subcommand(word); // throws for a word that is none
    }
    std::cout << about->help(parents);
  });
}

int parse(int argc, char** argv) {
  CLI::App program("brezan: plays sound through the rotary speaker plug-in, without a studio",
                   "brezan");
  program.set_version_flag("--version", "brezan " + std::string(platform::version()),
                           "Print the version and exit");
  program.require_subcommand(0, 1);
  program.footer("'brezan help COMMAND' says more about each command.");
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
#ifdef QLX_INSTALL
  addInstallCommands(program);
#endif
#ifdef QLX_VALIDATE
  addValidateCommand(program);
#endif
#ifdef QLX_LIVE
  addLiveCommand(program);
#endif
  addHelpCommand(program);
  try {
#ifdef QLX_LIVE
    // Session managers start programs without words.
    const char* manager = std::getenv("NSM_URL");
    if (argc == 1 && manager != nullptr && *manager != '\0')
      program.parse("live");
    else
#endif
      program.parse(argc, argv);
    if (program.get_subcommands().empty()) throw CLI::RequiredError("A command");
  } catch (const CLI::Success& wanted) { // --help
    return program.exit(wanted);
  } catch (const CLI::ParseError& error) {
    std::cerr << "brezan: " << error.what() << "; see brezan --help\n";
    return 2;
  } catch (const Interrupted& stop) {
    std::cerr << "brezan: " << stop.what() << '\n';
    return stop.status();
  } catch (const std::exception& error) {
    std::cerr << "brezan: " << error.what() << '\n';
    return 1;
  }
  return 0;
}

int run(int argc, char** argv) {
  prepareStandardStreams();
  noteInterrupts();
  StandardOutput output;
  const int status = parse(argc, argv);
  int error = 0;
  try {
    error = output.finish();
  } catch (const Interrupted& stop) {
    return stop.status();
  }
  if (error == EPIPE) return kBrokenPipeStatus;
  if (error == 0) return status;
  std::cerr << "brezan: cannot write to standard output: " << std::strerror(error) << '\n';
  return 1;
}

} // namespace

void addPluginOption(CLI::App& command, std::string& plugin) {
  command.add_option("--plugin", plugin,
                     "Plug-in file; by default " + pluginFileName() + " beside this program, in " +
                         pluginFolderWords());
}

} // namespace qlx::tools

int main(int argc, char** argv) { return qlx::tools::run(argc, argv); }
