// SPDX-License-Identifier: Apache-2.0
/// The errors of the control interface: numbers, what they mean and what to do.
#ifndef SIMULATOR_TVSIM_CONTROL_ERRORS_H
#define SIMULATOR_TVSIM_CONTROL_ERRORS_H

#include <initializer_list>
#include <span>
#include <string>
#include <vector>

#include "simulator/rpc/Binder.h"
#include "simulator/tvsim/engine/Engine.h"

namespace sim::tvsim {

/// Ours, in the range that JSON-RPC 2.0 leaves to servers; kConnectionLost and kNoAnswerInTime come before them.
inline constexpr int kSessionFailed = -32002;  ///< the session did not do what was asked
inline constexpr int kForbidden = -32003;      ///< the client may only look on

struct ControlError {
  int code;
  const char* meaning;
  const char* stage;  ///< as the error's data name it
  const char* hint;
};

/// All of them.
std::span<const ControlError> ControlErrors();

/// Those of the table, for a method's notes.
std::vector<rpc::ErrorKind> ErrorsOf(std::initializer_list<int> codes);

/// Of that code out of the table, with this message and its place.
rpc::CallError MakeError(int code, std::string message, const std::string& command = "", const std::string& path = "");

/// The same answer; an error names the command and the path it was about, its stage and what to do.
rpc::Answer WithPlace(const rpc::Answer& answer, const std::string& command, const std::string& path);

}  // namespace sim::tvsim

#endif
