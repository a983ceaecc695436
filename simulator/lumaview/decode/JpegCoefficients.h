// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_JPEGCOEFFICIENTS_H
#define SIMULATOR_LUMAVIEW_DECODE_JPEGCOEFFICIENTS_H

#include <cstddef>
#include <cstdio>
// jpeglib.h needs FILE and size_t before it.
#include <jpeglib.h>

#include <memory>
#include <vector>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"
#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {

/// The coefficients of a progressive JPEG, which are all needed until the last scan: in memory up to a budget, beyond
/// it in a mapped unlinked file, whose pages the system may take back at any time. (Mapping a moving window of that
/// file instead makes every scan fault in every page again: measured, three times the time of the whole decode.)
class JpegCoefficients {
 public:
  JpegCoefficients();
  ~JpegCoefficients();
  JpegCoefficients(const JpegCoefficients&) = delete;
  JpegCoefficients& operator=(const JpegCoefficients&) = delete;

  /// Notes an array of `rows` rows of `blocks` blocks.
  jvirt_barray_ptr Request(JDIMENSION blocks, JDIMENSION rows);

  /// Which of the arrays it is, by the order of the requests.
  size_t IndexOf(jvirt_barray_ptr array) const;

  /// Makes room for all that was requested, zeroed, by the limit and the file that `source` has for it; once. Errors:
  /// kOutOfMemory.
  Status Realize(const Source& source);

  /// The list of an array's rows from `first` on; null when there are not `count` of them. libjpeg's smoothing also
  /// looks at rows before and behind those that it asks for, so the list is that of all rows.
  JBLOCKARRAY Access(jvirt_barray_ptr array, JDIMENSION first, JDIMENSION count);

 private:
  struct Array;

  std::vector<std::unique_ptr<Array>> m_arrays;
  UniqueFd m_file;  ///< empty while everything is in memory
};

}  // namespace sim::lumaview

#endif
