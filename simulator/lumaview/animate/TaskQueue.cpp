// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/animate/TaskQueue.h"

#include <sys/eventfd.h>

#include <new>
#include <utility>

namespace sim::lumaview {

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
  eventfd_write(m_event.Get(), 1);
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
