// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_SCREEN_SURFACE_H
#define SIMULATOR_LUMAVIEW_SCREEN_SURFACE_H

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>

#include "simulator/base/CHandle.h"
#include "simulator/base/Result.h"
#include "simulator/lumaview/screen/Frame.h"
#include "simulator/lumaview/screen/Painter.h"

namespace sim::lumaview {

/// The library's own child window on somebody else's window, with a connection of its own: what the owner draws
/// into the parent leaves the pictures alone, and when the parent dies nothing worse than X errors happens.
/// The child has the parent's size and is mapped with the first frame. One thread.
class Surface {
 public:
  /// What the server told since the last look.
  struct News {
    bool any = false;      ///< there was something; look again before waiting
    bool resized = false;  ///< `GetSize` has changed
    bool exposed = false;  ///< the content must be put again
    bool gone = false;     ///< the window or the connection is lost, for good
  };

  /// Connects to the server that DISPLAY names and makes the child. Errors: kDisplayFailed, kOutOfMemory.
  static Result<std::unique_ptr<Surface>> Open(xcb_window_t parent);
  ~Surface();
  Surface(const Surface&) = delete;
  Surface& operator=(const Surface&) = delete;

  /// Of the connection, for poll; also look at `HandleEvents` once before each wait.
  int GetFd() const { return xcb_get_file_descriptor(m_connection.get()); }
  /// Pixels, both sides at least 1.
  Size GetSize() const { return m_size; }
  const char* GetPainterName() const { return m_painter->GetName(); }

  News HandleEvents();
  bool CanPut() const { return m_painter->CanPut(); }
  /// Sends `frame`, which has the window's size. Returns the put's number, from 1 rising.
  Result<uint64_t> Put(const FramePtr& frame);
  /// All puts up to this number are on the screen.
  uint64_t GetCompleted() const { return m_painter->GetCompleted(); }
  /// Sends what is buffered and lets the server release frames that are gone.
  void Flush();

 private:
  using Connection = CHandle<xcb_connection_t, xcb_disconnect>;

  Surface(Connection connection, xcb_window_t parent) : m_connection(std::move(connection)), m_parent(parent) {}
  Status Prepare();
  Status MakeChild(uint8_t depth, xcb_visualid_t visual);
  void HandleEvent(const xcb_generic_event_t& event, News& news);
  void HandleError(const xcb_generic_error_t& error, News& news);

  const Connection m_connection;
  const xcb_window_t m_parent;
  xcb_window_t m_child = XCB_NONE;
  Size m_size;
  bool m_mapped = false;
  uint64_t m_puts = 0;
  std::unique_ptr<Painter> m_painter;
};

}  // namespace sim::lumaview

#endif
