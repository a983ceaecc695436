// SPDX-License-Identifier: Apache-2.0
/// The kernels with vectors. The file compiles itself once for each instruction set of the processor family; where
/// Highway cannot choose at run time (32-bit ARM) the build compiles it twice instead, see CMakeLists.txt.
///
/// Each step mirrors one of Pixel.h, operation by operation, so that both round alike.
#include "simulator/lumaview/effect/Kernels.h"
#include "simulator/lumaview/effect/Pixel.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simulator/lumaview/effect/VectorKernels.cpp"
#define HWY_DISABLED_TARGETS HWY_SSSE3  // nothing between plain loops and SSE4 is worth its code
#ifdef __arm__
#define HWY_COMPILE_ONLY_STATIC  // what the compiler is told; Dispatch.cpp chooses between two compilations
#endif
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "simulator/lumaview/effect/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace sim::lumaview::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Highway's vectors of one element are far slower than a loop.
const Kernels* GetKernels() {
  return &PlainKernels();
}

#else

struct CopySource {
  const uint32_t* source;
  HWY_INLINE Pixels operator()(int x) const { return hn::LoadU(kPixels, source + x); }
};

void Copy(uint32_t* target, const uint32_t* source, int count) {
  if (IsShort(count)) {
    return PlainKernels().copy(target, source, count);
  }
  WriteRow<Stream>(target, count, CopySource{source});
}

/// Mixes the two rows by the weights that `Weights` gives for the pixels from x on.
template <typename Weights>
struct MixSource {
  const Span& span;
  Weights weights;
  HWY_INLINE Pixels operator()(int x) const {
    return Mix(hn::LoadU(kPixels, span.from + x), hn::LoadU(kPixels, span.to + x), weights(x));
  }
};

template <typename Storing, typename Weights>
HWY_INLINE void MixRow(const Span& span, const Weights& weights) {
  WriteRow<Storing>(span.target, span.count, MixSource<Weights>{span, weights});
}

struct ConstantWeights {
  Pixels weight;
  HWY_INLINE Pixels operator()(int) const { return weight; }
};

void MixOne(const Span& span, int weight) {
  if (IsShort(span.count)) {
    return PlainKernels().mix(span, weight);
  }
  MixRow<Stream>(span, ConstantWeights{OneWeight(weight)});
}

void MixNear(const Span& span, int weight) {
  if (IsShort(span.count)) {
    return PlainKernels().mix_near(span, weight);
  }
  MixRow<Near>(span, ConstantWeights{OneWeight(weight)});
}

struct ColourSource {
  const uint32_t* source;
  Pixels colour;
  Pixels weight;
  HWY_INLINE Pixels operator()(int x) const { return Mix(hn::LoadU(kPixels, source + x), colour, weight); }
};

void MixColour(uint32_t* target, const uint32_t* source, int count, uint32_t colour, int weight) {
  if (IsShort(count)) {
    return PlainKernels().mix_colour(target, source, count, colour, weight);
  }
  WriteRow<Stream>(target, count, ColourSource{source, hn::Set(kPixels, colour), OneWeight(weight)});
}

struct LineWeights {
  Edge edge;
  float x;
  Counting counting = {};
  HWY_INLINE Pixels operator()(int first) const { return EdgeWeights(edge, counting.Positions(x, first)); }
};

void MixLine(const Span& span, Edge edge, float x) {
  if (IsShort(span.count)) {
    return PlainKernels().mix_line(span, edge, x);
  }
  MixRow<Stream>(span, LineWeights{edge, x});
}

struct RingWeights {
  Edge edge;
  float x;
  float square;
  Counting counting = {};
  HWY_INLINE Pixels operator()(int first) const {
    const auto across = counting.Positions(x, first);
    const auto sum = hn::Add(hn::Mul(across, across), hn::Set(kFloats, square));
    return EdgeWeights(edge, hn::Sqrt(sum));
  }
};

