// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_ENGINE_TIMER_H
#define SIMULATOR_TVSIM_ENGINE_TIMER_H

#include <glib.h>

#include <chrono>
#include <functional>
#include <utility>

namespace sim::tvsim {

/// Calls a function once after a time, unless it goes before. On the default main context.
class Timer {
 public:
  Timer(std::chrono::milliseconds after, std::function<void()> expire) : m_expire(std::move(expire)) {
    m_source = g_timeout_add(static_cast<guint>(after.count()), &Timer::OnTime, this);
  }
  ~Timer() {
    if (m_source != 0) {
      g_source_remove(m_source);
    }
  }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

 private:
  static gboolean OnTime(gpointer self) {
    auto* timer = static_cast<Timer*>(self);
    timer->m_source = 0;
    const auto expire = timer->m_expire;  // it may end this timer
    expire();
    return G_SOURCE_REMOVE;
  }

  std::function<void()> m_expire;
  guint m_source = 0;
};

}  // namespace sim::tvsim

#endif
