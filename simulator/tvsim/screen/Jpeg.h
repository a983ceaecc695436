// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SCREEN_JPEG_H
#define SIMULATOR_TVSIM_SCREEN_JPEG_H

#include <string>

#include "simulator/tvsim/screen/Picture.h"

namespace sim::tvsim {

/// A baseline JPEG of good quality, fast rather than small. Sides of 1..16384 are the caller's duty (asserted).
std::string EncodeJpeg(const Picture& picture);

}  // namespace sim::tvsim

#endif