void MixRing(const Span& span, Edge edge, float x, float y) {
  if (IsShort(span.count)) {
    return PlainKernels().mix_ring(span, edge, x, y);
  }
  MixRow<Stream>(span, RingWeights{edge, x, y * y});
}

/// Step by step as `Turn`; `along` is the length of `up`.
struct SweepWeights {
  Edge edge;
  float x;
  float along;
  bool below;
  Counting counting = {};

  HWY_INLINE Pixels operator()(int first) const {
    const auto right = counting.Positions(x, first);
    const auto across = hn::Abs(right);
    const auto quarter = Quarter(across, hn::Set(kFloats, along));
    const auto half = below ? hn::Sub(hn::Set(kFloats, 0.5F), quarter) : quarter;
    const auto whole = hn::Sub(hn::Set(kFloats, 1.0F), half);
    return EdgeWeights(edge, hn::IfThenElse(hn::Lt(right, hn::Zero(kFloats)), whole, half));
  }

  static HWY_INLINE Floats Quarter(Floats across, Floats upright) {
    const auto longer = hn::Max(hn::Max(across, upright), hn::Set(kFloats, 0.25F));
    const auto z = hn::Div(hn::Min(across, upright), longer);
    const auto q = hn::Mul(z, z);
    auto sum = hn::Set(kFloats, kTurn[4]);
    sum = hn::Add(hn::Mul(sum, q), hn::Set(kFloats, kTurn[3]));
    sum = hn::Add(hn::Mul(sum, q), hn::Set(kFloats, kTurn[2]));
    sum = hn::Add(hn::Mul(sum, q), hn::Set(kFloats, kTurn[1]));
    sum = hn::Add(hn::Mul(sum, q), hn::Set(kFloats, kTurn[0]));
    const auto eighth = hn::Mul(z, sum);
    return hn::IfThenElse(hn::Gt(across, upright), hn::Sub(hn::Set(kFloats, 0.25F), eighth), eighth);
  }
};

void MixSweep(const Span& span, Edge edge, float x, float up) {
  if (IsShort(span.count)) {
    return PlainKernels().mix_sweep(span, edge, x, up);
  }
  MixRow<Stream>(span, SweepWeights{edge, x, up < 0.0F ? -up : up, up < 0.0F});
}

struct GrainWeights {
  Edge scaled;
  uint32_t x;
  uint32_t seed;
  Signed steps = hn::Mul(hn::Iota(kSigned, 0), hn::Set(kSigned, static_cast<int32_t>(kGrainFirst)));

  HWY_INLINE Pixels operator()(int first) const {
    // Multiplied out of the lanes, as products of whole vectors are slow.
    const uint32_t begin = (x + static_cast<uint32_t>(first)) * kGrainFirst;
    auto bits = hn::Add(hn::BitCast(kPixels, steps), hn::Set(kPixels, begin));
    bits = hn::Xor(bits, hn::Set(kPixels, seed));
    const auto product = hn::Mul(hn::Xor(bits, hn::ShiftRight<15>(bits)), hn::Set(kPixels, kGrainSecond));
    return Weights(hn::ConvertTo(kFloats, hn::BitCast(kSigned, hn::ShiftRight<8>(product))));
  }

  HWY_INLINE Pixels Weights(Floats grain) const {
    const auto weight = hn::Add(hn::Set(kFloats, scaled.start), hn::Mul(hn::Set(kFloats, scaled.slope), grain));
    return RoundedWeights(hn::Min(hn::Max(weight, hn::Zero(kFloats)), hn::Set(kFloats, 256.0F)));
  }
};

void MixGrain(const Span& span, Edge edge, uint32_t x, uint32_t seed) {
  if (IsShort(span.count)) {
    return PlainKernels().mix_grain(span, edge, x, seed);
  }
  MixRow<Stream>(span, GrainWeights{ScaleForGrains(edge), x, seed});
}

