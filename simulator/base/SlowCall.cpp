// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/SlowCall.h"

#include <string>

#include "simulator/base/Log.h"

namespace sim {

SlowCall::~SlowCall() {
  const auto took = std::chrono::steady_clock::now() - m_begin;
  if (took > m_limit) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(took).count();
    Log(LogLevel::kWarning, m_component, std::string(m_call) + " took " + std::to_string(milliseconds) + " ms");
  }
}

}  // namespace sim
