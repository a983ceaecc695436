// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_SCREEN_SHMQUEUE_H
#define SIMULATOR_LUMAVIEW_SCREEN_SHMQUEUE_H

#include <xcb/shm.h>

#include <cstdint>
#include <deque>
#include <memory>

#include "simulator/lumaview/screen/Painter.h"

namespace sim::lumaview {

/// Puts from shared memory whose end the server has not told yet. What lies in a segment may not change before that.
class ShmQueue {
 public:
  explicit ShmQueue(const PaintTarget& target);

  /// Sends the picture of `size` that lies in `segment`; `held` lives until the server has read it.
  void Put(xcb_shm_seg_t segment, Size size, std::shared_ptr<const void> held, uint64_t put);
  void HandleEvent(const xcb_generic_event_t& event);

  size_t GetLength() const { return m_in_flight.size(); }
  uint64_t GetCompleted() const { return m_completed; }

 private:
  struct InFlight {
    xcb_shm_seg_t segment;
    std::shared_ptr<const void> held;
    uint64_t put;
  };

  const PaintTarget m_target;
  uint8_t m_completion_event = 0;
  std::deque<InFlight> m_in_flight;  ///< in the order of the server's answers
  uint64_t m_completed = 0;
};

/// Two or three frames at most are on their way: one being read, one waiting, so that drawing is never held up.
inline constexpr size_t kPutsInFlight = 2;

/// True when the server knows the extension in the given version or a later one.
Status RequireShm(xcb_connection_t* connection, unsigned int major, unsigned int minor);

}  // namespace sim::lumaview

#endif
