// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_EFFECT_KENBURNS_H
#define SIMULATOR_LUMAVIEW_EFFECT_KENBURNS_H

#include "simulator/lumaview/effect/Resample.h"

namespace sim::lumaview {

/// The part of the picture that a slow pan and zoom shows at `progress` (0..1, limited to it) on its way from `from` to
/// `to`. The zoom is even to the eye: equal steps multiply the size by equal factors, and one point of the picture
/// stands still.
Area KenBurnsArea(const Area& from, const Area& to, float progress);

/// Draws rows [first_row, last_row) of `target` from that part of `picture`, in steps far finer than a pixel, and no
/// other rows. A pure function: any split into bands gives the same picture.
/// `from` and `to` lie in the picture and have the target's aspect; each side is more than 0. For a sharp picture they
/// are not much larger than the target, in pixels (see Resampler). `target` does not overlap `picture`. Thread-safe.
void DrawKenBurns(ConstImageView picture, const Area& from, const Area& to, float progress, ImageView target,
                  int first_row, int last_row);

/// As above, with kernels of the caller's choice.
void DrawKenBurnsWith(const Kernels& kernels, ConstImageView picture, const Area& from, const Area& to, float progress,
                      ImageView target, int first_row, int last_row);

}  // namespace sim::lumaview

#endif
