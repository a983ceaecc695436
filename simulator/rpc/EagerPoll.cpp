// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/EagerPoll.h"

#include <sched.h>

namespace sim::rpc {
namespace {

bool HasSeveralProcessors() {
  cpu_set_t processors;
  return sched_getaffinity(0, sizeof processors, &processors) == 0 && CPU_COUNT(&processors) > 1;
}

Eagerness::Duration Now() {
  return std::chrono::steady_clock::now().time_since_epoch();
}

gint Poll(GPollFD* descriptors, guint count, gint timeout) {
  static thread_local Eagerness eagerness;  // a poll function knows no more than its thread
  const auto look = [&] {
    const gint ready = g_poll(descriptors, count, 0);
    if (ready == 0) {
      sched_yield();  // to whom it waits for, if he is on this processor
    }
    return ready;
  };
  const auto sleep = [&] { return g_poll(descriptors, count, timeout); };
  return timeout == 0 ? sleep() : eagerness.Wait(look, sleep, Now);
}

}  // namespace

void PollEagerly(GMainContext* context) {
  if (HasSeveralProcessors()) {
    g_main_context_set_poll_func(context, Poll);
  }
}

}  // namespace sim::rpc
