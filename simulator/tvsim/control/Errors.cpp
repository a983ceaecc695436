// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/Errors.h"

#include <algorithm>
#include <cassert>

namespace sim::tvsim {
namespace {

constexpr ControlError kErrors[] = {
    {rpc::kParseError, "the message is not JSON, or nested deeper than 64 levels", "message", "send one JSON value"},
    {rpc::kInvalidRequest, "the message is no request, longer than 1 MiB, or a batch of more than 100", "message",
     "send {\"jsonrpc\":\"2.0\",\"method\":...,\"params\":...,\"id\":...}"},
    {rpc::kMethodNotFound, "there is no such method, or the engine has no such command", "method",
     "rpc.discover lists the methods and commands"},
    {rpc::kInvalidParams, "a parameter is missing, unknown or of another type", "parameters",
     "rpc.discover lists what each method takes"},
    {rpc::kInternalError, "something went wrong that should not", "engine", "read the engine's log"},
    {rpc::kConnectionLost, "the engine has ended before it answered", "engine",
     "a new engine is started; begin again with InitPlayer"},
    {kNoAnswerInTime, "the engine has not answered in time and was ended", "engine",
     "a new engine is started; begin again with InitPlayer"},
    {kSessionFailed, "the session did not do what was asked", "session", "the message says why"},
    {kForbidden, "this client may only look on", "rights", "use the address with the token that controls"},
};

const ControlError* Find(int code) {
  const auto found = std::ranges::find(kErrors, code, &ControlError::code);
  return found == std::end(kErrors) ? nullptr : found;
}

}  // namespace

std::span<const ControlError> ControlErrors() {
  return kErrors;
}

std::vector<rpc::ErrorKind> ErrorsOf(std::initializer_list<int> codes) {
  std::vector<rpc::ErrorKind> kinds;
  for (const int code : codes) {
    assert(Find(code) != nullptr);
    kinds.push_back({code, Find(code)->meaning});
  }
  return kinds;
}

rpc::CallError MakeError(int code, std::string message, const std::string& command, const std::string& path) {
  const ControlError* error = Find(code);
  const rpc::ErrorPlace place{.stage = error != nullptr ? error->stage : "engine",
                              .command = command,
                              .path = path,
                              .hint = error != nullptr ? error->hint : "read the engine's log"};
  return {code, std::move(message), rpc::DataOf(place)};
}

rpc::Answer WithPlace(const rpc::Answer& answer, const std::string& command, const std::string& path) {
  const auto* error = std::get_if<rpc::CallError>(&answer);
  return error != nullptr ? rpc::Answer(MakeError(error->code, error->message, command, path)) : answer;
}

}  // namespace sim::tvsim
