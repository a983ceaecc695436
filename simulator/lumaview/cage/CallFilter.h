// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_CAGE_CALLFILTER_H
#define SIMULATOR_LUMAVIEW_CAGE_CALLFILTER_H

namespace sim::lumaview::cage {

/// From now on this thread and what it starts can make the system calls of decoding and no others: read what is open,
/// take memory, start and join threads, talk on the channel. Looking for a file is answered with "permission denied",
/// as libraries look for many; anything else ends the process. Needs "no new privileges". False when the kernel or the
/// build has no seccomp.
bool ForbidCalls();

}  // namespace sim::lumaview::cage

#endif
