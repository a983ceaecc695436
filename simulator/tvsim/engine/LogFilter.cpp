// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/LogFilter.h"

#include <algorithm>
#include <array>

#include "simulator/tvsim/engine/LogTail.h"

namespace sim::tvsim {
namespace {

constexpr std::array kTraces = {"==========> Enter", "==========> Leave", "lock m_EngineMut", "lock m_AdapterMut"};

bool Has(const std::string& line, const std::string& text) {
  return line.find(text) != std::string::npos;
}

}  // namespace

bool LogFilter::Wants(const std::string& line) const {
  if (!function.empty() && !Has(line, "][" + function + "(")) {
    return false;
  }
  if (failures && !Has(line, "\033[31m") && !Has(line, "\033[33m")) {
    return false;
  }
  if (no_traces && std::ranges::any_of(kTraces, [&](const char* trace) { return Has(line, trace); })) {
    return false;
  }
  return text.empty() || Has(WithoutColours(line), text);
}

}  // namespace sim::tvsim
