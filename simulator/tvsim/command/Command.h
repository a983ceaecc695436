// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_COMMAND_COMMAND_H
#define SIMULATOR_TVSIM_COMMAND_COMMAND_H

#include <CLI/CLI.hpp>
#include <functional>
#include <span>

#include "simulator/tvsim/session/Session.h"

namespace sim::tvsim {

/// One subcommand. `configure` gives `app` its options and returns what runs it once they are parsed; that returns the
/// exit status.
struct Subcommand {
  const char* name;
  const char* summary;
  std::function<int()> (*configure)(CLI::App& app);
};

/// All of them, in the order in which the help shows them.
std::span<const Subcommand> Subcommands();

std::function<int()> ConfigureRun(CLI::App& app);
std::function<int()> ConfigureExec(CLI::App& app);
std::function<int()> ConfigureFault(CLI::App& app);
std::function<int()> ConfigureHelp(CLI::App& app);
std::function<int()> ConfigureReplay(CLI::App& app);
std::function<int()> ConfigureServe(CLI::App& app);
std::function<int()> ConfigureUrl(CLI::App& app);
std::function<int()> ConfigureState(CLI::App& app);
std::function<int()> ConfigureScreenshot(CLI::App& app);
std::function<int()> ConfigureShell(CLI::App& app);
std::function<int()> ConfigureWatch(CLI::App& app);
std::function<int()> ConfigureLog(CLI::App& app);
std::function<int()> ConfigureDoctor(CLI::App& app);

/// The options of every subcommand that starts a session. `options` lives as long as `app`.
void AddSessionOptions(CLI::App& app, SessionOptions& options);

/// --session, of the subcommands that talk to a running one.
void AddSessionName(CLI::App& app, std::string& name);

}  // namespace sim::tvsim

#endif
