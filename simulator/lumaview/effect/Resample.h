// SPDX-License-Identifier: Apache-2.0
/// Reading a picture between its pixels.
#ifndef SIMULATOR_LUMAVIEW_EFFECT_RESAMPLE_H
#define SIMULATOR_LUMAVIEW_EFFECT_RESAMPLE_H

#include "simulator/lumaview/effect/Kernels.h"
#include "simulator/lumaview/image/Image.h"

namespace sim::lumaview {

/// A part of a picture, in its pixels and parts of them; right and bottom excluded.
struct Area {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

/// Scales an area of a picture to a target, linearly interpolated, a stretch of a row at a time. Reducing to less than
/// half loses detail, as only the nearest four pixels count. What lies outside the picture repeats its border.
class Resampler {
 public:
  /// The most columns that one call draws.
  static constexpr int kColumns = 512;

  /// `area` has sides above 0 and lies in the picture, give or take a pixel. Borrows the picture.
  Resampler(const Kernels& kernels, ConstImageView picture, const Area& area, Size target);

  /// How many columns `Draw` may be asked for.
  int GetColumns() const { return m_columns; }
  /// Writes columns first .. first + count - 1 of the target's row `y` to `pixels`.
  void Draw(int y, int first, int count, uint32_t* pixels) const {
    DrawWith(m_kernels.stretch, y, first, count, pixels);
  }
  /// As above, when the pixels are read again at once.
  void DrawNear(int y, int first, int count, uint32_t* pixels) const {
    DrawWith(m_kernels.stretch_near, y, first, count, pixels);
  }

 private:
  using StretchKernel = void (*)(uint32_t*, int, const Stretch&);
  void DrawWith(StretchKernel stretch, int y, int first, int count, uint32_t* pixels) const;

  const Kernels& m_kernels;
  const ConstImageView m_picture;
  const Area m_area;
  const double m_step_x;  ///< picture pixels from column to column
  const double m_step_y;
  const int m_columns;
};

/// Where a position between two pixels falls: 0 is the middle of the first of `count` pixels.
struct Between {
  int first;
  int second;
  int weight;  ///< of the second, 0..kFullWeight - 1
};
Between Locate(double position, int count);

/// As fixed-point position or step of a `Stretch`.
int32_t ToFixed(double pixels);

}  // namespace sim::lumaview

#endif
