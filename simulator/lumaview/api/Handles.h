// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_API_HANDLES_H
#define SIMULATOR_LUMAVIEW_API_HANDLES_H

#include <memory>
#include <mutex>
#include <unordered_map>

namespace sim::lumaview {

/// The live handles of one kind, by the address of their record: whatever pointer a caller passes, only one that was
/// handed out and not destroyed yet is ever followed. Thread-safe.
template <typename Handle>
class Handles {
 public:
  void Add(std::shared_ptr<Handle> handle) {
    const std::lock_guard lock(m_mutex);
    m_last = handle;
    m_handles.emplace(handle->GetRecord(), std::move(handle));
  }

  /// Null when `record` is not a live handle's.
  std::shared_ptr<Handle> Find(const void* record) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_handles.find(record);
    return found == m_handles.end() ? nullptr : found->second;
  }

  /// Takes the handle out, so that of several threads that destroy it one does.
  std::shared_ptr<Handle> Remove(const void* record) {
    const std::lock_guard lock(m_mutex);
    const auto node = m_handles.extract(record);
    if (node.empty()) {
      return nullptr;
    }
    if (m_last.lock() == node.mapped()) {
      m_last.reset();  // a thread that reports to it may hold it a moment longer
    }
    return std::move(node.mapped());
  }

  /// The one made last; null when it is gone.
  std::shared_ptr<Handle> GetLast() const {
    const std::lock_guard lock(m_mutex);
    return m_last.lock();
  }

 private:
  mutable std::mutex m_mutex;
  std::unordered_map<const void*, std::shared_ptr<Handle>> m_handles;
  std::weak_ptr<Handle> m_last;
};

}  // namespace sim::lumaview

#endif
