// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/Handover.h"

#include <sched.h>

#include <algorithm>

namespace sim::lumaview {
namespace {

/// The calling thread goes to another of its processors, if it has one, and may come back later.
void LeaveProcessor(int processor) {
  cpu_set_t all;
  if (sched_getaffinity(0, sizeof all, &all) != 0 || CPU_COUNT(&all) < 2) {
    return;
  }
  cpu_set_t others = all;
  CPU_CLR(static_cast<size_t>(processor), &others);
  if (sched_setaffinity(0, sizeof others, &others) == 0) {
    sched_setaffinity(0, sizeof all, &all);
  }
}

}  // namespace

bool Handover::AwaitRoom() {
  std::unique_lock lock(m_mutex);
  if (m_given >= m_over + m_room) {
    m_free.wait(lock, [this] { return HalfIsFree() || m_refused; });
  }
  return !m_refused;
}

void Handover::Give() {
  std::unique_lock lock(m_mutex);
  ++m_given;
  if (!HalfIsFree()) {
    m_filled.notify_one();
  }
  const int takers_processor = m_takers_processor;
  lock.unlock();
  KeepApart(takers_processor);
}

void Handover::End() {
  const std::lock_guard lock(m_mutex);
  m_ended = true;
  m_filled.notify_one();
}

bool Handover::Take(uint32_t piece) {
  std::unique_lock lock(m_mutex);
  m_takers_processor = sched_getcpu();
  m_over = std::max(m_over, piece);
  if (HalfIsFree()) {
    m_free.notify_one();
  }
  if (m_given <= piece) {
    m_filled.wait(lock, [this] { return !HalfIsFree() || m_ended; });
  }
  return m_given > piece;
}

void Handover::Refuse() {
  const std::lock_guard lock(m_mutex);
  m_refused = true;
  m_free.notify_one();
}

/// Where kernels take the machine to be busy they wake a thread on the processor of who wakes it, and two that wait for
/// each other by turns would share it to the end while another is idle.
void Handover::KeepApart(int takers_processor) {
  if (sched_getcpu() == takers_processor) {
    LeaveProcessor(takers_processor);
  }
}

}  // namespace sim::lumaview
