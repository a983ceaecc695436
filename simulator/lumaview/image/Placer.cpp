// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/image/Placer.h"

#include <algorithm>

namespace sim::lumaview {

Placer::Placer(ImageView area, Turn turn) : m_area(area), m_turn(turn) {
  if (!WritesInPlace()) {
    m_buffer.resize(static_cast<size_t>(GetStoredSize().width) * static_cast<size_t>(turn.transpose ? kStrip : 1));
  }
}

uint32_t* Placer::AreaRow(int row) const {
  return m_area.Row(m_turn.mirror_y ? m_area.height - 1 - row : row);
}

uint32_t* Placer::RowBuffer(int row) {
  if (WritesInPlace()) {
    return AreaRow(row);
  }
  const int slot = m_turn.transpose ? row % kStrip : 0;
  return m_buffer.data() + static_cast<ptrdiff_t>(slot) * GetStoredSize().width;
}

void Placer::Place(int row) {
  if (WritesInPlace()) {
    return;
  }
  if (!m_turn.transpose) {
    std::reverse_copy(m_buffer.begin(), m_buffer.end(), AreaRow(row));
  } else if (row % kStrip == kStrip - 1 || row == GetStoredSize().height - 1) {
    WriteStrip(row - row % kStrip, row % kStrip + 1);
  }
}

/// Stored rows [first_row, first_row + rows) are columns of the area.
void Placer::WriteStrip(int first_row, int rows) {
  const int length = GetStoredSize().width;
  const int column = m_turn.mirror_x ? m_area.width - first_row - rows : first_row;
  for (int i = 0; i < length; ++i) {
    uint32_t* to = AreaRow(i) + column;
    for (int row = 0; row < rows; ++row) {
      to[m_turn.mirror_x ? rows - 1 - row : row] = m_buffer[static_cast<size_t>(row * length + i)];
    }
  }
}

}  // namespace sim::lumaview
