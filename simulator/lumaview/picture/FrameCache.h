// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_PICTURE_FRAMECACHE_H
#define SIMULATOR_LUMAVIEW_PICTURE_FRAMECACHE_H

#include <list>
#include <mutex>
#include <optional>

#include "simulator/lumaview/picture/Rendering.h"

namespace sim::lumaview {

/// Still pictures that were decoded and never shown: dropping a prepared picture to show the same file with an effect
/// decodes once. Thread-safe.
class FrameCache {
 public:
  /// `budget`: bytes of pixels; what was put in first is dropped first.
  explicit FrameCache(size_t budget) : m_budget(budget) {}

  void Put(Rendered rendered);
  /// Takes out what was made of the same file, in the same state, for the same view and window size.
  std::optional<Rendered> Take(const FileIdentity& identity, const View& view, Size size);

 private:
  const size_t m_budget;
  std::mutex m_mutex;
  std::list<Rendered> m_entries;  ///< oldest first
};

}  // namespace sim::lumaview

#endif
