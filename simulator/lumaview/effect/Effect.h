// SPDX-License-Identifier: Apache-2.0
/// The 24 transition effects: pure functions from two pictures and a progress to a picture between them. No clock, no
/// memory taken, no state; time lives in whoever calls. Thread-safe.
#ifndef SIMULATOR_LUMAVIEW_EFFECT_EFFECT_H
#define SIMULATOR_LUMAVIEW_EFFECT_EFFECT_H

#include <string_view>

#include "simulator/lumaview/image/Image.h"

namespace sim::lumaview {

struct Kernels;

/// Effects are numbered from 0 to kEffectCount - 1, in the order of the list.
inline constexpr int kEffectCount = 24;

/// The name of effect `number` (0..23), as video tools name such transitions.
std::string_view EffectName(int number);

/// The number of the effect called `name`, or -1.
int FindEffect(std::string_view name);

/// All names in the order of their numbers, each followed by a line end; at most 254 characters.
std::string_view EffectList();

/// Draws rows [first_row, last_row) of effect `number` (0..23) into `target`, and no others, so bands may be drawn by
/// several threads at once and any split into bands gives the same picture.
/// `from`, `to` and `target` have the same size, sides of 1..16384; `target` overlaps neither (all asserted). Alpha is
/// 0xFF in, 0xFF out.
/// `progress`: 0 is `from` and 1 is `to`, bit for bit; what lies outside is taken as the nearer of the two.
void DrawEffect(int number, ConstImageView from, ConstImageView to, float progress, ImageView target, int first_row,
                int last_row);

/// As above, with kernels of the caller's choice; the picture is the same whatever they are.
void DrawEffectWith(const Kernels& kernels, int number, ConstImageView from, ConstImageView to, float progress,
                    ImageView target, int first_row, int last_row);

}  // namespace sim::lumaview

#endif
