// SPDX-License-Identifier: Apache-2.0
#ifndef BENCH_PICTURES_JPEGFLOOR_H
#define BENCH_PICTURES_JPEGFLOOR_H

#include "simulator/lumaview/image/Image.h"

namespace bench {

/// libjpeg-turbo alone: decodes the file at `path` at the smallest of the scales 1/8, 1/4, 1/2 and 1 that fills
/// `window` in one direction, and looks at no pixel. False when the file is no JPEG.
bool DecodeJpegFloor(const char* path, sim::lumaview::Size window);

}  // namespace bench

#endif
