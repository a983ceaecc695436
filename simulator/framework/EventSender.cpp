// SPDX-License-Identifier: Apache-2.0
#include "simulator/framework/EventSender.h"

#include <algorithm>
#include <string>
#include <thread>
#include <utility>

#include "simulator/base/Faults.h"
#include "simulator/base/LogStage.h"
#include "simulator/rpc/JsonText.h"

namespace sim::framework {
namespace {

struct EventName {
  int event;
  const char* name;
};
constexpr EventName kEventNames[] = {
    {0, "SUBTITLE"},
    {6, "RENDER_ERROR"},
    {8, "RENDER_COMPLETED"},
    {10, "DECODE_COMPLETED"},
};

const char* NameOf(int event) {
  const auto* found = std::ranges::find(kEventNames, event, &EventName::event);
  return found != std::end(kEventNames) ? found->name : "UNKNOWN";
}

}  // namespace

EventSender& EventSender::OfProcess() {
  static auto* const sender = new EventSender;  // outlives every thread that sends
  return *sender;
}

void EventSender::Connect(std::shared_ptr<rpc::Transport> transport) {
  const std::lock_guard lock(m_mutex);
  m_transport = std::move(transport);
}

void EventSender::Send(int event, std::string_view param1, std::string_view param2) {
  rpc::ObjectWriter params;
  params.Add("event", rpc::Number(event)).Add("name", rpc::Quote(NameOf(event)));
  params.Add("param1", rpc::Quote(param1)).Add("param2", rpc::Quote(param2));
  const std::string message = rpc::WriteRequest("engine.event", params.Take());
  const Fault fault = NextFault("event:" + std::to_string(event));
  if (fault.action == FaultAction::kDelay) {
    std::thread([this, message, delay = fault.delay] {
      std::this_thread::sleep_for(delay);
      SendNow(message);
    }).detach();  // this object outlives every thread
  } else if (fault.action != FaultAction::kDrop) {
    SendNow(message);
  }
}

/// Who hears of an event may read in the log how it came about.
void EventSender::SendNow(std::string_view message) {
  FlushLog();
  const std::lock_guard lock(m_mutex);
  if (m_transport != nullptr) {
    m_transport->Send(message);
  }
}

}  // namespace sim::framework
