// SPDX-License-Identifier: Apache-2.0
/// A hard straight edge uncovers `to`; the name says where the edge moves to.
#include "simulator/lumaview/effect/Frame.h"

namespace sim::lumaview {
namespace {

/// How far along `length` pixels the edge has come.
int Travelled(const Frame& frame, int length) {
  return static_cast<int>(frame.progress * static_cast<float>(length) + 0.5F);
}

/// Columns left of `border` show one picture, the others the other.
template <auto CopyLeft, auto CopyRight>
void WipeColumns(const Frame& frame, int border) {
  for (int y = frame.first_row; y < frame.last_row; ++y) {
    const Span row = frame.GetRow(y);
    CopyLeft(frame.kernels, Part(row, 0, border));
    CopyRight(frame.kernels, Part(row, border, row.count));
  }
}

/// Rows above `border` show one picture, the others the other.
template <auto CopyAbove, auto CopyBelow>
void WipeRows(const Frame& frame, int border) {
  for (int y = frame.first_row; y < frame.last_row; ++y) {
    (y < border ? CopyAbove : CopyBelow)(frame.kernels, frame.GetRow(y));
  }
}

}  // namespace

void DrawWipeLeft(const Frame& frame) {
  WipeColumns<CopyFrom, CopyTo>(frame, frame.GetWidth() - Travelled(frame, frame.GetWidth()));
}

void DrawWipeRight(const Frame& frame) {
  WipeColumns<CopyTo, CopyFrom>(frame, Travelled(frame, frame.GetWidth()));
}

void DrawWipeUp(const Frame& frame) {
  WipeRows<CopyFrom, CopyTo>(frame, frame.GetHeight() - Travelled(frame, frame.GetHeight()));
}

void DrawWipeDown(const Frame& frame) {
  WipeRows<CopyTo, CopyFrom>(frame, Travelled(frame, frame.GetHeight()));
}

}  // namespace sim::lumaview
