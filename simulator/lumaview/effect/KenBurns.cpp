// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/effect/KenBurns.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace sim::lumaview {
namespace {

/// A side of the area: where it begins and how long it is.
struct Side {
  double begin;
  double length;
};

/// Sizes that differ by less than this factor are a pan, whose begin moves evenly.
constexpr double kSameSize = 1e-9;

Side Travel(Side from, Side to, double progress) {
  const double length = from.length * std::pow(to.length / from.length, progress);
  const double growth = to.length - from.length;
  const double way = std::abs(growth) > kSameSize * from.length ? (length - from.length) / growth : progress;
  return {from.begin + (to.begin - from.begin) * way, length};
}

}  // namespace

Area KenBurnsArea(const Area& from, const Area& to, float progress) {
  const double limited = std::clamp(static_cast<double>(progress), 0.0, 1.0);
  const Side across = Travel({from.x, from.width}, {to.x, to.width}, limited);
  const Side down = Travel({from.y, from.height}, {to.y, to.height}, limited);
  return {across.begin, down.begin, across.length, down.length};
}

void DrawKenBurnsWith(const Kernels& kernels, ConstImageView picture, const Area& from, const Area& to, float progress,
                      ImageView target, int first_row, int last_row) {
  assert(picture.width > 0 && picture.height > 0 && from.width > 0 && from.height > 0 && to.width > 0 && to.height > 0);
  assert(0 <= first_row && last_row <= target.height);
  const Resampler resampler(kernels, picture, KenBurnsArea(from, to, progress), target.GetSize());
  for (int y = first_row; y < last_row; ++y) {
    for (int x = 0; x < target.width; x += resampler.GetColumns()) {
      resampler.Draw(y, x, std::min(resampler.GetColumns(), target.width - x), target.Row(y) + x);
    }
  }
  FinishStores();
}

void DrawKenBurns(ConstImageView picture, const Area& from, const Area& to, float progress, ImageView target,
                  int first_row, int last_row) {
  DrawKenBurnsWith(BestKernels(), picture, from, to, progress, target, first_row, last_row);
}

}  // namespace sim::lumaview
