// SPDX-License-Identifier: Apache-2.0
/// The kernels as ordinary loops: what processors without vectors run, and what the vector kernels are tested against.
#include <cmath>
#include <cstring>

#include "simulator/lumaview/effect/Kernels.h"
#include "simulator/lumaview/effect/Pixel.h"

namespace sim::lumaview {
namespace {

template <typename Weight>
void MixBy(const Span& span, const Weight& weight) {
  for (int i = 0; i < span.count; ++i) {
    span.target[i] = MixPixels(span.from[i], span.to[i], static_cast<uint32_t>(weight(i)));
  }
}

void Copy(uint32_t* target, const uint32_t* source, int count) {
  std::memcpy(target, source, static_cast<size_t>(count) * sizeof *target);
}

void MixOne(const Span& span, int weight) {
  MixBy(span, [weight](int) { return weight; });
}

void MixColour(uint32_t* target, const uint32_t* source, int count, uint32_t colour, int weight) {
  for (int i = 0; i < count; ++i) {
    target[i] = MixPixels(source[i], colour, static_cast<uint32_t>(weight));
  }
}

void MixLine(const Span& span, Edge edge, float x) {
  MixBy(span, [=](int i) { return SmoothWeight(edge.start + edge.slope * (x + static_cast<float>(i))); });
}

void MixRing(const Span& span, Edge edge, float x, float y) {
  const float square = y * y;
  MixBy(span, [=](int i) {
    const float across = x + static_cast<float>(i);
    return SmoothWeight(edge.start + edge.slope * std::sqrt(across * across + square));
  });
}

void MixSweep(const Span& span, Edge edge, float x, float up) {
  MixBy(span, [=](int i) { return SmoothWeight(edge.start + edge.slope * Turn(x + static_cast<float>(i), up)); });
}

void MixGrain(const Span& span, Edge edge, uint32_t x, uint32_t seed) {
  const Edge scaled = ScaleForGrains(edge);
  MixBy(span, [=](int i) { return GrainWeight(scaled, Grain(x + static_cast<uint32_t>(i), seed)); });
}

void StretchRow(uint32_t* target, int count, const Stretch& stretch) {
  const int last = stretch.width - 1;
  for (int i = 0; i < count; ++i) {
    const int position = std::clamp(stretch.position + i * stretch.step, 0, last * kOnePixel);
    const int left = position / kOnePixel;
    const int right = std::min(left + 1, last);
    target[i] = MixPixels(stretch.source[left], stretch.source[right], static_cast<uint32_t>(position >> 8) & 0xFF);
  }
}

template <typename Apply>
void ForEachByte(ColumnSum* sums, const Span& span, int weight, const Apply& apply) {
  for (int i = 0; i < span.count; ++i) {
    const uint32_t pixel = MixPixels(span.from[i], span.to[i], static_cast<uint32_t>(weight));
    for (int byte = 0; byte < 4; ++byte) {
      apply(sums[4 * i + byte], (pixel >> (8 * byte)) & 0xFF);
    }
  }
}

void AddSums(ColumnSum* sums, const Span& entering, int weight) {
  ForEachByte(sums, entering, weight,
              [](ColumnSum& sum, uint32_t value) { sum = static_cast<ColumnSum>(sum + value); });
}

void SlideSums(ColumnSum* sums, ColumnSum* means, const Span& entering, const Span& leaving, int weight, int radius) {
  AddSums(sums, entering, weight);
  ForEachByte(sums, leaving, weight, [](ColumnSum& sum, uint32_t value) { sum = static_cast<ColumnSum>(sum - value); });
  const Divisor rows(2 * radius + 1);
  for (int i = 0; i < 4 * entering.count; ++i) {
    means[i] = static_cast<ColumnSum>(rows.Mean(sums[i]));
  }
}

void Box(uint32_t* target, int count, const ColumnSum* means, int radius) {
  const Divisor columns(2 * radius + 1);
  std::fill_n(target, count, 0U);
  for (int byte = 0; byte < 4; ++byte) {
    uint32_t sum = 0;
    for (int i = 0; i < 2 * radius; ++i) {
      sum += means[4 * i + byte];
    }
    for (int i = 0; i < count; ++i) {
      sum += means[4 * (i + 2 * radius) + byte];
      target[i] |= columns.Mean(sum) << (8 * byte);
      sum -= means[4 * i + byte];
    }
  }
}

}  // namespace

const Kernels& PlainKernels() {
  static constexpr Kernels kernels = {"plain",  Copy,     MixOne,     MixOne,     MixColour, MixLine,   MixRing,
                                      MixSweep, MixGrain, StretchRow, StretchRow, AddSums,   SlideSums, Box};
  return kernels;
}

}  // namespace sim::lumaview
