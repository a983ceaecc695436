// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_IMAGE_PLACER_H
#define SIMULATOR_LUMAVIEW_IMAGE_PLACER_H

#include <vector>

#include "simulator/lumaview/image/Image.h"
#include "simulator/lumaview/image/Turn.h"

namespace sim::lumaview {

/// Writes rows in stored orientation to where they stand upright. Columns are collected and written a strip at a time,
/// as writing single pixels down a window would miss the cache at each.
class Placer {
 public:
  /// `area`: the pixels to be covered, all of them; upright.
  Placer(ImageView area, Turn turn);

  /// The size of the rows that fit: the area's, before the turn.
  Size GetStoredSize() const { return m_turn.Apply(m_area.GetSize()); }

  /// One stored row's length of pixels to be written; the next `Place` puts them where they belong.
  uint32_t* RowBuffer(int row);
  /// Places the row whose buffer was asked for last. Rows come in order, each once.
  void Place(int row);

 private:
  static constexpr int kStrip = 16;  ///< 16 pixels are one cache line

  bool WritesInPlace() const { return !m_turn.transpose && !m_turn.mirror_x; }
  uint32_t* AreaRow(int row) const;
  void WriteStrip(int first_row, int rows);

  const ImageView m_area;
  const Turn m_turn;
  std::vector<uint32_t> m_buffer;
};

}  // namespace sim::lumaview

#endif
