// SPDX-License-Identifier: Apache-2.0
/// What a row of the command table is made of.
#ifndef HOST_COMMANDTABLE_H
#define HOST_COMMANDTABLE_H

#include <span>
#include <string>
#include <string_view>

#include "host/CEmpEnginePicture.h"

namespace olm {

class CPictureAdapter;
struct Operation;

/// One command on its way: whom it is for and what it carries.
struct CommandCall {
  const Operation& operation;
  CEmpEnginePicture& engine;
  CPictureAdapter& adapter;
  std::string& result;
  const std::string& param1;
  const std::string& param2;
  const std::string& param3;
  const std::string& param4;
};

/// How a row ends. The frame writes the result of the first two; failures are logged as the name and " failed\n".
enum class Outcome {
  kDone,      ///< the integer 1
  kFailed,    ///< the line, and the integer 0
  kAnswered,  ///< the row has written its own result
};

/// What the frame does for a row before it runs.
enum class Param1 {
  kUnused,
  kNeeded,           ///< an empty first parameter is refused
  kNeededAndLogged,  ///< and logged, as text and as number
};

struct CommandRow {
  std::string_view name;
  Param1 param1;
  Outcome (*run)(const CommandCall& call);
};

/// All commands, in the order of comparison.
std::span<const CommandRow> CommandTable();

/// What `strtol` makes of the text: decimal, stops at the first other character, 0 without digits; no range check.
int Number(const std::string& text);

/// False after the line and the integer 0 that an empty first parameter is answered with.
bool RequireParam1(const CommandCall& call);

}  // namespace olm

#endif
