// SPDX-License-Identifier: Apache-2.0
/// What effects do to one stretch of a row. Each kernel exists twice, as an ordinary loop and with vectors, and both
/// give the same pixels bit for bit; every effect is written once, on top of this table. All are thread-safe.
#ifndef SIMULATOR_LUMAVIEW_EFFECT_KERNELS_H
#define SIMULATOR_LUMAVIEW_EFFECT_KERNELS_H

#include <cstdint>

namespace sim::lumaview {

/// A stretch of one row in all three pictures. `target` overlaps neither source.
struct Span {
  uint32_t* target;
  const uint32_t* from;
  const uint32_t* to;
  int count;  ///< pixels, 0 or more
};

/// Weights are 0..kFullWeight parts of `to`; the two ends give `from` and `to` themselves.
inline constexpr int kFullWeight = 256;

/// A soft edge between the two pictures: the weight of `to` at a position is SmoothStep(start + slope * position).
struct Edge {
  float start;
  float slope;
  /// Where the weight becomes kFullWeight * SmoothStep(`value`); `slope` is not 0.
  float Position(float value) const { return (value - start) / slope; }
};

/// One pixel is this much in fixed-point source positions.
inline constexpr int kOnePixel = 1 << 16;

/// Where a stretched row is read: target pixel i comes from source position `position + i * step`, in parts of
/// kOnePixel, 0 being the middle of the first source pixel. What lies outside repeats the nearest pixel.
/// Every position reached, and `width` itself, stays below 32768 pixels either side of 0.
struct Stretch {
  const uint32_t* source;
  int width;  ///< of the source row, pixels
  int32_t position;
  int32_t step;
};

/// Four 16-bit sums or means a pixel, in the order of its bytes.
using ColumnSum = uint16_t;

/// Kernels write past the cache where they can, because a frame is not read back here; `FinishStores` follows before
/// another thread or process may look. Those marked "near" keep the result in the cache for the next step.
struct Kernels {
  const char* name;  ///< of the instruction set

  void (*copy)(uint32_t* target, const uint32_t* source, int count);
  /// One weight for the whole span.
  void (*mix)(const Span& span, int weight);
  void (*mix_near)(const Span& span, int weight);
  /// Towards one colour instead of `to`.
  void (*mix_colour)(uint32_t* target, const uint32_t* source, int count, uint32_t colour, int weight);

  /// Position: x, x + 1, ...
  void (*mix_line)(const Span& span, Edge edge, float x);
  /// Position: the distance of (x + i, y) from (0, 0).
  void (*mix_ring)(const Span& span, Edge edge, float x, float y);
  /// Position: the turn of the clock hand that points from (0, 0) to (x + i, up), 0..1 from twelve o'clock.
  void (*mix_sweep)(const Span& span, Edge edge, float x, float up);
  /// Position: noise 0..1, a function of x + i and `seed` alone. The weight grows evenly, without SmoothStep.
  void (*mix_grain)(const Span& span, Edge edge, uint32_t x, uint32_t seed);

  /// Linear interpolation between neighbours.
  void (*stretch)(uint32_t* target, int count, const Stretch& stretch);
  void (*stretch_near)(uint32_t* target, int count, const Stretch& stretch);

  /// Adds a mixed row to the column sums. `target` of a row is not used, here and below.
  void (*add_sums)(ColumnSum* sums, const Span& entering, int weight);
  /// Adds one mixed row, takes another away, and gives each column its mean of 2 * radius + 1 rows.
  void (*slide_sums)(ColumnSum* sums, ColumnSum* means, const Span& entering, const Span& leaving, int weight,
                     int radius);
  /// Pixel i is the average of columns i .. i + 2 * radius; count is 1 or more. `means` has count + 2 * radius columns,
  /// radius is 1..kMaxBlurRadius.
  void (*box)(uint32_t* target, int count, const ColumnSum* means, int radius);
};

/// The largest radius for which (2 * radius + 1) * 255 fits a column sum.
inline constexpr int kMaxBlurRadius = 127;

/// Ordinary loops.
const Kernels& PlainKernels();
/// The best vectors that this processor has, or the ordinary loops where it has none. Asks the processor anew.
const Kernels& VectorKernels();
/// What `VectorKernels` of the module found the first time, or the ordinary loops where there is no module. The first
/// call loads it, which takes some milliseconds.
const Kernels& BestKernels();

/// The object that the module exports: its `VectorKernels`.
using KernelsFunction = const Kernels& (*)();
inline constexpr char kKernelsSymbol[] = "lumaview_module_kernels";

/// Makes what the kernels wrote visible to others. Reentrant.
void FinishStores();

}  // namespace sim::lumaview

#endif
