// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_CONTROL_METHODS_H
#define SIMULATOR_TVSIM_CONTROL_METHODS_H

#include <functional>
#include <vector>

#include "simulator/rpc/Binder.h"
#include "simulator/tvsim/control/ControlContext.h"
#include "simulator/tvsim/control/Rights.h"

namespace sim::tvsim {

/// The whole interface of a session, for one client: its checks, its description and its documentation are made of
/// this table. `describe` gives it as an OpenRPC document's list. All three outlive the methods. With null instead of
/// the first two the methods can be described, not called.
std::vector<rpc::MethodEntry> ControlMethods(ControlContext* context, Subscriptions* subscriptions,
                                             std::function<rpc::JsonText()> describe);

/// Those methods with a refusal in the place of each that `rights` do not allow.
std::vector<rpc::MethodEntry> Restricted(std::vector<rpc::MethodEntry> methods, Rights rights);

}  // namespace sim::tvsim

#endif
