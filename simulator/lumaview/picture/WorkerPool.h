// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_PICTURE_WORKERPOOL_H
#define SIMULATOR_LUMAVIEW_PICTURE_WORKERPOOL_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace sim::lumaview {

/// The threads that decode. Each is started when a task finds none free, and sleeps while there is nothing to do.
/// Thread-safe.
class WorkerPool {
 public:
  using Task = std::function<void()>;

  /// At most `threads` run at a time.
  explicit WorkerPool(size_t threads) : m_capacity(threads) {}
  /// Waits for the tasks that run; those that wait are dropped.
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  /// Tasks start in the order of their posting. Throws std::system_error when not even one thread can be had.
  void Post(Task task);

 private:
  void AddThread();
  void Run();

  const size_t m_capacity;
  std::mutex m_mutex;
  std::condition_variable m_posted;
  std::deque<Task> m_tasks;
  std::vector<std::thread> m_threads;
  size_t m_idle = 0;
  bool m_ending = false;
};

}  // namespace sim::lumaview

#endif
