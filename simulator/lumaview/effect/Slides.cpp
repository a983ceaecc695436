// SPDX-License-Identifier: Apache-2.0
/// `to` pushes `from` out of the picture; the name says where both move to. They start and stop gently.
#include "simulator/lumaview/effect/Frame.h"
#include "simulator/lumaview/effect/Pixel.h"

namespace sim::lumaview {
namespace {

/// How far both pictures have moved, of `length` pixels.
int Moved(const Frame& frame, int length) {
  return static_cast<int>(SmoothStep(frame.progress) * static_cast<float>(length) + 0.5F);
}

/// The first `shift` columns of `left` are gone, and as many of `right` follow behind it.
void JoinColumns(const Frame& frame, const ConstImageView& left, const ConstImageView& right, int shift) {
  const int kept = frame.GetWidth() - shift;
  for (int y = frame.first_row; y < frame.last_row; ++y) {
    CopyFrom(frame.kernels, {frame.target.Row(y), left.Row(y) + shift, nullptr, kept});
    CopyFrom(frame.kernels, {frame.target.Row(y) + kept, right.Row(y), nullptr, shift});
  }
}

/// As above, with rows: `below` follows under what is left of `above`.
void JoinRows(const Frame& frame, const ConstImageView& above, const ConstImageView& below, int shift) {
  const int height = frame.GetHeight();
  for (int y = frame.first_row; y < frame.last_row; ++y) {
    const int wanted = y + shift;
    const uint32_t* source = wanted < height ? above.Row(wanted) : below.Row(wanted - height);
    frame.kernels.copy(frame.target.Row(y), source, frame.GetWidth());
  }
}

}  // namespace

void DrawSlideLeft(const Frame& frame) {
  JoinColumns(frame, frame.from, frame.to, Moved(frame, frame.GetWidth()));
}

void DrawSlideRight(const Frame& frame) {
  JoinColumns(frame, frame.to, frame.from, frame.GetWidth() - Moved(frame, frame.GetWidth()));
}

void DrawSlideUp(const Frame& frame) {
  JoinRows(frame, frame.from, frame.to, Moved(frame, frame.GetHeight()));
}

void DrawSlideDown(const Frame& frame) {
  JoinRows(frame, frame.to, frame.from, frame.GetHeight() - Moved(frame, frame.GetHeight()));
}

}  // namespace sim::lumaview
