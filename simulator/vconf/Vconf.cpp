// SPDX-License-Identifier: Apache-2.0
/// The platform's C interface; everything else of the library is hidden.
#pragma GCC visibility push(default)
#include "platform/vconf.h"
#include "simulator/vconf/include/vconf_simulator.h"
#pragma GCC visibility pop

#include "simulator/base/Faults.h"
#include "simulator/base/Log.h"
#include "simulator/base/SlowCall.h"
#include "simulator/vconf/Subscriptions.h"

namespace {

bool ShallFail(const char* call) {
  return sim::NextFaultOfCall(call).action == sim::FaultAction::kFail;
}

/// Never destroyed: a worker may still be in a callback while the process exits.
sim::vconf::Subscriptions& ProcessSubscriptions() {
  static auto* const subscriptions = new sim::vconf::Subscriptions;
  return *subscriptions;
}

}  // namespace

int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* user_data) {
  const sim::SlowCall slow("vconf", "vconf_notify_key_changed");
  if (ShallFail("vconf_notify_key_changed") || key == nullptr || callback == nullptr) {
    return -1;
  }
  const sim::Status added = ProcessSubscriptions().Add(key, callback, user_data);
  if (!added) {
    sim::Log(sim::LogLevel::kError, "vconf",
             "cannot report changes of " + std::string(key) + ": " + added.error().reason);
  }
  return added ? 0 : -1;
}

int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback) {
  const sim::SlowCall slow("vconf", "vconf_ignore_key_changed");
  return !ShallFail("vconf_ignore_key_changed") && key != nullptr && ProcessSubscriptions().Remove(key, callback) ? 0
                                                                                                                  : -1;
}

void vconf_stop_deliveries() {
  ProcessSubscriptions().Stop();
}
