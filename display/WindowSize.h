// SPDX-License-Identifier: Apache-2.0
#ifndef DISPLAY_WINDOWSIZE_H
#define DISPLAY_WINDOWSIZE_H

namespace olm {

/// The protocol carries sizes in 16 bits, and a window of no size is an error that ends a process without an error
/// handler. So what needs a size is left out where there is none to carry.
inline bool IsCarried(int width, int height) {
  constexpr int kSizeBits = 0xFFFF;
  return width >= 1 && height >= 1 && (width & kSizeBits) != 0 && (height & kSizeBits) != 0;
}

}  // namespace olm

#endif
