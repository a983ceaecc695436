// SPDX-License-Identifier: Apache-2.0
/// What an effect is given, and what the families of effects share.
#ifndef SIMULATOR_LUMAVIEW_EFFECT_FRAME_H
#define SIMULATOR_LUMAVIEW_EFFECT_FRAME_H

#include "simulator/lumaview/effect/Kernels.h"
#include "simulator/lumaview/image/Image.h"

namespace sim::lumaview {

/// One band of one frame. `progress` lies strictly between 0 and 1; the ends are `DrawEffect`'s.
struct Frame {
  ConstImageView from;
  ConstImageView to;
  ImageView target;
  float progress;
  int first_row;
  int last_row;  ///< excluded
  const Kernels& kernels;

  int GetWidth() const { return target.width; }
  int GetHeight() const { return target.height; }
  Span GetRow(int y) const { return {target.Row(y), from.Row(y), to.Row(y), target.width}; }
};

using EffectFunction = void (*)(const Frame& frame);

/// Pixels [first, last) of a row.
inline Span Part(const Span& row, int first, int last) {
  return {row.target + first, row.from + first, row.to + first, last - first};
}

inline void CopyFrom(const Kernels& kernels, const Span& span) {
  if (span.count > 0) {
    kernels.copy(span.target, span.from, span.count);
  }
}

inline void CopyTo(const Kernels& kernels, const Span& span) {
  if (span.count > 0) {
    kernels.copy(span.target, span.to, span.count);
  }
}

// The families; each stands in a file of its own.
void DrawFade(const Frame& frame);
void DrawFadeBlack(const Frame& frame);
void DrawFadeWhite(const Frame& frame);
void DrawDissolve(const Frame& frame);
void DrawPixelize(const Frame& frame);
void DrawWipeLeft(const Frame& frame);
void DrawWipeRight(const Frame& frame);
void DrawWipeUp(const Frame& frame);
void DrawWipeDown(const Frame& frame);
void DrawSlideLeft(const Frame& frame);
void DrawSlideRight(const Frame& frame);
void DrawSlideUp(const Frame& frame);
void DrawSlideDown(const Frame& frame);
void DrawSmoothLeft(const Frame& frame);
void DrawSmoothRight(const Frame& frame);
void DrawCircleOpen(const Frame& frame);
void DrawCircleClose(const Frame& frame);
void DrawRadial(const Frame& frame);
void DrawDiagTopLeft(const Frame& frame);
void DrawDiagBottomRight(const Frame& frame);
void DrawSqueezeH(const Frame& frame);
void DrawSqueezeV(const Frame& frame);
void DrawZoomIn(const Frame& frame);
void DrawBlur(const Frame& frame);

}  // namespace sim::lumaview

#endif
