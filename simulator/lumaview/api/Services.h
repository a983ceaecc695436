// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_API_SERVICES_H
#define SIMULATOR_LUMAVIEW_API_SERVICES_H

#include "simulator/lumaview/animate/Clock.h"
#include "simulator/lumaview/animate/Displays.h"
#include "simulator/lumaview/animate/EffectChooser.h"
#include "simulator/lumaview/picture/FrameCache.h"
#include "simulator/lumaview/picture/Reporter.h"
#include "simulator/lumaview/picture/WorkerPool.h"

namespace sim::lumaview {

/// Four pictures for a window of 1920 x 1080, or one for 3840 x 2160.
inline constexpr size_t kCacheBytes = 36u << 20;
/// The picture that is wanted and the one prepared for the time after it.
inline constexpr size_t kDecodeThreads = 2;

/// What all handles share. The order is that of making; the threads end in the reverse order.
struct Services {
  explicit Services(const View& first_view);

  const View first_view;  ///< how a new picture is looked at
  SteadyClock clock;
  EffectChooser chooser;
  FrameCache cache{kCacheBytes};
  Reporter reporter;
  WorkerPool pool{kDecodeThreads};
  Displays displays{pool, clock};
};

/// `error` with a reason that begins with the path: "path: reason".
Error WithPath(const std::string& path, const Error& error);
/// Writes "[lumaview] path: reason", for failures in the background; those of a call are logged where it answers.
void LogFailure(const std::string& path, const Error& error);

}  // namespace sim::lumaview

#endif
