// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_MESSAGESINK_H
#define SIMULATOR_RPC_MESSAGESINK_H

#include <string_view>

namespace sim::rpc {

/// Where messages go to.
class MessageSink {
 public:
  virtual ~MessageSink() = default;

  /// Takes `message`, which holds no line end. False when it goes nowhere.
  virtual bool Send(std::string_view message) = 0;
};

}  // namespace sim::rpc

#endif