struct StretchSource {
  const Stretch& stretch;
  Counting counting = {};
  HWY_INLINE Pixels operator()(int x) const {
    const auto last = hn::Set(kSigned, stretch.width - 1);
    const auto along = hn::Mul(counting.From(x), hn::Set(kSigned, stretch.step));
    const auto wanted = hn::Add(hn::Set(kSigned, stretch.position), along);
    const auto position = hn::Min(hn::Max(wanted, hn::Zero(kSigned)), hn::ShiftLeft<16>(last));
    const auto left = hn::ShiftRight<16>(position);
    const auto weight = BothHalves(hn::And(hn::ShiftRight<8>(position), hn::Set(kSigned, 0xFF)));
    const int begin = stretch.position + x * stretch.step;
    if (AreNeighbours(begin)) {
      // Neighbouring pixels come from neighbours or from the same pixel, so two vectors hold all of them.
      const int base = begin / kOnePixel;
      const auto lanes = hn::IndicesFromVec(kPixels, hn::BitCast(kPixels, hn::Sub(left, hn::Set(kSigned, base))));
      return Mix(hn::TableLookupLanes(hn::LoadU(kPixels, stretch.source + base), lanes),
                 hn::TableLookupLanes(hn::LoadU(kPixels, stretch.source + base + 1), lanes), weight);
    }
    if (AreNear(begin)) {
      return PickedFromNear(begin, left, weight);
    }
    const auto right = hn::Min(hn::Add(left, hn::Set(kSigned, 1)), last);
    return Mix(hn::GatherIndex(kPixels, stretch.source, left), hn::GatherIndex(kPixels, stretch.source, right), weight);
  }

  /// Whether the vector that begins at `begin` reads no further than one vector and a pixel, all inside the row.
  HWY_INLINE bool AreNeighbours(int32_t begin) const {
    return stretch.step >= 0 && stretch.step <= kOnePixel && begin >= 0 && begin / kOnePixel + Lanes() < stretch.width;
  }

  /// Gathering costs more than reading the whole stretch of the row, unless that is far longer than what is kept of it;
  /// the fewer pixels a vector has, the sooner.
  HWY_INLINE bool AreNear(int32_t begin) const {
    return stretch.step > kOnePixel && stretch.step <= Lanes() * kOnePixel && begin >= 0 &&
           LastLeft(begin) + Lanes() < stretch.width;
  }
  HWY_INLINE int LastLeft(int32_t begin) const { return (begin + (Lanes() - 1) * stretch.step) / kOnePixel; }

  /// Reads the row vector by vector; each pixel stays as the last vector that begins at or before it has it.
  HWY_INLINE Pixels PickedFromNear(int32_t begin, Signed left, Pixels weight) const {
    const int end = LastLeft(begin) + 1;
    auto from = hn::Zero(kPixels);
    auto to = from;
    for (int base = begin / kOnePixel; base < end; base += Lanes()) {
      const auto offset = hn::Sub(left, hn::Set(kSigned, base));
      const auto inside = hn::And(offset, hn::Set(kSigned, Lanes() - 1));
      const auto lanes = hn::IndicesFromVec(kPixels, hn::BitCast(kPixels, inside));
      const auto begun = hn::RebindMask(kPixels, hn::Gt(offset, hn::Set(kSigned, -1)));
      from = hn::IfThenElse(begun, hn::TableLookupLanes(hn::LoadU(kPixels, stretch.source + base), lanes), from);
      to = hn::IfThenElse(begun, hn::TableLookupLanes(hn::LoadU(kPixels, stretch.source + base + 1), lanes), to);
    }
    return Mix(from, to, weight);
  }
};

void StretchRow(uint32_t* target, int count, const Stretch& stretch) {
  if (IsShort(count)) {
    return PlainKernels().stretch(target, count, stretch);
  }
  WriteRow<Stream>(target, count, StretchSource{stretch});
}

