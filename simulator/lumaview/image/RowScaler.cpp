// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/image/RowScaler.h"

#include "simulator/lumaview/image/ScaleKernels.h"

namespace sim::lumaview {

RowScaler::RowScaler(int channels, const Axis::Range& x, const Axis::Range& y)
    : m_channels(channels),
      m_x(x),
      m_y(y),
      m_row_samples(static_cast<size_t>(m_x.GetCount()) * static_cast<size_t>(channels)),
      m_kept(m_row_samples * static_cast<size_t>(m_y.GetTaps())),
      m_slots(static_cast<size_t>(m_y.GetTaps())),
      m_mixed(m_row_samples) {}

void RowScaler::Keep(int y, const uint8_t* row) {
  ScaleRow(row, m_channels, m_x, Slot(y));
}

const uint8_t* RowScaler::Mix(int target_row) {
  const int taps = m_y.GetTaps();
  for (int tap = 0; tap < taps; ++tap) {
    m_slots[static_cast<size_t>(tap)] = Slot(m_y.First(target_row) + tap);
  }
  MixRows(m_slots.data(), m_y.Weights(target_row), taps, static_cast<int>(m_row_samples), m_mixed.data());
  return m_mixed.data();
}

}  // namespace sim::lumaview
