// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/ControlConnection.h"

#include "simulator/tvsim/control/Notifications.h"

namespace sim::tvsim {
namespace {

/// A slide show sends two a picture: who has not read a thousand is not there.
constexpr size_t kMostUnread = 1000;

}  // namespace

ControlConnection::ControlConnection(ControlContext& context, Rights rights, std::shared_ptr<rpc::Transport> transport,
                                     std::function<void()> on_closed)
    : m_methods(
          Restricted(ControlMethods(&context, &m_subscriptions, [this] { return m_methods.Describe(); }), rights)),
      m_handler(m_methods),
      m_transport(std::move(transport)) {
  rpc::Serve(m_transport, m_handler, [on_closed = std::move(on_closed)](const rpc::CloseReason&) { on_closed(); });
}

void ControlConnection::Notify(const char* method, const rpc::JsonText& params) {
  if (m_transport->Drain(std::chrono::milliseconds(0))) {
    m_unread = 0;
  }
  if (m_unread >= kMostUnread) {
    ++m_lost;
    return;
  }
  if (m_lost > 0) {
    const auto count = static_cast<int64_t>(std::exchange(m_lost, 0));
    m_transport->Send(rpc::WriteRequest(kLostMethod, rpc::ObjectWriter().Add("count", rpc::Number(count)).Take()));
  }
  ++m_unread;
  m_transport->Send(rpc::WriteRequest(method, params));
}

}  // namespace sim::tvsim
