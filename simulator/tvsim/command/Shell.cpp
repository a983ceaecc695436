// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/shell/Shell.h"

#include "simulator/tvsim/command/Command.h"

namespace sim::tvsim {

std::function<int()> ConfigureShell(CLI::App& app) {
  auto options = std::make_shared<SessionOptions>();
  AddSessionOptions(app, *options);
  return [options] { return RunInSession(*options, [](Television& television) { return Shell(television).Run(); }); };
}

}  // namespace sim::tvsim
