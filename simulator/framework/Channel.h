// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_FRAMEWORK_CHANNEL_H
#define SIMULATOR_FRAMEWORK_CHANNEL_H

#include <glib.h>

#include <memory>

#include "simulator/base/Result.h"
#include "simulator/rpc/Transport.h"

namespace sim::framework {

/// The line on which the application's commands come: the inherited socket whose number stands in OLM_CHANNEL_FD, or
/// standard input and output.
///
/// Standard output is kept for the protocol alone: what anybody else in the process prints there goes to standard
/// error from now on.
Result<std::shared_ptr<rpc::Transport>> OpenChannel(GMainContext* context);

}  // namespace sim::framework

#endif
