// SPDX-License-Identifier: Apache-2.0
/// The engine's commands as an application knows them: one table for the typed methods, the interface's description
/// and the completion of the shell.
#ifndef SIMULATOR_TVSIM_CONTROL_COMMANDTABLE_H
#define SIMULATOR_TVSIM_CONTROL_COMMANDTABLE_H

#include <array>
#include <span>
#include <string_view>

namespace sim::tvsim {

enum class ParamKind { kPath, kNumber, kText, kEffect };

struct CommandParam {
  const char* name;  ///< null: no such parameter
  ParamKind kind = ParamKind::kText;
  bool required = true;
};

struct EngineCommand {
  const char* name;
  const char* summary;
  std::array<CommandParam, 4> params;
};

/// The 24, in the order in which they are documented.
std::span<const EngineCommand> EngineCommands();

/// The row of that name, or null.
const EngineCommand* FindCommand(std::string_view name);

}  // namespace sim::tvsim

#endif
