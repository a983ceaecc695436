// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/screen/Painter.h"

#include <cstdlib>
#include <string>
#include <string_view>

#include "simulator/base/Log.h"
#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {
namespace {

struct PainterRow {
  std::string_view name;
  PainterResult (*create)(const PaintTarget&);
};

constexpr PainterRow kPainters[] = {
    {"memfd", CreateMemfdPainter},
    {"sysv", CreateSysvPainter},
    {"chunks", CreateChunkPainter},
};

std::string_view WantedPainter() {
  const char* wanted = std::getenv("LUMAVIEW_PUT");
  return wanted == nullptr || *wanted == '\0' ? "auto" : wanted;
}

}  // namespace

PainterResult CreatePainter(const PaintTarget& target) {
  const std::string_view wanted = WantedPainter();
  Error last{kDisplayFailed, "LUMAVIEW_PUT is \"" + std::string(wanted) + "\"; it may be auto, memfd, sysv or chunks"};
  for (const PainterRow& row : kPainters) {
    if (wanted != "auto" && wanted != row.name) {
      continue;
    }
    auto painter = row.create(target);
    if (painter) {
      return painter;
    }
    Log(LogLevel::kWarning, "lumaview", "drawing by " + std::string(row.name) + ": " + painter.error().reason);
    last = painter.error();
  }
  return last;
}

}  // namespace sim::lumaview
