// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_CONTROL_TYPEDCOMMANDS_H
#define SIMULATOR_TVSIM_CONTROL_TYPEDCOMMANDS_H

#include <vector>

#include "simulator/rpc/Binder.h"
#include "simulator/tvsim/session/Television.h"

namespace sim::tvsim {

/// A method for each command of the engine, "command.InitPlayer" {url} for example: numbers as numbers, texts as texts.
/// The results are those of "engine.execute".
std::vector<rpc::MethodEntry> TypedCommands(Television& television);

}  // namespace sim::tvsim

#endif
