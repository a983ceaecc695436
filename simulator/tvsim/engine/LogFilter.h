// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_ENGINE_LOGFILTER_H
#define SIMULATOR_TVSIM_ENGINE_LOGFILTER_H

#include <string>

namespace sim::tvsim {

/// Which lines of the engine's log somebody wants to see. A line is
/// "[OLM][Function(123)] <colour>[Picture-EMP][Function (123)] text<reset>", or "[library] text" of the simulator's
/// own.
struct LogFilter {
  std::string function;    ///< only of this function; empty: of all
  std::string text;        ///< only with this text, colours not counted
  bool failures = false;   ///< only red and yellow lines: failures, warnings, traces of library calls and locks
  bool no_traces = false;  ///< without "Enter", "Leave" and the lines around each lock

  bool Wants(const std::string& line) const;
};

}  // namespace sim::tvsim

#endif
