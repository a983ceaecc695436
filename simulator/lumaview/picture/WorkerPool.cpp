// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/picture/WorkerPool.h"

#include <system_error>
#include <utility>

#include "simulator/base/Thread.h"

namespace sim::lumaview {

WorkerPool::~WorkerPool() {
  {
    const std::lock_guard lock(m_mutex);
    m_ending = true;
    m_tasks.clear();
  }
  m_posted.notify_all();
  for (std::thread& thread : m_threads) {
    thread.join();
  }
}

void WorkerPool::Post(Task task) {
  const std::lock_guard lock(m_mutex);
  m_tasks.push_back(std::move(task));
  if (m_tasks.size() > m_idle && m_threads.size() < m_capacity) {
    AddThread();
  }
  m_posted.notify_one();
}

void WorkerPool::AddThread() {
  try {
    m_threads.push_back(StartThread("lumaview-decode", [this] { Run(); }));
  } catch (const std::system_error&) {
    if (m_threads.empty()) {
      m_tasks.pop_back();
      throw;
    }
    // The threads that there are will come to it.
  }
}

void WorkerPool::Run() {
  std::unique_lock lock(m_mutex);
  while (true) {
    ++m_idle;
    m_posted.wait(lock, [this] { return m_ending || !m_tasks.empty(); });
    --m_idle;
    if (m_ending) {
      return;
    }
    Task task = std::move(m_tasks.front());
    m_tasks.pop_front();
    lock.unlock();
    task();
    // What the task holds, pictures among it, is let go without the lock.
    task = nullptr;
    lock.lock();
  }
}

}  // namespace sim::lumaview
