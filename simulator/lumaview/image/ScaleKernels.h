// SPDX-License-Identifier: Apache-2.0
/// The inner loops of scaling. Samples between the two passes are 16-bit numbers with `kMiddleBits` of fraction: the
/// overshoot of the filter stays inside, and two passes round once each.
#ifndef SIMULATOR_LUMAVIEW_IMAGE_SCALEKERNELS_H
#define SIMULATOR_LUMAVIEW_IMAGE_SCALEKERNELS_H

#include <cstdint>

#include "simulator/lumaview/image/Axis.h"

namespace sim::lumaview {

inline constexpr int kMiddleBits = 5;

/// Filters one row along `axis` into `axis.GetCount()` pixels of `channels` (1 or 4) samples each.
/// `row`: bytes; one pixel behind the axis' range must be readable (see `Axis::First`).
void ScaleRow(const uint8_t* row, int channels, const Axis& axis, int16_t* out);

/// Mixes `taps` rows of `count` samples by `weights` (parts of `Axis::kOne`) into bytes, clamped to 0..255.
void MixRows(const int16_t* const* rows, const int16_t* weights, int taps, int count, uint8_t* out);

namespace plain {
void ScaleRow(const uint8_t* row, int channels, const Axis& axis, int16_t* out);
void MixRows(const int16_t* const* rows, const int16_t* weights, int taps, int count, uint8_t* out);
}  // namespace plain

}  // namespace sim::lumaview

#endif
