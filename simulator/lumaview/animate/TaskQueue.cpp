// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/animate/TaskQueue.h"

#include <sys/eventfd.h>

#include <cerrno>
#include <new>
#include <utility>

namespace sim::lumaview {
namespace {

constexpr int kTries = 3;

/// A wake-up that got lost would leave the thread asleep over its tasks. One that finds no room is there already.
void WakeUp(int event) {
  for (int tries = 0; tries < kTries && eventfd_write(event, 1) != 0 && errno != EAGAIN; ++tries) {
  }
}

}  // namespace

TaskQueue::TaskQueue() : m_event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!m_event) {
    throw std::bad_alloc();  // out of descriptors
  }
}

bool TaskQueue::Post(Task task) {
  const std::lock_guard lock(m_mutex);
  if (m_closed) {
    return false;
  }
  m_tasks.push_back(std::move(task));
  WakeUp(m_event.Get());
  return true;
}

void TaskQueue::Run() {
  std::vector<Task> tasks;
  {
    const std::lock_guard lock(m_mutex);
    tasks.swap(m_tasks);
    eventfd_t count = 0;
    eventfd_read(m_event.Get(), &count);
  }
  for (Task& task : tasks) {
    task();
    task = nullptr;
  }
}

void TaskQueue::Close() {
  {
    const std::lock_guard lock(m_mutex);
    m_closed = true;
  }
  Run();
}

}  // namespace sim::lumaview
