// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_EAGERPOLL_H
#define SIMULATOR_RPC_EAGERPOLL_H

#include <glib.h>

#include <chrono>

namespace sim::rpc {

/// Lets `context` look for more to do for a moment before it sleeps, as long as what it waits for comes quickly: a
/// command takes less time than waking up a thread on another processor. A process that may use one processor only goes
/// on sleeping at once, for whoever it waits for needs that processor. One thread runs `context`, and no other that
/// polls eagerly.
void PollEagerly(GMainContext* context);

/// When a loop looks again instead of sleeping: while its last sleep was shorter than a moment. Loop thread only.
class Eagerness {
 public:
  using Duration = std::chrono::nanoseconds;

  /// Several times what a wake-up takes. Commands that come one by one as often as this cost a processor; what comes
  /// less often, as pictures and their events do, costs nothing.
  static constexpr Duration kMoment = std::chrono::microseconds(200);

  /// Waits once. `look` and `sleep` say how many descriptors are ready, `now` what time it is, from any origin.
  template <typename Look, typename Sleep, typename Now>
  int Wait(Look look, Sleep sleep, Now now) {
    const Duration start = now();
    while (m_isEager && now() - start < kMoment) {
      if (const int ready = look(); ready != 0) {
        return ready;
      }
    }
    const int ready = sleep();
    m_isEager = now() - start < kMoment;
    return ready;
  }

 private:
  bool m_isEager = false;
};

}  // namespace sim::rpc

#endif
