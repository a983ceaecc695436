// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_CONTROL_METHODS_H
#define SIMULATOR_TVSIM_CONTROL_METHODS_H

#include <functional>
#include <vector>

#include "simulator/rpc/Binder.h"
#include "simulator/tvsim/session/Television.h"

namespace sim::tvsim {

/// The session did not do what was asked; the message says why.
inline constexpr int kSessionFailed = -32002;

/// What one client has asked to be told.
struct Subscriptions {
  bool log = false;
};

/// The methods of the control socket for one client, on `television`. `describe` gives them as an OpenRPC document's
/// list. All three outlive the methods.
std::vector<rpc::MethodEntry> ControlMethods(Television& television, Subscriptions& subscriptions,
                                             std::function<rpc::JsonText()> describe);

}  // namespace sim::tvsim

#endif
