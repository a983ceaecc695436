// SPDX-License-Identifier: Apache-2.0
// The exported calls on windows.
#include "simulator/lumaview/api/Export.h"
#include "simulator/lumaview/api/Library.h"

using namespace sim::lumaview;

LUMAVIEW_EXPORT int lumaview_init_display(Window* window) {
  return Answer("lumaview_init_display", [&]() -> sim::Status {
    if (window == nullptr) {
      return sim::Error{kBadArgument, "the window is null"};
    }
    return GetLibrary().services.displays.Init(*window);
  });
}

LUMAVIEW_EXPORT int lumaview_destroy_display(Window* window) {
  return Answer("lumaview_destroy_display", [&]() -> sim::Status {
    if (window == nullptr) {
      return sim::Error{kBadArgument, "the window is null"};
    }
    return GetLibrary().services.displays.Destroy(*window);
  });
}
