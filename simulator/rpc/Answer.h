// SPDX-License-Identifier: Apache-2.0
/// What a call ends in: a result or an error.
#ifndef SIMULATOR_RPC_ANSWER_H
#define SIMULATOR_RPC_ANSWER_H

#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "simulator/rpc/JsonText.h"

namespace sim::rpc {

/// The numbers that JSON-RPC 2.0 fixes.
inline constexpr int kParseError = -32700;
inline constexpr int kInvalidRequest = -32600;
inline constexpr int kMethodNotFound = -32601;
inline constexpr int kInvalidParams = -32602;
inline constexpr int kInternalError = -32603;

/// Ours, out of the range that JSON-RPC 2.0 leaves to servers.
inline constexpr int kConnectionLost = -32000;

struct CallError {
  int code = kInternalError;
  std::string message;  ///< one sentence without a full stop
  JsonText data{};      ///< more for a program to read; left out of the reply while it is empty
};

/// Where an error came about and what to do about it; empty ones are left out.
struct ErrorPlace {
  std::string_view stage;  ///< "message", "method", "parameters", "rights", "engine", "session"
  std::string_view method{};
  std::string_view command{};
  std::string_view path{};
  std::string_view hint{};  ///< one sentence without a full stop
};

/// As an error's data.
JsonText DataOf(const ErrorPlace& place);

using Answer = std::variant<JsonText, CallError>;

inline Answer Success(JsonText result) {
  return Answer(std::move(result));
}
inline Answer Failure(int code, std::string message) {
  return Answer(CallError{code, std::move(message)});
}
inline Answer Failure(int code, std::string message, const ErrorPlace& place) {
  return Answer(CallError{code, std::move(message), DataOf(place)});
}

}  // namespace sim::rpc

#endif
