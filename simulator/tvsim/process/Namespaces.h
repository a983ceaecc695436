// SPDX-License-Identifier: Apache-2.0
/// A private place for an X server on ":0", however many others there are: own mounts (the X socket folder), network
/// (clients try the abstract socket first), and process ids (whatever is started inside ends with it).
#ifndef SIMULATOR_TVSIM_PROCESS_NAMESPACES_H
#define SIMULATOR_TVSIM_PROCESS_NAMESPACES_H

#include "simulator/base/Result.h"

namespace sim::tvsim {

/// Whether this machine lets this user make such a place. Tried in a child process; takes some milliseconds.
bool NamespacesAllowed();

/// Leaves the machine's namespaces; the next child of this process is the first process of the new ones. Called once,
/// before any thread exists. An ordinary user becomes root of a user namespace.
Status LeaveNamespaces();

/// In that first process: mounts /proc and an X socket folder of its own, and brings the loopback interface up.
Status FurnishNamespaces();

}  // namespace sim::tvsim

#endif
