// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_OUTPUTQUEUE_H
#define SIMULATOR_RPC_OUTPUTQUEUE_H

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <string_view>

#include "simulator/base/UniqueFd.h"

namespace sim::rpc {

/// Writes messages to a descriptor without ever waiting for its reader. Any thread.
class OutputQueue {
 public:
  /// `out`: a socket, pipe, terminal or file, with no other writer. Above `limit` waiting bytes the queue breaks.
  OutputQueue(UniqueFd out, size_t limit);

  /// Writes `message` and what stands around it, a line end where nothing else is said, or queues what the reader does
  /// not take. False when the queue is broken.
  bool Send(std::string_view message, std::string_view before = "", std::string_view after = "\n");

  /// As `Send`, but leaves the writing to the next `Flush`, unless much waits already.
  bool SendLater(std::string_view message, std::string_view before = "", std::string_view after = "\n");

  /// Writes what the reader takes now. False when the queue is broken: nothing can be written any more.
  bool Flush();

  /// Waits until everything is written, at most for `limit`. False when something is left.
  bool Drain(std::chrono::milliseconds limit);

  size_t Waiting() const { return m_waiting; }  ///< bytes
  bool IsBroken() const { return m_broken; }
  /// Why nothing can be written any more.
  std::string BreakReason() const;
  int Descriptor() const { return m_out.Get(); }

 private:
  bool Add(size_t enough, std::string_view message, std::string_view before, std::string_view after);
  bool FlushLocked();
  bool WriteSomeLocked();
  ssize_t WriteNow(std::string_view bytes) const;

  const UniqueFd m_out;
  const bool m_isSocket;
  const size_t m_limit;

  mutable std::mutex m_mutex;  ///< held for writes that do not block
  std::string m_bytes;
  size_t m_written = 0;  ///< of `m_bytes`
  std::atomic<size_t> m_waiting = 0;
  std::atomic<bool> m_broken = false;
  int m_error = 0;  ///< that broke it; 0: the reader was too far behind
};

}  // namespace sim::rpc

#endif
