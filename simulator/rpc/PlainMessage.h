// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_PLAINMESSAGE_H
#define SIMULATOR_RPC_PLAINMESSAGE_H

#include <optional>
#include <string_view>

namespace sim::rpc {

/// Where the parts of a message lie in its text, found in one pass and without building a document: that of a command
/// costs more than everything else that its way through a session takes. Good for as long as the text is.
struct PlainMessage {
  /// Each as JSON, as it stands; empty where it is missing. All but `params` are scalars.
  std::string_view jsonrpc, method, params, id, result;

  /// Nothing when the message is no object, has other members or one of them twice, or is not plain: see PlainReader.
  /// It may be right all the same, and is for the parser then.
  static std::optional<PlainMessage> Read(std::string_view text);

  /// Whether this is a request or a notification, and nothing is wrong with its form.
  bool IsCall() const;
  /// Whether this is the answer to a call, and no error.
  bool IsResult() const;
  /// Of a call.
  std::string_view MethodName() const { return method.substr(1, method.size() - 2); }
};

}  // namespace sim::rpc

#endif
