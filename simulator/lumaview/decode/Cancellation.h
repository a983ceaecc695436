// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_CANCELLATION_H
#define SIMULATOR_LUMAVIEW_DECODE_CANCELLATION_H

#include <sys/eventfd.h>

#include <atomic>

#include "simulator/base/UniqueFd.h"

namespace sim::lumaview {

/// Set once nobody wants the result any more: decoders look at the flag every few rows, who waits for another process
/// polls the descriptor. Thread-safe.
class Cancellation {
 public:
  void Cancel() {
    m_flag.store(true, std::memory_order_relaxed);
    eventfd_write(m_event.Get(), 1);
  }
  bool IsCancelled() const { return m_flag.load(std::memory_order_relaxed); }
  const std::atomic<bool>& GetFlag() const { return m_flag; }
  /// Readable from the cancelling on; -1 when the system has no more descriptors.
  int GetFd() const { return m_event.Get(); }

 private:
  std::atomic<bool> m_flag{false};
  const UniqueFd m_event{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

}  // namespace sim::lumaview

#endif
