// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/PlainMessage.h"

#include "simulator/rpc/PlainReader.h"

namespace sim::rpc {
namespace {

std::string_view* MemberOf(PlainMessage& message, std::string_view name) {
  return name == "jsonrpc"  ? &message.jsonrpc
         : name == "method" ? &message.method
         : name == "params" ? &message.params
         : name == "id"     ? &message.id
         : name == "result" ? &message.result
                            : nullptr;
}

bool IsFlag(std::string_view json) {
  return json == "true" || json == "false";
}

}  // namespace

std::optional<PlainMessage> PlainMessage::Read(std::string_view text) {
  PlainMessage message;
  PlainReader reader(text);
  const bool isPlain = reader.TakeObject([&](std::string_view name) {
    std::string_view* member = MemberOf(message, name);
    if (member == nullptr || !member->empty()) {
      return false;
    }
    return member == &message.params ? reader.TakeValue(*member) : reader.TakeScalar(*member);
  });
  return isPlain && reader.IsAtEnd() ? std::optional(message) : std::nullopt;
}

bool PlainMessage::IsCall() const {
  const bool takesParams = params.empty() || params.front() == '{' || params.front() == '[';
  return jsonrpc == R"("2.0")" && method.starts_with('"') && takesParams && !IsFlag(id) && result.empty();
}

bool PlainMessage::IsResult() const {
  return !result.empty() && !id.empty() && method.empty() && params.empty();
}

}  // namespace sim::rpc
