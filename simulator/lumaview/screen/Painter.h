// SPDX-License-Identifier: Apache-2.0
/// The ways to get a frame into a window, best first: memory that the server maps by its descriptor, System V shared
/// memory, pixels sent through the connection. One thread, that of the surface.
#ifndef SIMULATOR_LUMAVIEW_SCREEN_PAINTER_H
#define SIMULATOR_LUMAVIEW_SCREEN_PAINTER_H

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>

#include "simulator/base/Result.h"
#include "simulator/lumaview/screen/Frame.h"
#include "simulator/lumaview/screen/PixelFormat.h"

namespace sim::lumaview {

/// Where frames go.
struct PaintTarget {
  xcb_connection_t* connection = nullptr;  ///< borrowed; outlives the painter
  xcb_window_t window = XCB_NONE;
  xcb_gcontext_t gc = XCB_NONE;
  uint8_t depth = 0;
  PixelFormat format;
};

class Painter {
 public:
  virtual ~Painter() = default;

  /// False while every buffer is still being read by the server.
  virtual bool CanPut() const = 0;
  /// Sends `frame` to the window's upper left corner and keeps it until the server has read it. Not flushed.
  /// `put`: the caller's rising number, from 1.
  virtual Status Put(const FramePtr& frame, uint64_t put) = 0;
  /// Looks at an event of the connection for what concerns a put.
  virtual void HandleEvent(const xcb_generic_event_t& event) = 0;
  /// Looks for answers that are not events.
  virtual void Poll() {}
  /// Releases what the server still holds of frames that are gone.
  virtual void Sweep() {}
  /// The number of the put up to which all are on the screen.
  virtual uint64_t GetCompleted() const = 0;
  virtual const char* GetName() const = 0;
};

using PainterResult = Result<std::unique_ptr<Painter>>;
PainterResult CreateMemfdPainter(const PaintTarget& target);
PainterResult CreateSysvPainter(const PaintTarget& target);
PainterResult CreateChunkPainter(const PaintTarget& target);

/// The best that works here, or the one that LUMAVIEW_PUT names ("memfd", "sysv", "chunks"; "auto" = the best).
PainterResult CreatePainter(const PaintTarget& target);

}  // namespace sim::lumaview

#endif
