// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_MESSAGEHANDLER_H
#define SIMULATOR_RPC_MESSAGEHANDLER_H

#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string_view>

#include "simulator/rpc/Binder.h"
#include "simulator/rpc/Reply.h"
#include "simulator/rpc/Transport.h"

namespace sim::rpc {

/// Requests of a batch. Each of them may cost a reply that is many times as long as itself.
inline constexpr size_t kMaxBatch = 100;

/// A server's side of JSON-RPC 2.0: turns messages into calls of methods and sees to it that each request gets exactly
/// one reply and each notification none. Keeps nothing from message to message, so that one handler serves any number
/// of connections. Loop thread only.
class MessageHandler {
 public:
  /// `binder` outlives the handler.
  explicit MessageHandler(const Binder& binder) : m_binder(binder) {}

  /// Runs what `message` asks for, the requests of a batch one after the other. `sink` gets at most one message, now or
  /// when the last reply comes; it is released then, or at once where nothing is to be sent.
  void Handle(std::string_view message, std::shared_ptr<MessageSink> sink) const;

  /// The reply to a message that was longer than the transport allows.
  static void RefuseOversized(std::shared_ptr<MessageSink> sink);

 private:
  void HandleOne(const nlohmann::json& request, const std::shared_ptr<ReplyCollector>& collector) const;
  void Run(std::string_view name, const Params& params, Reply reply) const;

  const Binder& m_binder;
};

/// Starts `transport` as a connection to `handler`, which outlives it. A reply that is still owed keeps the transport
/// alive, so the owner may let go of it in `onClosed`.
void Serve(const std::shared_ptr<Transport>& transport, const MessageHandler& handler,
           std::function<void(const CloseReason&)> onClosed);

}  // namespace sim::rpc

#endif
