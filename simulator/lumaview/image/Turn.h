// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_IMAGE_TURN_H
#define SIMULATOR_LUMAVIEW_IMAGE_TURN_H

#include <utility>

#include "simulator/lumaview/image/Image.h"

namespace sim::lumaview {

/// One of the eight ways in which stored pixels become upright ones: first columns become rows (or not), then the
/// result is mirrored in its own coordinates.
struct Turn {
  bool transpose = false;
  bool mirror_x = false;
  bool mirror_y = false;

  /// From EXIF's number; what is not 1..8 counts as 1.
  static constexpr Turn FromOrientation(int orientation) {
    constexpr Turn kTurns[] = {{false, false, false}, {false, true, false}, {false, true, true}, {false, false, true},
                               {true, false, false},  {true, true, false},  {true, true, true},  {true, false, true}};
    return orientation >= 1 && orientation <= 8 ? kTurns[orientation - 1] : Turn{};
  }

  /// This turn, followed by `degrees` clockwise; what is not 0, 90, 180 or 270 counts as 0.
  constexpr Turn Rotated(int degrees) const {
    Turn turn = *this;
    const int quarters = degrees == 90 ? 1 : degrees == 180 ? 2 : degrees == 270 ? 3 : 0;
    for (int i = 0; i < quarters; ++i) {
      turn = {!turn.transpose, !turn.mirror_y, turn.mirror_x};
    }
    return turn;
  }

  /// EXIF's number of this turn.
  constexpr int ToOrientation() const {
    int orientation = 1;
    while (FromOrientation(orientation) != *this) {
      ++orientation;
    }
    return orientation;
  }

  /// The size after the turn; also its own inverse, as mirroring keeps sizes.
  constexpr Size Apply(Size size) const { return transpose ? Size{size.height, size.width} : size; }

  bool operator==(const Turn&) const = default;
};

}  // namespace sim::lumaview

#endif
