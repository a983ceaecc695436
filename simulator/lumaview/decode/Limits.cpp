// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/Limits.h"

#include <charconv>
#include <cstdlib>
#include <string>
#include <string_view>

#include "simulator/base/Log.h"

namespace sim::lumaview {
namespace {

struct NamedLimit {
  std::string_view name;
  uint64_t Limits::*member;
};
constexpr NamedLimit kNamedLimits[] = {
    {"pixels", &Limits::pixels},
    {"whole_pixels", &Limits::whole_pixels},
    {"side", &Limits::side},
    {"whole_file_bytes", &Limits::whole_file_bytes},
    {"metadata_bytes", &Limits::metadata_bytes},
    {"frames", &Limits::frames},
    {"scans", &Limits::scans},
    {"coefficient_bytes", &Limits::coefficient_bytes},
    {"jpeg_thread_bytes", &Limits::jpeg_thread_bytes},
    {"jpeg_thread_pixels", &Limits::jpeg_thread_pixels},
    {"seconds", &Limits::seconds},
};

bool SetLimit(Limits& limits, std::string_view assignment) {
  const size_t equals = assignment.find('=');
  if (equals == std::string_view::npos) {
    return false;
  }
  const std::string_view digits = assignment.substr(equals + 1);
  uint64_t value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc() || end != digits.data() + digits.size()) {
    return false;
  }
  for (const NamedLimit& limit : kNamedLimits) {
    if (limit.name == assignment.substr(0, equals)) {
      limits.*limit.member = value;
      return true;
    }
  }
  return false;
}

}  // namespace

Limits ParseLimits(std::string_view text) {
  Limits limits;
  while (!text.empty()) {
    const size_t comma = text.find(',');
    const std::string_view assignment = text.substr(0, comma);
    if (!SetLimit(limits, assignment)) {
      Log(LogLevel::kWarning, "lumaview", "LUMAVIEW_LIMITS: skipped \"" + std::string(assignment) + "\"");
    }
    text = comma == std::string_view::npos ? std::string_view() : text.substr(comma + 1);
  }
  return limits;
}

const Limits& GetLimits() {
  static const Limits limits = [] {
    const char* text = std::getenv("LUMAVIEW_LIMITS");
    return ParseLimits(text != nullptr ? text : "");
  }();
  return limits;
}

}  // namespace sim::lumaview
