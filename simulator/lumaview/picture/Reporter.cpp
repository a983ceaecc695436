// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/picture/Reporter.h"

#include <utility>

#include "simulator/base/Thread.h"

namespace sim::lumaview {

Reporter::~Reporter() {
  {
    const std::lock_guard lock(m_mutex);
    m_ending = true;
  }
  m_posted.notify_one();
  if (m_thread.joinable()) {
    m_thread.join();
  }
}

Reporter::RecipientPtr Reporter::AddRecipient(void* record) {
  const std::lock_guard lock(m_mutex);
  if (!m_thread.joinable()) {
    m_thread = StartThread("lumaview-report", [this] { Run(); });
  }
  return std::make_shared<Recipient>(record);
}

void Reporter::SetCallback(const RecipientPtr& recipient, lumaview_event_type_e type, lumaview_event_cb callback) {
  const std::lock_guard lock(m_mutex);
  recipient->m_callbacks[type] = callback;
}

bool Reporter::HasCallback(const RecipientPtr& recipient, lumaview_event_type_e type) {
  const std::lock_guard lock(m_mutex);
  const auto found = recipient->m_callbacks.find(type);
  return found != recipient->m_callbacks.end() && found->second != nullptr;
}

void Reporter::Post(const RecipientPtr& recipient, std::shared_ptr<const void> owner, lumaview_event_type_e type,
                    lumaview_event_result_e result) {
  const std::lock_guard lock(m_mutex);
  if (recipient->m_closed) {
    return;
  }
  m_reports.push_back({recipient, std::move(owner), type, result});
  m_posted.notify_one();
}

void Reporter::Close(const RecipientPtr& recipient) {
  std::deque<Report> dropped;  // let go after the lock: the last owner of a picture may be among them
  std::unique_lock lock(m_mutex);
  recipient->m_closed = true;
  for (auto report = m_reports.begin(); report != m_reports.end();) {
    if (report->recipient == recipient) {
      dropped.push_back(std::move(*report));
      report = m_reports.erase(report);
    } else {
      ++report;
    }
  }
  if (std::this_thread::get_id() != m_thread.get_id()) {
    m_returned.wait(lock, [&] { return m_running != recipient.get(); });
  }
  lock.unlock();
}

void Reporter::Run() {
  std::unique_lock lock(m_mutex);
  while (true) {
    m_posted.wait(lock, [this] { return m_ending || !m_reports.empty(); });
    if (m_ending) {
      return;
    }
    Report report = std::move(m_reports.front());
    m_reports.pop_front();
    Deliver(report, lock);
    lock.unlock();
    report = {};
    lock.lock();
  }
}

void Reporter::Deliver(const Report& report, std::unique_lock<std::mutex>& lock) {
  const auto found = report.recipient->m_callbacks.find(report.type);
  if (found == report.recipient->m_callbacks.end() || found->second == nullptr) {
    return;
  }
  const lumaview_event_cb callback = found->second;
  m_running = report.recipient.get();
  lock.unlock();
  callback(report.recipient->m_record, report.type, report.result);
  lock.lock();
  m_running = nullptr;
  m_returned.notify_all();
}

}  // namespace sim::lumaview
