// SPDX-License-Identifier: Apache-2.0
/// The segments in front of a JPEG's picture data, read with limits of our own.
#ifndef SIMULATOR_LUMAVIEW_DECODE_JPEGSEGMENTS_H
#define SIMULATOR_LUMAVIEW_DECODE_JPEGSEGMENTS_H

#include <vector>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {

struct JpegSegments {
  std::vector<uint8_t> exif;  ///< begins with the TIFF header; empty = none
  std::vector<uint8_t> icc;   ///< put together from its parts; empty = none or incomplete
  std::vector<uint8_t> mpf;   ///< the index of a multi-picture file; begins with the TIFF header
  uint64_t mpf_position = 0;  ///< where in the file that header stands: the index's offsets count from there
};

/// Reads from `start`, where "FF D8" stands, up to the first scan. Never fails: what cannot be read is missing.
JpegSegments ReadJpegSegments(Source& source, uint64_t start);

/// One picture of a multi-picture file.
struct MpfPicture {
  uint32_t attributes = 0;
  uint64_t position = 0;  ///< in the file
};

/// The pictures that the index lists, at most 16; empty when it is damaged. The first one is the file's own beginning.
std::vector<MpfPicture> ReadMpfIndex(const JpegSegments& segments, uint64_t start);

}  // namespace sim::lumaview

#endif
