// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_CAGE_PATHFILTER_H
#define SIMULATOR_LUMAVIEW_CAGE_PATHFILTER_H

namespace sim::lumaview::cage {

/// No path can be opened, made, changed or executed by this thread and what it starts, whatever the rights; open
/// descriptors keep working. Needs "no new privileges". False when the kernel has no landlock.
bool ForbidPaths();

}  // namespace sim::lumaview::cage

#endif
