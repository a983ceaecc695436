// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_ANIMATE_TASKQUEUE_H
#define SIMULATOR_LUMAVIEW_ANIMATE_TASKQUEUE_H

#include <functional>
#include <mutex>
#include <vector>

#include "simulator/base/UniqueFd.h"

namespace sim::lumaview {

/// Work for a thread that sleeps in poll. `Post` is thread-safe; the rest is the sleeping thread's.
class TaskQueue {
 public:
  using Task = std::function<void()>;

  TaskQueue();

  /// False once the queue is closed; the task is not run then.
  bool Post(Task task);
  /// Readable while there are tasks.
  int GetFd() const { return m_event.Get(); }
  /// Runs what was posted, in order, without a lock held.
  void Run();
  /// Runs what was posted until now and takes no more.
  void Close();

 private:
  const UniqueFd m_event;
  std::mutex m_mutex;
  std::vector<Task> m_tasks;
  bool m_closed = false;
};

}  // namespace sim::lumaview

#endif
