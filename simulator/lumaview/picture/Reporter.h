// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_PICTURE_REPORTER_H
#define SIMULATOR_LUMAVIEW_PICTURE_REPORTER_H

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/lumaview.h"

namespace sim::lumaview {

/// Calls the callers' callbacks: one thread, one callback at a time, in the order of the reports, no lock held.
/// Thread-safe.
class Reporter {
 public:
  /// One picture's or effect's callbacks.
  class Recipient {
   public:
    explicit Recipient(void* record) : m_record(record) {}

   private:
    friend class Reporter;
    void* const m_record;
    // Guarded by the reporter's mutex.
    std::map<lumaview_event_type_e, lumaview_event_cb> m_callbacks;
    bool m_closed = false;
  };
  using RecipientPtr = std::shared_ptr<Recipient>;

  Reporter() = default;
  /// Waits for a callback that runs; what is left is dropped.
  ~Reporter();
  Reporter(const Reporter&) = delete;
  Reporter& operator=(const Reporter&) = delete;

  /// For `record`'s callbacks. Throws std::system_error when the system gives no thread to make them on: who asks for
  /// reports later is not told that none will come.
  RecipientPtr AddRecipient(void* record);
  /// A null callback ends the reports of that type.
  void SetCallback(const RecipientPtr& recipient, lumaview_event_type_e type, lumaview_event_cb callback);
  bool HasCallback(const RecipientPtr& recipient, lumaview_event_type_e type);
  /// Reports later; nothing when there is no callback of this type by then or the recipient is closed. `owner` is
  /// what the record is a part of; it is held until the callback has returned.
  void Post(const RecipientPtr& recipient, std::shared_ptr<const void> owner, lumaview_event_type_e type,
            lumaview_event_result_e result);
  /// Once this returns no callback of `recipient` runs or will run, except one that this is called from.
  void Close(const RecipientPtr& recipient);

 private:
  struct Report {
    RecipientPtr recipient;
    std::shared_ptr<const void> owner;
    lumaview_event_type_e type;
    lumaview_event_result_e result;
  };

  void Run();
  void Deliver(const Report& report, std::unique_lock<std::mutex>& lock);

  std::mutex m_mutex;
  std::condition_variable m_posted;
  std::condition_variable m_returned;
  std::deque<Report> m_reports;
  const Recipient* m_running = nullptr;  ///< whose callback runs
  std::thread m_thread;                  ///< started with the first recipient
  bool m_ending = false;
};

}  // namespace sim::lumaview

#endif
