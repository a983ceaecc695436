// SPDX-License-Identifier: Apache-2.0
#include "bench/effects_limit.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "bench/effects_limit.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace bench::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

template <bool kStreaming>
void Average(const uint8_t* a, const uint8_t* b, uint8_t* target, size_t count) {
  const hn::ScalableTag<uint8_t> bytes;
  for (size_t i = 0; i + hn::Lanes(bytes) <= count; i += hn::Lanes(bytes)) {
    const auto average = hn::AverageRound(hn::LoadU(bytes, a + i), hn::LoadU(bytes, b + i));
    if (kStreaming) {
      hn::Stream(average, bytes, target + i);
    } else {
      hn::StoreU(average, bytes, target + i);
    }
  }
}

void AverageCached(const uint8_t* a, const uint8_t* b, uint8_t* target, size_t count) {
  Average<false>(a, b, target, count);
}

void AverageStreamed(const uint8_t* a, const uint8_t* b, uint8_t* target, size_t count) {
  Average<true>(a, b, target, count);
  hwy::FlushStream();
}

}  // namespace bench::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace bench {

HWY_EXPORT(AverageCached);
HWY_EXPORT(AverageStreamed);

namespace {

using sim::lumaview::ConstImageView;
using sim::lumaview::ImageView;

template <typename Average>
void Run(Average average, ConstImageView a, ConstImageView b, ImageView target) {
  const size_t bytes = static_cast<size_t>(target.width) * static_cast<size_t>(target.height) * sizeof *target.pixels;
  average(reinterpret_cast<const uint8_t*>(a.pixels), reinterpret_cast<const uint8_t*>(b.pixels),
          reinterpret_cast<uint8_t*>(target.pixels), bytes);
}

}  // namespace

void AverageThroughCache(ConstImageView a, ConstImageView b, ImageView target) {
  Run(HWY_DYNAMIC_DISPATCH(AverageCached), a, b, target);
}

void AverageStreaming(ConstImageView a, ConstImageView b, ImageView target) {
  Run(HWY_DYNAMIC_DISPATCH(AverageStreamed), a, b, target);
}

}  // namespace bench
#endif
