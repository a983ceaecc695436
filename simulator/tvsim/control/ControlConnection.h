// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_CONTROL_CONTROLCONNECTION_H
#define SIMULATOR_TVSIM_CONTROL_CONTROLCONNECTION_H

#include <memory>
#include <string>

#include "simulator/rpc/MessageHandler.h"
#include "simulator/tvsim/control/Methods.h"
#include "simulator/tvsim/control/Rights.h"

namespace sim::tvsim {

/// One client of a session, on whatever transport. A client that does not read loses notifications, never replies, and
/// is told how many when it reads again; it holds up nobody else. Loop thread only.
class ControlConnection {
 public:
  /// `on_closed` is called once, and may release the connection.
  ControlConnection(ControlContext& context, Rights rights, std::shared_ptr<rpc::Transport> transport,
                    std::function<void()> on_closed);
  ~ControlConnection() { m_transport->Close(); }
  ControlConnection(const ControlConnection&) = delete;
  ControlConnection& operator=(const ControlConnection&) = delete;

  void Notify(const char* method, const rpc::JsonText& params);
  const Subscriptions& Wants() const { return m_subscriptions; }

 private:
  Subscriptions m_subscriptions;
  const rpc::Binder m_methods;
  const rpc::MessageHandler m_handler;
  const std::shared_ptr<rpc::Transport> m_transport;
  size_t m_unread = 0;  ///< notifications since the client had read everything
  size_t m_lost = 0;    ///< not sent since then
};

}  // namespace sim::tvsim

#endif
