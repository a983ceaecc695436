// SPDX-License-Identifier: Apache-2.0
/// A soft edge that travels over positions 0..1, as most soft effects do it.
#ifndef SIMULATOR_LUMAVIEW_EFFECT_SOFTEDGE_H
#define SIMULATOR_LUMAVIEW_EFFECT_SOFTEDGE_H

#include <algorithm>
#include <cmath>

#include "simulator/lumaview/effect/Frame.h"

namespace sim::lumaview {

/// At progress 0 every position of 0..1 still shows `from`, at 1 every one shows `to`, and small positions change
/// first. `softness`: how many positions the edge covers, above 0.
/// `scale` turns what a kernel calls a position into 0..1.
inline Edge AdvancingEdge(float progress, float softness, float scale) {
  return {progress * (1.0F + softness) / softness, -scale / softness};
}

/// As above, but large positions change first.
inline Edge RecedingEdge(float progress, float softness, float scale) {
  return {(progress * (1.0F + softness) - 1.0F) / softness, scale / softness};
}

/// Pixels [first, last) of a row.
struct Range {
  int first;
  int last;
};

/// What of a row of `width` lies between the coordinates `low` and `high`, with a margin for rounding and widened to
/// whole cache lines where the row allows that. Both may be infinite.
inline Range Enclose(float low, float high, int width) {
  constexpr int kLine = 16;  // pixels of a cache line
  const auto limit = static_cast<float>(width);
  const int first = static_cast<int>(std::clamp(low - 1.0F, 0.0F, limit)) / kLine * kLine;
  const int last = (static_cast<int>(std::clamp(high + 2.0F, 0.0F, limit)) + kLine - 1) / kLine * kLine;
  return {first, std::min(last, width)};
}

}  // namespace sim::lumaview

#endif