void StretchNear(uint32_t* target, int count, const Stretch& stretch) {
  if (IsShort(count)) {
    return PlainKernels().stretch_near(target, count, stretch);
  }
  WriteRow<Near>(target, count, StretchSource{stretch});
}

// --- Column sums: a vector of pixels becomes two vectors of words, the lower and the upper half of the pixels.

const hn::Repartition<uint8_t, decltype(kPixels)> kBytes;
const hn::Half<decltype(kBytes)> kHalfBytes;
using Words = hn::VFromD<decltype(kWords)>;
using Bytes = hn::VFromD<decltype(kBytes)>;

/// The mixed pixels of a row. Most rows of a blur show one picture only, and that one is not mixed.
class MixedRow {
 public:
  HWY_INLINE MixedRow(const Span& span, int weight)
      : m_from(weight == kFullWeight ? span.to : span.from),
        m_to(span.to),
        m_weight(OneWeight(weight)),
        m_is_single(weight == 0 || weight == kFullWeight) {}

  HWY_INLINE Bytes At(int x) const {
    const auto from = hn::LoadU(kPixels, m_from + x);
    return hn::BitCast(kBytes, m_is_single ? from : Mix(from, hn::LoadU(kPixels, m_to + x), m_weight));
  }

 private:
  const uint32_t* m_from;
  const uint32_t* m_to;
  Pixels m_weight;
  bool m_is_single;
};

HWY_INLINE Words Lower(Bytes bytes) {
  return hn::PromoteTo(kWords, hn::LowerHalf(kHalfBytes, bytes));
}
HWY_INLINE Words Upper(Bytes bytes) {
  return hn::PromoteTo(kWords, hn::UpperHalf(kHalfBytes, bytes));
}

HWY_INLINE void AddTo(ColumnSum* sums, Words values) {
  hn::StoreU(hn::Add(hn::LoadU(kWords, sums), values), kWords, sums);
}

HWY_INLINE Span Rest(const Span& span, int done) {
  return {nullptr, span.from + done, span.to + done, span.count - done};
}

void AddSums(ColumnSum* sums, const Span& entering, int weight) {
  const MixedRow row(entering, weight);
  int x = 0;
  for (; x + Lanes() <= entering.count; x += Lanes()) {
    const auto bytes = row.At(x);
    AddTo(sums + 4 * x, Lower(bytes));
    AddTo(sums + 4 * x + 2 * Lanes(), Upper(bytes));
  }
  PlainKernels().add_sums(sums + 4 * x, Rest(entering, x), weight);
}

/// Moves sums on and gives their means.
struct Slide {
  Words half;
  Words reciprocal;
  HWY_INLINE explicit Slide(Divisor rows)
      : half(hn::Set(kWords, rows.half)), reciprocal(hn::Set(kWords, rows.reciprocal)) {}

  HWY_INLINE void operator()(ColumnSum* sums, ColumnSum* means, Words entering, Words leaving) const {
    const auto sum = hn::Sub(hn::Add(hn::LoadU(kWords, sums), entering), leaving);
    hn::StoreU(sum, kWords, sums);
    hn::StoreU(hn::MulHigh(hn::Add(sum, half), reciprocal), kWords, means);
  }
};

void SlideSums(ColumnSum* sums, ColumnSum* means, const Span& entering, const Span& leaving, int weight, int radius) {
  const MixedRow in(entering, weight);
  const MixedRow out(leaving, weight);
  const Slide slide(Divisor(2 * radius + 1));
  const int upper = 2 * Lanes();
  int x = 0;
  for (; x + Lanes() <= entering.count; x += Lanes()) {
    const auto added = in.At(x);
    const auto taken = out.At(x);
    slide(sums + 4 * x, means + 4 * x, Lower(added), Lower(taken));
    slide(sums + 4 * x + upper, means + 4 * x + upper, Upper(added), Upper(taken));
  }
  PlainKernels().slide_sums(sums + 4 * x, means + 4 * x, Rest(entering, x), Rest(leaving, x), weight, radius);
}

