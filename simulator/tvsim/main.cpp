// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <clocale>

#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/command/Command.h"

namespace sim::tvsim {

std::span<const Subcommand> Subcommands() {
  static constexpr std::array kSubcommands = {
      Subcommand{"run", "Show pictures as an application would", &ConfigureRun},
      Subcommand{"exec", "Play a scenario: commands and what is expected of them", &ConfigureExec},
      Subcommand{"replay", "Play a recorded session again", &ConfigureReplay},
      Subcommand{"shell", "Type commands and see events as they come", &ConfigureShell},
      Subcommand{"serve", "A television in the browser", &ConfigureServe},
      Subcommand{"url", "Say where the browser finds a running session", &ConfigureUrl},
      Subcommand{"state", "Announce the application's state to a running session", &ConfigureState},
      Subcommand{"screenshot", "Write what a running session shows to a PNG file", &ConfigureScreenshot},
      Subcommand{"watch", "Show the events of a running session as they come", &ConfigureWatch},
      Subcommand{"fault", "Let calls of the libraries fail or hang, or events get lost, in a running session",
                 &ConfigureFault},
      Subcommand{"log", "Show the engine's log", &ConfigureLog},
      Subcommand{"doctor", "Say what this machine has for a session, and how to mend what is missing",
                 &ConfigureDoctor},
      Subcommand{"help", "Print the protocol, the manual page or a shell's completion", &ConfigureHelp},
  };
  return kSubcommands;
}

namespace {

constexpr const char* kExitStatus =
    "Exit status: 0 done; 1 the job failed (a picture, an expectation, the engine); 2 wrong use, or something is "
    "missing on this machine.";

int Main(int argc, char** argv) {
  CLI::App app("A television on the desk: gives the picture player engine a screen, runs it and watches it.", "tvsim");
  app.set_version_flag("--version", "tvsim " TVSIM_VERSION);
  app.require_subcommand(1);
  app.footer(kExitStatus);
  int status = kDone;
  std::function<int()> chosen;
  for (const Subcommand& subcommand : Subcommands()) {
    CLI::App* sub = app.add_subcommand(subcommand.name, subcommand.summary);
    sub->footer(kExitStatus);
    sub->final_callback([&chosen, run = subcommand.configure(*sub)] { chosen = run; });
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kNotReady;
  }
  status = chosen();
  return status;
}

}  // namespace
}  // namespace sim::tvsim

int main(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "");
  return sim::tvsim::Main(argc, argv);
}
