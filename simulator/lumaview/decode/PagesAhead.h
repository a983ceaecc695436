// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_PAGESAHEAD_H
#define SIMULATOR_LUMAVIEW_DECODE_PAGESAHEAD_H

#include <atomic>
#include <cstddef>
#include <span>
#include <thread>

namespace sim::lumaview {

/// Takes the pages of memory that will all be written, on a thread of its own, before the writer comes to them: one by
/// one they would cost him a fault each, and more where a machine has to get them from its host. Owned and started by
/// one thread.
class PagesAhead {
 public:
  enum class From {
    kBegin,  ///< where the writer gains little by little on the thread
    kEnd,    ///< where the writer is soon everywhere, so that each takes his half
  };

  PagesAhead() = default;
  /// Ends the thread, as soon as it has come to the end of a part.
  ~PagesAhead();
  PagesAhead(const PagesAhead&) = delete;
  PagesAhead& operator=(const PagesAhead&) = delete;

  /// Once. `memory`: mapped, from the begin of a page on, for as long as this object lives. Does nothing for little
  /// memory, or where no thread can be made.
  void Start(std::span<std::byte> memory, From from);

 private:
  void Take(std::span<std::byte> memory, From from) const;

  std::atomic<bool> m_stop = false;
  std::thread m_thread;
};

}  // namespace sim::lumaview

#endif
