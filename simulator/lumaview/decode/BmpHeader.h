// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_BMPHEADER_H
#define SIMULATOR_LUMAVIEW_DECODE_BMPHEADER_H

#include <array>
#include <vector>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {

/// Bits of one colour in a stored pixel.
struct BmpMask {
  uint32_t bits = 0;

  /// The masked value, stretched to 0..255; a mask without bits gives `missing`.
  uint8_t Get(uint32_t pixel, uint8_t missing) const;
};

/// The headers of a bitmap file: those of OS/2 1 and 2 and all five of Windows.
struct BmpHeader {
  enum class Coding { kPlain, kRle8, kRle4, kRle24 };

  Size size;
  bool is_top_down = false;
  int bits = 0;  ///< of a stored pixel: 1, 2, 4, 8, 16, 24 or 32
  Coding coding = Coding::kPlain;
  std::array<BmpMask, 4> masks{};  ///< red, green, blue, alpha; for 16 and 32 bits
  bool has_alpha = false;
  std::vector<std::array<uint8_t, 4>> palette;  ///< B, G, R, 255; for up to 8 bits, as many as there are indices
  uint64_t data = 0;                            ///< where the pixels begin
  std::vector<uint8_t> icc;
};

/// Errors: kDamaged, kOverLimit.
Result<BmpHeader> ReadBmpHeader(Source& source);

}  // namespace sim::lumaview

#endif
