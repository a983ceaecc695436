// SPDX-License-Identifier: Apache-2.0
/// The window that a show bench plays in, and what it shows.
#ifndef BENCH_SHOW_SCREEN_H
#define BENCH_SHOW_SCREEN_H

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "simulator/lumaview/image/Image.h"

namespace bench {

/// Pixels of the window, 0x00RRGGBB, rows without gaps.
using Shot = std::vector<uint32_t>;

/// An X server's screen with one window over all of it. Ends the process where there is no X server, or one that shares
/// no memory.
class ShowScreen {
 public:
  explicit ShowScreen(sim::lumaview::Size size);
  ~ShowScreen();
  ShowScreen(const ShowScreen&) = delete;
  ShowScreen& operator=(const ShowScreen&) = delete;

  sim::lumaview::Size GetSize() const { return m_size; }
  xcb_window_t GetWindow() const { return m_window; }
  /// What the window shows, taken through shared memory so that it hardly disturbs the show.
  Shot Capture();

 private:
  void MakeWindow();
  void ShareMemory();

  const sim::lumaview::Size m_size;
  const size_t m_bytes;
  xcb_connection_t* const m_connection;
  xcb_window_t m_window = 0;
  xcb_shm_seg_t m_segment = 0;
  const uint32_t* m_pixels = nullptr;
};

}  // namespace bench

#endif
