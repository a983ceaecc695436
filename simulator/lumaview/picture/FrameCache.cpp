// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/picture/FrameCache.h"

#include <algorithm>
#include <utility>

namespace sim::lumaview {

void FrameCache::Put(Rendered rendered) {
  if (!rendered.frame || rendered.stream) {
    return;  // an animation cannot go on from its first frame alone
  }
  std::list<Rendered> dropped;  // memory is given back after the lock
  const std::lock_guard lock(m_mutex);
  m_entries.push_back(std::move(rendered));
  size_t bytes = 0;
  for (const Rendered& entry : m_entries) {
    bytes += entry.frame->GetBytes();
  }
  while (bytes > m_budget) {
    bytes -= m_entries.front().frame->GetBytes();
    dropped.splice(dropped.end(), m_entries, m_entries.begin());
  }
}

std::optional<Rendered> FrameCache::Take(const FileIdentity& identity, const View& view, Size size) {
  const std::lock_guard lock(m_mutex);
  const auto found = std::find_if(m_entries.begin(), m_entries.end(), [&](const Rendered& entry) {
    return entry.file->GetIdentity() == identity && entry.view == view && entry.frame->GetSize() == size;
  });
  if (found == m_entries.end()) {
    return std::nullopt;
  }
  Rendered rendered = std::move(*found);
  m_entries.erase(found);
  return rendered;
}

}  // namespace sim::lumaview