// --- A running sum advances by two pixels of four words each.

const hn::FixedTag<uint16_t, 8> kPair;
const hn::FixedTag<int16_t, 8> kSignedPair;
const hn::FixedTag<uint64_t, 2> kPairPixels;
const hn::FixedTag<uint8_t, 8> kPairBytes;
using Pair = hn::VFromD<decltype(kPair)>;

/// Both pixels become a copy of the second.
HWY_INLINE Pair Second(Pair pair) {
  const auto pixels = hn::BitCast(kPairPixels, pair);
  return hn::BitCast(kPair, hn::InterleaveUpper(kPairPixels, pixels, pixels));
}

/// The second pixel becomes the sum of both.
HWY_INLINE Pair Running(Pair pair) {
  return hn::Add(pair, hn::BitCast(kPair, hn::ShiftLeftLanes<1>(kPairPixels, hn::BitCast(kPairPixels, pair))));
}

/// Both pixels: one column.
HWY_INLINE Pair Twice(const ColumnSum* mean) {
  const auto one = hn::LoadU(hn::Half<decltype(kPair)>(), mean);
  return hn::Combine(kPair, one, one);
}

/// Both pixels: the sum of all columns of an even number.
HWY_INLINE Pair SumOf(const ColumnSum* means, int columns) {
  auto sum = hn::Zero(kPair);
  for (int x = 0; x < columns; x += 2) {
    sum = hn::Add(sum, hn::LoadU(kPair, means + 4 * x));
  }
  return Second(Running(sum));
}

/// The means of two sums, as bytes.
struct PairMean {
  Pair half;
  Pair reciprocal;
  HWY_INLINE explicit PairMean(Divisor columns)
      : half(hn::Set(kPair, columns.half)), reciprocal(hn::Set(kPair, columns.reciprocal)) {}

  HWY_INLINE hn::VFromD<decltype(kPairBytes)> operator()(Pair sum) const {
    return hn::DemoteTo(kPairBytes, hn::BitCast(kSignedPair, hn::MulHigh(hn::Add(sum, half), reciprocal)));
  }
};

void Box(uint32_t* target, int count, const ColumnSum* means, int radius) {
  const PairMean mean(Divisor(2 * radius + 1));
  const ColumnSum* entering = means + 4 * (2 * radius);
  auto last = hn::Add(SumOf(means, 2 * radius), Twice(entering));
  target[0] = hn::GetLane(hn::BitCast(hn::FixedTag<uint32_t, 2>(), mean(last)));
  int x = 1;
  for (; x + 2 <= count; x += 2) {
    const auto change = hn::Sub(hn::LoadU(kPair, entering + 4 * x), hn::LoadU(kPair, means + 4 * (x - 1)));
    const auto sum = hn::Add(last, Running(change));
    hn::StoreU(mean(sum), kPairBytes, reinterpret_cast<uint8_t*>(target + x));
    last = Second(sum);
  }
  if (x < count) {
    PlainKernels().box(target + x, count - x, means + 4 * x, radius);
  }
}

const Kernels* GetKernels() {
  static const Kernels kernels = {hwy::TargetName(HWY_TARGET),
                                  Copy,
                                  MixOne,
                                  MixNear,
                                  MixColour,
                                  MixLine,
                                  MixRing,
                                  MixSweep,
                                  MixGrain,
                                  StretchRow,
                                  StretchNear,
                                  AddSums,
                                  SlideSums,
                                  Box};
  return &kernels;
}

#endif

}  // namespace sim::lumaview::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace sim::lumaview {

#ifdef LUMAVIEW_NEON_KERNELS
const Kernels* NeonKernels() {
  return HWY_STATIC_DISPATCH(GetKernels)();
}
#else
HWY_EXPORT(GetKernels);
const Kernels* DispatchedKernels() {
  return HWY_DYNAMIC_DISPATCH(GetKernels)();
}
#endif

}  // namespace sim::lumaview
#endif
