// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_VCONF_SUBSCRIPTIONS_H
#define SIMULATOR_VCONF_SUBSCRIPTIONS_H

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/vconf.h"
#include "simulator/base/Result.h"
#include "simulator/vconf/include/Store.h"
#include "simulator/vconf/include/Watch.h"

namespace sim::vconf {

/// The subscriptions of this process. They share one watch on the default context, which exists while there are any.
/// Any thread; no lock is held while a callback runs, and a callback may call everything in here.
class Subscriptions {
 public:
  Status Add(const char* key, vconf_callback_fn callback, void* userData);

  /// Removes the oldest subscription with this key and callback; false when there is none. A callback that is running
  /// is not waited for.
  bool Remove(const char* key, vconf_callback_fn callback);

  /// Removes all and waits for a callback that is running on another thread.
  void Stop();

 private:
  struct Subscription {
    std::string key;
    vconf_callback_fn callback;
    void* userData;
    uint64_t since;  ///< the sequence number of the newest record when it was made
  };

  Status StartLocked();
  void Deliver(const Record& record);
  void DeliverTo(const std::shared_ptr<const Subscription>& subscription, const Record& record);
  bool IsRunningElsewhereLocked() const;

  std::mutex m_mutex;
  std::condition_variable m_callbackEnded;
  std::unique_ptr<Watch> m_watch;
  std::vector<std::shared_ptr<const Subscription>> m_subscriptions;
  std::thread::id m_running;  ///< the thread that a callback runs on; none for no callback
};

}  // namespace sim::vconf

#endif
