// SPDX-License-Identifier: Apache-2.0
/// What memory alone allows: dst = avg(a, b), the least that any mix of two pictures must do.
#ifndef BENCH_EFFECTS_LIMIT_H
#define BENCH_EFFECTS_LIMIT_H

#include "simulator/lumaview/image/Image.h"

namespace bench {

/// Both write every pixel of `target`; all three have one size, rows without gaps, and `target` is aligned to 64 bytes.
void AverageThroughCache(sim::lumaview::ConstImageView a, sim::lumaview::ConstImageView b,
                         sim::lumaview::ImageView target);
void AverageStreaming(sim::lumaview::ConstImageView a, sim::lumaview::ConstImageView b,
                      sim::lumaview::ImageView target);

}  // namespace bench

#endif
