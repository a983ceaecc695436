// SPDX-License-Identifier: Apache-2.0
/// A soft circle around the middle: circleopen grows with `to` inside, circleclose shrinks with `to` outside.
#include "simulator/lumaview/effect/SoftEdge.h"

namespace sim::lumaview {
namespace {

/// Part of the half diagonal that the edge covers, 0..1.
constexpr float kSoftness = 0.15F;

using CopySpan = void (*)(const Kernels& kernels, const Span& span);

/// Half of what a circle of `radius` cuts out of the row at distance `y` from its middle; 0 where it misses the row.
float HalfChord(float radius, float y) {
  return radius <= 0.0F ? 0.0F : std::sqrt(std::max(0.0F, radius * radius - y * y));
}

/// Mixes two stretches, left and right of the `hole`, and copies the rest.
void DrawRing(const Frame& frame, const Span& row, Edge edge, float y, Range ring, Range hole) {
  const CopySpan inside = edge.slope < 0.0F ? CopyTo : CopyFrom;
  const CopySpan outside = edge.slope < 0.0F ? CopyFrom : CopyTo;
  const float left = 0.5F - 0.5F * static_cast<float>(frame.GetWidth());
  const auto soft = [&](int first, int last) {
    if (first < last) {
      frame.kernels.mix_ring(Part(row, first, last), edge, left + static_cast<float>(first), y);
    }
  };
  outside(frame.kernels, Part(row, 0, ring.first));
  soft(ring.first, hole.first);
  inside(frame.kernels, Part(row, hole.first, hole.last));
  soft(hole.last, ring.last);
  outside(frame.kernels, Part(row, ring.last, row.count));
}

/// Pixels that lie inside of `half` on both sides of the middle for certain; the reverse of `Enclose`.
Range Inner(float half, float middle, Range ring) {
  constexpr float kMargin = 18.0F;  // a cache line and two pixels
  if (half <= kMargin) {
    return {ring.last, ring.last};
  }
  const Range wide = Enclose(middle - half + kMargin, middle + half - kMargin, static_cast<int>(2.0F * middle));
  return {std::max(wide.first, ring.first), std::min(wide.last, ring.last)};
}

void DrawRings(const Frame& frame, Edge edge) {
  const float begin = edge.Position(0.0F);
  const float end = edge.Position(1.0F);
  const float middle = 0.5F * static_cast<float>(frame.GetWidth());
  for (int row = frame.first_row; row < frame.last_row; ++row) {
    const float y = static_cast<float>(row) + 0.5F - 0.5F * static_cast<float>(frame.GetHeight());
    const float outer = HalfChord(std::max(begin, end), y);
    const Range ring = Enclose(middle - outer, middle + outer, frame.GetWidth());
    DrawRing(frame, frame.GetRow(row), edge, y, ring, Inner(HalfChord(std::min(begin, end), y), middle, ring));
  }
}

float PerPixel(const Frame& frame) {
  return 2.0F / std::hypot(static_cast<float>(frame.GetWidth()), static_cast<float>(frame.GetHeight()));
}

}  // namespace

void DrawCircleOpen(const Frame& frame) {
  DrawRings(frame, AdvancingEdge(frame.progress, kSoftness, PerPixel(frame)));
}

void DrawCircleClose(const Frame& frame) {
  DrawRings(frame, RecedingEdge(frame.progress, kSoftness, PerPixel(frame)));
}

}  // namespace sim::lumaview
