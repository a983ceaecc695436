// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_CONTROL_TYPEDCOMMANDS_H
#define SIMULATOR_TVSIM_CONTROL_TYPEDCOMMANDS_H

#include <vector>

#include "simulator/rpc/Binder.h"
#include "simulator/tvsim/control/ControlContext.h"

namespace sim::tvsim {

/// A method for each command of the engine, "command.InitPlayer" {url} for example: numbers as numbers, texts as texts.
/// The results are those of "engine.execute". `context` as for `ControlMethods`.
std::vector<rpc::MethodEntry> TypedCommands(ControlContext* context);

/// Sends a command and gives its answer to `reply`. `method` and `written` as for `Television::SendCommand`.
void SendCommand(Television& television, const char* method, std::string command,
                 const std::vector<std::string>& params, rpc::Reply reply, rpc::JsonText written = {});

}  // namespace sim::tvsim

#endif
