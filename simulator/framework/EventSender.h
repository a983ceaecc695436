// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_FRAMEWORK_EVENTSENDER_H
#define SIMULATOR_FRAMEWORK_EVENTSENDER_H

#include <memory>
#include <mutex>
#include <string_view>

#include "simulator/rpc/Transport.h"

namespace sim::framework {

/// Takes the engine's events to the application. Any thread; never blocks, whoever does not read them.
class EventSender {
 public:
  static EventSender& OfProcess();

  /// Events go to `transport` from now on; to nobody while it is null.
  void Connect(std::shared_ptr<rpc::Transport> transport);

  /// Texts that are not UTF-8 arrive with U+FFFD in the place of the foreign bytes.
  void Send(int event, std::string_view param1, std::string_view param2);

 private:
  void SendNow(std::string_view message);

  std::mutex m_mutex;
  std::shared_ptr<rpc::Transport> m_transport;
};

}  // namespace sim::framework

#endif
