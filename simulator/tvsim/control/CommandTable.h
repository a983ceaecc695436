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
  const char* summary = "";
  bool required = true;
};

enum class ResultKind {
  kDone,        ///< 1, or 0 when it failed
  kSize,        ///< "640*480", or 0
  kText,        ///< a text, or 0
  kNumber,      ///< an integer
  kTextOrZero,  ///< the text 1, or the integer 0
};

struct EngineCommand {
  const char* name;
  const char* summary;
  std::array<CommandParam, 4> params;
  ResultKind result;
  const char* events;          ///< the events that follow; empty: none
  const char* example_params;  ///< a JSON object
  const char* example_result;
};

/// The 24, in the order in which they are documented.
std::span<const EngineCommand> EngineCommands();

/// The row of that name, or null.
const EngineCommand* FindCommand(std::string_view name);

}  // namespace sim::tvsim

#endif
