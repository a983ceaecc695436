// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_ANIMATE_BANDS_H
#define SIMULATOR_LUMAVIEW_ANIMATE_BANDS_H

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "simulator/lumaview/image/Image.h"

namespace sim::lumaview {

/// Draws the rows of a frame: in one go where one core is fast enough for the frame rate, else in two bands at once,
/// the second on a thread that sleeps between the frames. One caller.
class Bands {
 public:
  /// Rows [first, last).
  using Draw = std::function<void(int first, int last)>;

  Bands() = default;
  ~Bands();
  Bands(const Bands&) = delete;
  Bands& operator=(const Bands&) = delete;

  /// Calls `draw` for all rows of `size`; each row is drawn once. Returns when all are.
  void Run(Size size, const Draw& draw);

 private:
  void Help();

  std::thread m_thread;  ///< started with the first large frame
  std::mutex m_mutex;
  std::condition_variable m_changed;
  const Draw* m_draw = nullptr;  ///< of the band that waits or is being drawn
  int m_first = 0;
  int m_last = 0;
  bool m_ending = false;
};

}  // namespace sim::lumaview

#endif
