// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_CAGE_CHILD_H
#define SIMULATOR_LUMAVIEW_CAGE_CHILD_H

namespace sim::lumaview::cage {

/// The life of a process that decodes one picture: confines itself before it has seen a byte of it, then does what the
/// engine asks on `kChannelFd`, which with the standard ones is the only open descriptor, until that is closed.
[[noreturn]] void RunChild();

}  // namespace sim::lumaview::cage

#endif
