// SPDX-License-Identifier: Apache-2.0
/// Faults that somebody wants of the simulator's libraries, to see what the engine and applications make of them.
///
/// A rule is a line "WHAT WHICH ACTION [VALUE]":
///
///     lumaview_parse 3 fail 7          the third call answers 7; without a VALUE -1
///     lumaview_decode 1 hang           the first call never returns
///     vconf_notify_key_changed * fail  every call fails
///     lumaview_destroy 2 delay 3000ms  the second call waits three seconds before it does its work
///     event:8 2 drop                   the second event 8 does not come
///     event:10 * delay 500ms           every event 10 comes half a second late
///     store * fail                     no key can be written, as on a full disk
///
/// Calls are counted from when the rules are given, over all processes of a session. The rules stand in the file that
/// OLM_FAULTS names, and count from its next call on when they change there.
#ifndef SIMULATOR_BASE_FAULTS_H
#define SIMULATOR_BASE_FAULTS_H

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/base/Result.h"

namespace sim {

enum class FaultAction { kNone, kFail, kHang, kDrop, kDelay };

struct Fault {
  FaultAction action = FaultAction::kNone;
  int value = -1;                      ///< of kFail
  std::chrono::milliseconds delay{0};  ///< of kDelay; else 0
};

struct FaultRule {
  std::string what;
  unsigned which = 0;  ///< from 1; 0: every one
  Fault fault;
};

/// Errors: the line is no rule; the reason says how one is written.
Result<FaultRule> ParseFaultRule(const std::string& line);

/// Puts `rules` in the place of those in `file`; none end all faults. Errors: a line is no rule, too many of them, or
/// the file cannot be written.
Status WriteFaultRules(const std::string& file, const std::vector<std::string>& rules);

/// What shall become of this call or event. Costs nothing without OLM_FAULTS, and with it a look at a file. Any thread.
Fault NextFault(std::string_view what);

/// As above; where the call shall be delayed it returns that much later, and where it shall hang it does not return.
Fault NextFaultOfCall(std::string_view what);

}  // namespace sim

#endif
