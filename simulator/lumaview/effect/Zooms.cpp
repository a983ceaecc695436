// SPDX-License-Identifier: Apache-2.0
/// zoomin: the view moves into the middle of `from`, which fades into `to` on the way.
#include <algorithm>

#include "simulator/lumaview/effect/Frame.h"
#include "simulator/lumaview/effect/Pixel.h"
#include "simulator/lumaview/effect/Resample.h"

namespace sim::lumaview {
namespace {

/// How much larger `from` is in the end, times.
constexpr double kZoom = 4.0;
/// The part of the time, 0..1, after which `to` begins to show.
constexpr float kFadeStart = 0.35F;

/// What of `from` fills the picture. The zoom starts gently.
Area Visible(const Frame& frame) {
  const double scale = 1.0 / (1.0 + (kZoom - 1.0) * frame.progress * frame.progress);
  const double width = frame.GetWidth() * scale;
  const double height = frame.GetHeight() * scale;
  return {0.5 * (frame.GetWidth() - width), 0.5 * (frame.GetHeight() - height), width, height};
}

}  // namespace

void DrawZoomIn(const Frame& frame) {
  uint32_t zoomed[Resampler::kColumns];
  const Resampler resampler(frame.kernels, frame.from, Visible(frame), frame.target.GetSize());
  const int weight = SmoothWeight((frame.progress - kFadeStart) / (1.0F - kFadeStart));
  for (int y = frame.first_row; y < frame.last_row; ++y) {
    for (int x = 0; x < frame.GetWidth(); x += resampler.GetColumns()) {
      const int count = std::min(resampler.GetColumns(), frame.GetWidth() - x);
      if (weight == 0) {
        resampler.Draw(y, x, count, frame.target.Row(y) + x);
      } else {
        resampler.DrawNear(y, x, count, zoomed);
        frame.kernels.mix({frame.target.Row(y) + x, zoomed, frame.to.Row(y) + x, count}, weight);
      }
    }
  }
}

}  // namespace sim::lumaview
