// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/effect/Frame.h"
#include "simulator/lumaview/effect/Pixel.h"

namespace sim::lumaview {
namespace {

constexpr uint32_t kBlack = 0xFF000000;
constexpr uint32_t kWhite = 0xFFFFFFFF;

/// `from` fades to the colour in the first half, and the colour to `to` in the second.
void FadeThrough(const Frame& frame, uint32_t colour) {
  const bool leaving = frame.progress < 0.5F;
  const ConstImageView& source = leaving ? frame.from : frame.to;
  const float distance = leaving ? frame.progress : 1.0F - frame.progress;
  const int weight = SmoothWeight(2.0F * distance);
  for (int y = frame.first_row; y < frame.last_row; ++y) {
    frame.kernels.mix_colour(frame.target.Row(y), source.Row(y), source.width, colour, weight);
  }
}

}  // namespace

void DrawFade(const Frame& frame) {
  const int weight = static_cast<int>(frame.progress * static_cast<float>(kFullWeight) + 0.5F);
  for (int y = frame.first_row; y < frame.last_row; ++y) {
    frame.kernels.mix(frame.GetRow(y), weight);
  }
}

void DrawFadeBlack(const Frame& frame) {
  FadeThrough(frame, kBlack);
}

void DrawFadeWhite(const Frame& frame) {
  FadeThrough(frame, kWhite);
}

}  // namespace sim::lumaview
