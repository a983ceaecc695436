// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/cage/CageFinding.h"

#include <cstdlib>
#include <string_view>

#include "simulator/lumaview/cage/Bars.h"

namespace sim::lumaview {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsInstrumented = true;  // their run-time libraries need calls and memory that the cage forbids
#else
constexpr bool kIsInstrumented = false;
#endif

}  // namespace

const char* ReasonAgainstCage() {
  const char* wanted = std::getenv("LUMAVIEW_CAGE");
  if (wanted != nullptr && std::string_view(wanted) == "off") {
    return "LUMAVIEW_CAGE is off";
  }
  if (kIsInstrumented) {
    return "this build is instrumented";
  }
  const bool asked = wanted != nullptr && std::string_view(wanted) == "on";
  return LUMAVIEW_CAGE_BY_DEFAULT || asked ? nullptr : "it was built without PICTURE_CAGE";
}

CageFinding ExamineCage() {
  if (const char* reason = ReasonAgainstCage(); reason != nullptr) {
    return {false, std::string("pictures are decoded in the engine: ") + reason};
  }
  const uint32_t bars = cage::TryBars();
  return {bars == cage::kAllBars, cage::DescribeBars(bars)};
}

}  // namespace sim::lumaview
