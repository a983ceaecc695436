// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_VCONF_INCLUDE_WATCH_H
#define SIMULATOR_VCONF_INCLUDE_WATCH_H

#include <glib.h>

#include <cstdint>
#include <functional>
#include <memory>

#include "simulator/base/Result.h"
#include "simulator/vconf/include/Store.h"

namespace sim::vconf {

/// Reports every value that is set after it was made, by any process, in the order of setting; values set while nobody
/// runs the context are reported when somebody does. Ends when it is released, from any thread; a report that is
/// running then is not waited for.
class Watch {
 public:
  using OnRecord = std::function<void(const Record&)>;

  /// `onRecord` is called on the thread that runs `context` (null: the default one), once per turn of its loop, and is
  /// released there or with the watch. Fails where no more inotify instances are to be had.
  static Result<std::unique_ptr<Watch>> Create(const Store& store, GMainContext* context, OnRecord onRecord);

  /// The sequence number of the newest record in the store.
  Result<uint64_t> NewestSequence() const;

  ~Watch();
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

 private:
  struct Source;
  Watch(std::shared_ptr<StoreFile> file, GSource* source) : m_file(std::move(file)), m_source(source) {}

  const std::shared_ptr<StoreFile> m_file;
  GSource* const m_source;
};

}  // namespace sim::vconf

#endif
