// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_IMAGE_ROWSCALER_H
#define SIMULATOR_LUMAVIEW_IMAGE_ROWSCALER_H

#include <vector>

#include "simulator/lumaview/image/Axis.h"

namespace sim::lumaview {

/// Scales rows as they come: each is filtered along x at once, and as many of the results are kept as one target row
/// needs. Memory: target width x taps of the vertical filter.
class RowScaler {
 public:
  /// `channels`: bytes per pixel of all rows, 1 or 4.
  RowScaler(int channels, const Axis::Range& x, const Axis::Range& y);

  /// Whether rows need one readable pixel behind their end.
  bool ReadsBehind() const { return m_x.ReadsBehind(); }

  /// Takes source row `y`, the whole of it; rows come in order.
  /// Calls `emit(target_row, bytes)` for every visible target row that became complete.
  template <typename Emit>
  void Push(int y, const uint8_t* row, Emit&& emit) {
    if (!IsNeeded(y)) {
      return;
    }
    Keep(y, row);
    while (m_next < m_y.GetCount() && m_y.Last(m_next) <= y) {
      emit(m_next, Mix(m_next));
      ++m_next;
    }
  }

  bool IsComplete() const { return m_next == m_y.GetCount(); }

 private:
  bool IsNeeded(int y) const { return m_next < m_y.GetCount() && y >= m_y.First(m_next); }
  void Keep(int y, const uint8_t* row);
  const uint8_t* Mix(int target_row);
  int16_t* Slot(int y) { return &m_kept[static_cast<size_t>(y % m_y.GetTaps()) * m_row_samples]; }

  const int m_channels;
  const Axis m_x;
  const Axis m_y;
  const size_t m_row_samples;
  int m_next = 0;  ///< the target row to be completed next
  std::vector<int16_t> m_kept;
  std::vector<const int16_t*> m_slots;
  std::vector<uint8_t> m_mixed;
};

}  // namespace sim::lumaview

#endif
