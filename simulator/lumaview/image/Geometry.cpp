// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "simulator/lumaview/image/Render.h"
#include "simulator/lumaview/image/Turn.h"

namespace sim::lumaview {
namespace {

/// `value * factor / divisor` to the nearest, at least 1. The product of two sides and a zoom fits into 64 bits.
int Scale(int value, int64_t factor, int64_t divisor) {
  const int64_t scaled = (2 * value * factor + divisor) / (2 * divisor);
  return static_cast<int>(std::clamp<int64_t>(scaled, 1, kLongestPlacedSide));
}

/// The size at which a picture of `size` touches the window's sides (`fill`: covers the window), times the zoom.
Size FitSize(Size size, const View& view, Size window) {
  const int64_t by_width = int64_t{size.height} * window.width;
  const int64_t by_height = int64_t{size.width} * window.height;
  const bool touches_left_and_right = view.fill ? by_height <= by_width : by_width <= by_height;
  if (touches_left_and_right) {
    return {Scale(window.width, view.zoom, 1), Scale(size.height, int64_t{window.width} * view.zoom, size.width)};
  }
  return {Scale(size.width, int64_t{window.height} * view.zoom, size.height), Scale(window.height, view.zoom, 1)};
}

/// How far a side of the picture may be moved from the centre.
int LargestPan(int placed, int window) {
  return placed > window ? (placed - window + 1) / 2 : 0;
}

/// Where a side begins: centred and moved, but never leaving a gap that centring would not leave.
int Begin(int placed, int window, int pan) {
  const int centred = (window - placed) / 2 - (placed > window && (placed - window) % 2 != 0 ? 1 : 0);
  return placed > window ? std::clamp(centred + pan, window - placed, 0) : centred;
}

}  // namespace

Size UprightSize(const PictureInfo& info) {
  return Turn::FromOrientation(info.orientation).Apply(info.stored);
}

Rect PlaceInWindow(Size upright, const View& view, Size window) {
  const Size shown = Turn().Rotated(view.rotation).Apply(upright);
  const Size size = FitSize(shown, view, window);
  return {Begin(size.width, window.width, view.pan_x), Begin(size.height, window.height, view.pan_y), size.width,
          size.height};
}

View ClampPan(Size upright, View view, Size window) {
  const Rect placed = PlaceInWindow(upright, view, window);
  const int most_x = LargestPan(placed.width, window.width);
  const int most_y = LargestPan(placed.height, window.height);
  view.pan_x = std::clamp(view.pan_x, -most_x, most_x);
  view.pan_y = std::clamp(view.pan_y, -most_y, most_y);
  return view;
}

}  // namespace sim::lumaview
