// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_ANIMATE_DISPLAYS_H
#define SIMULATOR_LUMAVIEW_ANIMATE_DISPLAYS_H

#include <map>
#include <memory>
#include <mutex>

#include "simulator/lumaview/animate/Presenter.h"

namespace sim::lumaview {

/// The windows that the library draws on. Thread-safe.
class Displays {
 public:
  Displays(WorkerPool& pool, const Clock& clock) : m_pool(pool), m_clock(clock) {}
  ~Displays();
  Displays(const Displays&) = delete;
  Displays& operator=(const Displays&) = delete;

  /// Prepares drawing on `window`; nothing happens when it is prepared already. Errors: those of `Presenter::Open`.
  Status Init(unsigned long window);
  /// Takes the pictures off `window`. Errors: kBadArgument where nothing was prepared.
  Status Destroy(unsigned long window);
  /// Null where nothing is prepared or the window is gone.
  std::shared_ptr<Presenter> Find(unsigned long window) const;

  /// Of the window that was seen last; a television's screen before there was one.
  Size GetLastSize() const;

 private:
  void StoreLastSize(Size size);

  WorkerPool& m_pool;
  const Clock& m_clock;
  std::mutex m_changing;  ///< one window is prepared or given up at a time; taken before `m_mutex`
  mutable std::mutex m_mutex;
  std::map<unsigned long, std::shared_ptr<Presenter>> m_presenters;
  Size m_last_size{1920, 1080};
};

}  // namespace sim::lumaview

#endif
