// SPDX-License-Identifier: Apache-2.0
/// Vectors of pixels: how they are mixed, weighted and stored. Included once for each instruction set, hence the guard.
#if defined(SIMULATOR_LUMAVIEW_EFFECT_VECTORPIXELS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef SIMULATOR_LUMAVIEW_EFFECT_VECTORPIXELS_INL_H
#undef SIMULATOR_LUMAVIEW_EFFECT_VECTORPIXELS_INL_H
#else
#define SIMULATOR_LUMAVIEW_EFFECT_VECTORPIXELS_INL_H
#endif

#include <hwy/highway.h>

#include "simulator/lumaview/effect/Kernels.h"
#include "simulator/lumaview/effect/Pixel.h"

HWY_BEFORE_NAMESPACE();
namespace sim::lumaview::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

namespace hn = hwy::HWY_NAMESPACE;

const hn::ScalableTag<uint32_t> kPixels;
const hn::RepartitionToNarrow<decltype(kPixels)> kWords;
const hn::RebindToSigned<decltype(kPixels)> kSigned;
const hn::RebindToFloat<decltype(kPixels)> kFloats;
using Pixels = hn::VFromD<decltype(kPixels)>;
using Signed = hn::VFromD<decltype(kSigned)>;
using Floats = hn::VFromD<decltype(kFloats)>;

HWY_INLINE int Lanes() {
  return static_cast<int>(hn::Lanes(kPixels));
}

/// `weight` of each pixel in both halves of its 32 bits.
HWY_INLINE Pixels Mix(Pixels from, Pixels to, Pixels weight) {
  const auto low = hn::Set(kWords, uint16_t{0x00FF});
  const auto half = hn::Set(kWords, uint16_t{0x0080});
  const auto a = hn::BitCast(kWords, from);
  const auto b = hn::BitCast(kWords, to);
  const auto w = hn::BitCast(kWords, weight);
  const auto even_step = hn::Mul(hn::Sub(hn::And(b, low), hn::And(a, low)), w);
  const auto even = hn::Add(hn::Add(hn::ShiftLeft<8>(a), half), even_step);
  const auto odd_step = hn::Mul(hn::Sub(hn::ShiftRight<8>(b), hn::ShiftRight<8>(a)), w);
  const auto odd = hn::Add(hn::Add(hn::AndNot(low, a), half), odd_step);
  return hn::BitCast(kPixels, hn::Or(hn::ShiftRight<8>(even), hn::AndNot(low, odd)));
}

HWY_INLINE Pixels BothHalves(Signed weight) {
  return hn::BitCast(kPixels, hn::Or(weight, hn::ShiftLeft<16>(weight)));
}

HWY_INLINE Pixels OneWeight(int weight) {
  return hn::Set(kPixels, static_cast<uint32_t>(weight) * 0x10001U);
}

/// Of weights 0..256.
HWY_INLINE Pixels RoundedWeights(Floats weight) {
  const auto rounded = hn::BitCast(kSigned, hn::Add(weight, hn::Set(kFloats, kRounder)));
  return BothHalves(hn::And(rounded, hn::Set(kSigned, kRounded)));
}

HWY_INLINE Pixels SmoothWeights(Floats t) {
  const auto clamped = hn::Min(hn::Max(t, hn::Zero(kFloats)), hn::Set(kFloats, 1.0F));
  const auto bend = hn::Sub(hn::Set(kFloats, 3.0F), hn::Add(clamped, clamped));
  const auto smooth = hn::Mul(hn::Mul(clamped, clamped), bend);
  return RoundedWeights(hn::Mul(smooth, hn::Set(kFloats, 256.0F)));
}

HWY_INLINE Pixels EdgeWeights(const Edge& edge, Floats position) {
  return SmoothWeights(hn::Add(hn::Set(kFloats, edge.start), hn::Mul(hn::Set(kFloats, edge.slope), position)));
}

/// 0, 1, 2, ... as whole numbers and as floats, made once for a row, because making them goes through memory.
struct Counting {
  Signed whole = hn::Iota(kSigned, 0);
  Floats floats = hn::ConvertTo(kFloats, hn::Iota(kSigned, 0));

  HWY_INLINE Signed From(int first) const { return hn::Add(whole, hn::Set(kSigned, first)); }
  /// x + first, x + (first + 1), ...
  HWY_INLINE Floats Positions(float x, int first) const {
    return hn::Add(hn::Set(kFloats, x), hn::Add(floats, hn::Set(kFloats, static_cast<float>(first))));
  }
};

/// How a row is stored: past the cache, or into it.
struct Stream {
  static HWY_INLINE void Store(Pixels pixels, uint32_t* target) { hn::Stream(pixels, kPixels, target); }
};
struct Near {
  static HWY_INLINE void Store(Pixels pixels, uint32_t* target) { hn::StoreU(pixels, kPixels, target); }
};

/// Stores `source(x)`, the pixels from x on, for the whole row of at least one vector. Streaming wants aligned
/// addresses, so the first and the last vector may overlap their neighbours, with the same pixels.
template <typename Storing, typename Source>
HWY_INLINE void WriteRow(uint32_t* target, int count, const Source& source) {
  const int lanes = Lanes();
  const int past = static_cast<int>(reinterpret_cast<uintptr_t>(target) / sizeof *target) & (lanes - 1);
  int x = 0;
  if (past != 0) {
    hn::StoreU(source(0), kPixels, target);
    x = lanes - past;
  }
  for (; x + lanes <= count; x += lanes) {
    Storing::Store(source(x), target + x);
  }
  if (x < count) {
    hn::StoreU(source(count - lanes), kPixels, target + count - lanes);
  }
}

HWY_INLINE bool IsShort(int count) {
  return count < Lanes();
}

#endif

}  // namespace sim::lumaview::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
