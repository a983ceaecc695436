// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/api/Export.h"
#include "simulator/lumaview/decode/Decoder.h"
#include "simulator/lumaview/include/lumaview_simulator.h"

LUMAVIEW_EXPORT const char* lumaview_strerror(int code) {
  using namespace sim::lumaview;
  switch (code) {
    case 0:
      return "success";
    case kBadArgument:
      return "bad argument";
    case kNotReady:
      return "nothing is decoded yet";
    case kOutOfMemory:
      return "out of memory";
    case kCannotOpen:
      return "the file cannot be opened";
    case kUnknownFormat:
      return "the format is not known";
    case kDamaged:
      return "the picture is damaged";
    case kDisplayFailed:
      return "the display failed";
    case kOverLimit:
      return "the picture is over a limit";
    case kCancelled:
      return "no longer wanted";
    default:
      return "unknown error";
  }
}
