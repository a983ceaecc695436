// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_EXIF_H
#define SIMULATOR_LUMAVIEW_DECODE_EXIF_H

#include <cstdint>
#include <span>
#include <vector>

namespace sim::lumaview {

struct Exif {
  uint8_t orientation = 1;         ///< 1..8; 1 also where the file says nonsense
  std::vector<uint8_t> thumbnail;  ///< a JPEG, or empty
};

/// Reads an EXIF block. `tiff` begins with the TIFF header "II" or "MM", as PNG and WebP store it; a JPEG's leading
/// "Exif" is cut off by the caller. Damaged blocks give what could be read.
Exif ParseExif(std::span<const uint8_t> tiff);

}  // namespace sim::lumaview

#endif
