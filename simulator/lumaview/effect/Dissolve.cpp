// SPDX-License-Identifier: Apache-2.0
/// `to` shows through grain by grain, each pixel at its own moment.
#include "simulator/lumaview/effect/Pixel.h"
#include "simulator/lumaview/effect/SoftEdge.h"

namespace sim::lumaview {
namespace {

/// Part of the whole time that one pixel takes to change, 0..1.
constexpr float kSoftness = 0.15F;

}  // namespace

void DrawDissolve(const Frame& frame) {
  const Edge edge = AdvancingEdge(frame.progress, kSoftness, 1.0F);
  for (int y = frame.first_row; y < frame.last_row; ++y) {
    frame.kernels.mix_grain(frame.GetRow(y), edge, 0, Grain(static_cast<uint32_t>(y), kGrainSecond) * kGrainFirst);
  }
}

}  // namespace sim::lumaview
