// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_CONTROL_CONTROLCLIENT_H
#define SIMULATOR_TVSIM_CONTROL_CONTROLCLIENT_H

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "simulator/base/Result.h"
#include "simulator/rpc/Client.h"

namespace sim::tvsim {

/// A connection to the control socket of a running session. Its calls wait, running the default main context.
class ControlClient {
 public:
  using OnNotification = std::function<void(const std::string& method, const rpc::JsonText& params)>;

  /// Errors: no session of that name runs.
  static Result<std::unique_ptr<ControlClient>> Connect(const std::string& session,
                                                        OnNotification on_notification = {});

  rpc::Answer Call(const std::string& method, const rpc::JsonText& params);

  /// Hands notifications on until the session ends.
  void RunUntilClosed();

 private:
  ControlClient() = default;

  std::unique_ptr<rpc::Client> m_client;
  bool m_closed = false;
};

}  // namespace sim::tvsim

#endif
