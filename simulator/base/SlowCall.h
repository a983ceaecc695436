// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_BASE_SLOWCALL_H
#define SIMULATOR_BASE_SLOWCALL_H

#include <chrono>
#include <string_view>

namespace sim {

/// Stands in a library's exported call. If that took longer than the limit, the log says so once it is over: somebody
/// has waited for it, perhaps with a lock. Any thread.
class SlowCall {
 public:
  /// No call of the platform waits for a decoder or for the screen, so even a loaded machine is far from this.
  static constexpr std::chrono::milliseconds kLimit{1000};

  /// `component` and `call` outlive this object.
  SlowCall(std::string_view component, std::string_view call, std::chrono::milliseconds limit = kLimit)
      : m_component(component), m_call(call), m_limit(limit) {}
  ~SlowCall();
  SlowCall(const SlowCall&) = delete;
  SlowCall& operator=(const SlowCall&) = delete;

 private:
  const std::string_view m_component;
  const std::string_view m_call;
  const std::chrono::milliseconds m_limit;
  const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};

}  // namespace sim

#endif
