// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_CLIENT_H
#define SIMULATOR_RPC_CLIENT_H

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/rpc/Answer.h"
#include "simulator/rpc/Transport.h"

namespace sim::rpc {

/// A client's side of JSON-RPC 2.0 on one connection. Loop thread only; callbacks run on the loop thread and may call
/// back into the client; only `onClosed` may release it.
class Client {
 public:
  using CallId = int64_t;
  using Clock = std::chrono::steady_clock;
  using OnAnswer = std::function<void(const Answer&)>;

  struct OpenCall {
    CallId id = 0;
    std::string method;
    JsonText params;
    OnAnswer onAnswer;
    Clock::time_point since;
  };

  struct Callbacks {
    /// `params`: an object, a list, or empty where there were none.
    std::function<void(const std::string& method, const JsonText& params)> onNotification;
    /// Once, after every open call was lost.
    std::function<void(const CloseReason&)> onClosed;
    /// Takes over a call that is lost with the connection; where this is empty the call fails with kConnectionLost.
    std::function<void(OpenCall)> onLost{};
  };

  /// Starts `transport`.
  Client(std::shared_ptr<Transport> transport, Callbacks callbacks);
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  /// `params`: an object or a list, or empty. `onAnswer` is called exactly once unless the client is released before;
  /// at once when the connection is closed already.
  CallId Call(std::string_view method, JsonText params, OnAnswer onAnswer);

  /// Fails an open call with `error`, because it took too long for example; a reply that still comes is thrown away.
  /// Nothing happens when the call was answered already.
  void Abandon(CallId id, const CallError& error);

  void Notify(std::string_view method, const JsonText& params);

  /// When the call was made that waits for its answer longest; nothing while none does.
  std::optional<Clock::time_point> OldestCall() const;

 private:
  void HandleMessage(std::string_view message);
  void HandleClosed(const CloseReason& reason);
  void Finish(CallId id, const Answer& answer);
  void Lose(OpenCall call, const std::string& reason);

  const std::shared_ptr<Transport> m_transport;
  const Callbacks m_callbacks;
  std::deque<OpenCall> m_open;  ///< oldest first
  CallId m_lastId = 0;
  bool m_closed = false;
};

}  // namespace sim::rpc

#endif
