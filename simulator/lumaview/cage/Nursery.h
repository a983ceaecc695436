// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_CAGE_NURSERY_H
#define SIMULATOR_LUMAVIEW_CAGE_NURSERY_H

#include <sys/types.h>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"

namespace sim::lumaview::cage {

/// The process that holds the decoders' libraries and makes the children that use them, so that a child costs a fork
/// and no loading. It never touches a picture. A keeper above it makes a new one when it dies.
struct Nursery {
  UniqueFd channel;  ///< takes kSpawn; closing it ends both processes and every child
  pid_t keeper = -1;
};

/// To be called while the process has one thread: what is forked is a copy of this process without its descriptors and
/// signal handlers. They end with the calling thread, also when that is killed. Errors: kOutOfMemory.
Result<Nursery> StartNursery();

}  // namespace sim::lumaview::cage

#endif
