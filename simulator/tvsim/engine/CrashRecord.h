// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_ENGINE_CRASHRECORD_H
#define SIMULATOR_TVSIM_ENGINE_CRASHRECORD_H

#include <optional>
#include <string>
#include <vector>

#include "simulator/base/Result.h"

namespace sim::tvsim {

/// What is kept of an engine that ended and should not have: a text file of its own, for people.
struct CrashRecord {
  std::string end;      ///< "signal 11 (Segmentation fault)"
  std::string command;  ///< that it was at; empty: none
  std::string picture;  ///< of the last command that named one; empty: none
  std::vector<std::string> log;
};

/// How many are kept; the oldest go.
inline constexpr size_t kKeptCrashRecords = 10;

/// The folder "tvsim" in XDG_STATE_HOME, or in ~/.local/state. Errors: neither is known.
Result<std::string> CrashFolder();

/// Returns the file. Errors: the folder cannot be made, or nothing can be written there.
Result<std::string> WriteCrashRecord(const CrashRecord& record);

/// The file written last, if there is any.
std::optional<std::string> NewestCrashRecord();

}  // namespace sim::tvsim

#endif
