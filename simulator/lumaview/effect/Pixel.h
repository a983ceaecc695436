// SPDX-License-Identifier: Apache-2.0
/// The arithmetic of one pixel, as the ordinary loops do it and the vectors repeat it.
#ifndef SIMULATOR_LUMAVIEW_EFFECT_PIXEL_H
#define SIMULATOR_LUMAVIEW_EFFECT_PIXEL_H

#include <algorithm>
#include <bit>
#include <cstdint>

#include "simulator/lumaview/effect/Kernels.h"

namespace sim::lumaview {

/// 0 below 0, 1 above 1, and between them the cubic without a corner at either end.
inline float SmoothStep(float t) {
  const float clamped = std::min(std::max(t, 0.0F), 1.0F);
  return clamped * clamped * (3.0F - (clamped + clamped));
}

/// 2^23: a float this large has no fraction, so adding it rounds, and leaves the whole number in the lowest bits.
inline constexpr float kRounder = 8388608.0F;
inline constexpr int kRounded = 0x1FF;

/// SmoothStep as parts of kFullWeight.
inline int SmoothWeight(float t) {
  return std::bit_cast<int>(SmoothStep(t) * 256.0F + kRounder) & kRounded;
}

/// Bytes 0 and 2, or 1 and 3 once shifted down, share a word: a product of 255 and 256 leaves 16 bits to each.
inline uint32_t MixPixels(uint32_t from, uint32_t to, uint32_t weight) {
  constexpr uint32_t kEven = 0x00FF00FF;
  constexpr uint32_t kHalf = 0x00800080;
  const uint32_t rest = 256 - weight;
  const uint32_t even = (from & kEven) * rest + (to & kEven) * weight + kHalf;
  const uint32_t odd = ((from >> 8) & kEven) * rest + ((to >> 8) & kEven) * weight + kHalf;
  return ((even >> 8) & kEven) | (odd & ~kEven);
}

/// What one grain of noise is worth: 24 bits, the most that a float holds.
inline constexpr float kGrain = 1.0F / 16777216.0F;

/// Any two rounds of multiply and shift would do; these odd numbers spread neighbours well.
inline constexpr uint32_t kGrainFirst = 0x9E3779B1;
inline constexpr uint32_t kGrainSecond = 0x85EBCA77;

/// 0..2^24 - 1, evenly spread, from a place.
inline uint32_t Grain(uint32_t x, uint32_t seed) {
  const uint32_t bits = (x * kGrainFirst) ^ seed;
  return ((bits ^ (bits >> 15)) * kGrainSecond) >> 8;
}

/// The weight of a pixel whose noise is `grain`, for an edge whose `start` and `slope` are scaled by kFullWeight, the
/// slope by kGrain as well.
inline int GrainWeight(Edge scaled, uint32_t grain) {
  const float weight = scaled.start + scaled.slope * static_cast<float>(grain);
  return std::bit_cast<int>(std::min(std::max(weight, 0.0F), 256.0F) + kRounder) & kRounded;
}

inline Edge ScaleForGrains(Edge edge) {
  return {edge.start * 256.0F, edge.slope * (256.0F * kGrain)};
}

/// atan(z) / 2 pi for z in 0..1 is z times a polynomial in z squared, to 2e-6 of a turn.
inline constexpr float kTurn[5] = {0.15913362F, -0.05256880F, 0.02867033F, -0.01354934F, 0.00331601F};

/// The turn from twelve o'clock, clockwise, of the direction (x, up): 0..1.
inline float Turn(float x, float up) {
  const float across = x < 0.0F ? -x : x;
  const float along = up < 0.0F ? -up : up;
  const float longer = std::max(std::max(across, along), 0.25F);  // 0.25: the very centre has no direction
  const float z = std::min(across, along) / longer;
  const float q = z * z;
  const float eighth = z * ((((kTurn[4] * q + kTurn[3]) * q + kTurn[2]) * q + kTurn[1]) * q + kTurn[0]);
  const float quarter = across > along ? 0.25F - eighth : eighth;
  const float half = up < 0.0F ? 0.5F - quarter : quarter;
  return x < 0.0F ? 1.0F - half : half;
}

/// Division by a number of parts: (sum + half) * reciprocal >> 16 is the mean of `parts` bytes, 3..255 of them; exact
/// when they are equal, and within one level otherwise.
struct Divisor {
  uint16_t half;
  uint16_t reciprocal;
  explicit Divisor(int parts)
      : half(static_cast<uint16_t>(parts / 2)), reciprocal(static_cast<uint16_t>((65536 + parts / 2) / parts)) {}
  uint32_t Mean(uint32_t sum) const { return (sum + half) * reciprocal >> 16; }
};

}  // namespace sim::lumaview

#endif
