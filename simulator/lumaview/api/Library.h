// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_API_LIBRARY_H
#define SIMULATOR_LUMAVIEW_API_LIBRARY_H

#include "simulator/lumaview/api/Handles.h"
#include "simulator/lumaview/api/Picture.h"
#include "simulator/lumaview/api/Services.h"
#include "simulator/lumaview/api/TransitionEffect.h"

namespace sim::lumaview {

/// The library of this process: made by the first call, never destroyed, so that threads which still run while the
/// process ends find everything in place.
struct Library {
  Services services;
  Handles<Picture> pictures;
  Handles<TransitionEffect> effects;
};
Library& GetLibrary();

/// The live handle, or kBadArgument.
Result<std::shared_ptr<Picture>> FindPicture(const void* record);
Result<std::shared_ptr<TransitionEffect>> FindEffect(const void* record);

/// Runs the body of one exported call: logs why it failed and returns its code, 0 for success. Nothing is thrown to
/// the caller, who may be C.
int Answer(const char* function, const std::function<Status()>& body);

}  // namespace sim::lumaview

#endif
