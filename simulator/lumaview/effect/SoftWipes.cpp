// SPDX-License-Identifier: Apache-2.0
/// Straight soft edges: smoothleft and smoothright upright, diagtl and diagbr along the other diagonal. The name says
/// where the edge moves to.
#include "simulator/lumaview/effect/SoftEdge.h"

namespace sim::lumaview {
namespace {

/// Part of the way that the edge covers, 0..1.
constexpr float kSmoothSoftness = 0.25F;
constexpr float kDiagonalSoftness = 0.2F;

/// Mixes the part of `row` that the edge covers and copies what lies on either side of it. `x`: of the first pixel.
void DrawLine(const Frame& frame, const Span& row, Edge edge, float x) {
  const float begin = edge.Position(0.0F) - x;
  const float end = edge.Position(1.0F) - x;
  const Range soft = Enclose(std::min(begin, end), std::max(begin, end), row.count);
  const bool to_lies_right = edge.slope > 0.0F;
  const auto left = to_lies_right ? CopyFrom : CopyTo;
  const auto right = to_lies_right ? CopyTo : CopyFrom;
  left(frame.kernels, Part(row, 0, soft.first));
  if (soft.first < soft.last) {
    frame.kernels.mix_line(Part(row, soft.first, soft.last), edge, x + static_cast<float>(soft.first));
  }
  right(frame.kernels, Part(row, std::max(soft.first, soft.last), row.count));
}

/// `lean`: how many pixels the position grows from one row to the next.
void DrawLines(const Frame& frame, Edge edge, float lean) {
  for (int y = frame.first_row; y < frame.last_row; ++y) {
    DrawLine(frame, frame.GetRow(y), edge, 0.5F + (static_cast<float>(y) + 0.5F) * lean);
  }
}

float Lean(const Frame& frame) {
  return static_cast<float>(frame.GetWidth()) / static_cast<float>(frame.GetHeight());
}

float PerPixel(const Frame& frame) {
  return 1.0F / static_cast<float>(frame.GetWidth());
}

}  // namespace

void DrawSmoothLeft(const Frame& frame) {
  DrawLines(frame, RecedingEdge(frame.progress, kSmoothSoftness, PerPixel(frame)), 0.0F);
}

void DrawSmoothRight(const Frame& frame) {
  DrawLines(frame, AdvancingEdge(frame.progress, kSmoothSoftness, PerPixel(frame)), 0.0F);
}

void DrawDiagTopLeft(const Frame& frame) {
  DrawLines(frame, RecedingEdge(frame.progress, kDiagonalSoftness, 0.5F * PerPixel(frame)), Lean(frame));
}

void DrawDiagBottomRight(const Frame& frame) {
  DrawLines(frame, AdvancingEdge(frame.progress, kDiagonalSoftness, 0.5F * PerPixel(frame)), Lean(frame));
}

}  // namespace sim::lumaview
