// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_AVIFLOOPS_H
#define SIMULATOR_LUMAVIEW_DECODE_AVIFLOOPS_H

#include "simulator/lumaview/decode/Bytes.h"

namespace sim::lumaview {

/// How often the sequence in `file` plays, as the edit list of its first track says (ISO/IEC 14496-12); 0 = for ever,
/// also where there is no edit list or a damaged one. libavif tells from its version 1.0 on.
int ReadAvifLoops(Bytes file);

}  // namespace sim::lumaview

#endif
