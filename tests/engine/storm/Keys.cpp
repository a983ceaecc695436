// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/storm/Keys.h"

#include <glib.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <vector>

#include "platform/vconf.h"

namespace storm {
namespace {

struct Subscription {
  std::string key;
  vconf_callback_fn callback;
  void* userData;
  std::deque<std::string> values;
};

struct Store {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<Subscription> subscriptions;
  std::vector<const void*> stopped;
  const void* running = nullptr;  ///< the user data of the delivery that runs
  std::atomic<bool> pending{false};
  std::function<void(const void*, const std::string&)> listener;
};

Store& TheStore() {
  static Store store;
  return store;
}

/// The store's mutex is held.
Subscription* Find(const void* userData) {
  auto& all = TheStore().subscriptions;
  const auto found = std::find_if(all.begin(), all.end(), [userData](const auto& s) { return s.userData == userData; });
  return found == all.end() ? nullptr : &*found;
}

/// The store's mutex is held.
void NotePending() {
  const auto& all = TheStore().subscriptions;
  TheStore().pending = std::any_of(all.begin(), all.end(), [](const auto& s) { return !s.values.empty(); });
}

struct Delivery {
  vconf_callback_fn callback;
  void* userData;
  std::string key;
  std::string value;
};

/// Takes the next value and marks its delivery as running; false when there is none.
bool TakeNext(Delivery& delivery) {
  Store& store = TheStore();
  const std::lock_guard<std::mutex> lock(store.mutex);
  for (Subscription& subscription : store.subscriptions) {
    if (subscription.values.empty()) continue;
    delivery = {subscription.callback, subscription.userData, subscription.key, subscription.values.front()};
    subscription.values.pop_front();
    store.running = delivery.userData;
    NotePending();
    return true;
  }
  store.pending = false;
  return false;
}

void DeliverNext() {
  constexpr int kTextType = 40;
  Delivery delivery{};
  if (!TakeNext(delivery)) return;
  keynode_t node{};
  node.keyname = delivery.key.data();
  node.type = kTextType;
  node.value.s = delivery.value.data();
  delivery.callback(&node, delivery.userData);
  Store& store = TheStore();
  if (store.listener) store.listener(delivery.userData, delivery.value);
  const std::lock_guard<std::mutex> lock(store.mutex);
  store.running = nullptr;
  store.changed.notify_all();
}

gboolean Prepare(GSource*, gint* timeout) {
  *timeout = -1;
  return TheStore().pending ? TRUE : FALSE;
}
gboolean Pending(GSource*) {
  return TheStore().pending ? TRUE : FALSE;
}
gboolean Dispatch(GSource*, GSourceFunc, gpointer) {
  DeliverNext();
  return G_SOURCE_CONTINUE;
}

/// On the process's default context for good, as a platform library's source is.
void AttachSource() {
  static GSourceFuncs functions = {&Prepare, &Pending, &Dispatch, nullptr, nullptr, nullptr};
  static GSource* const source = [] {
    GSource* made = g_source_new(&functions, sizeof(GSource));
    g_source_attach(made, nullptr);
    return made;
  }();
  static_cast<void>(source);
}

}  // namespace

bool SetKey(const void* engine, const std::string& value) {
  {
    const std::lock_guard<std::mutex> lock(TheStore().mutex);
    Subscription* subscription = Find(engine);
    if (subscription == nullptr) return false;
    subscription->values.push_back(value);
    TheStore().pending = true;
  }
  g_main_context_wakeup(nullptr);
  return true;
}

bool AwaitDeliveries(const void* engine, std::chrono::seconds limit) {
  Store& store = TheStore();
  std::unique_lock<std::mutex> lock(store.mutex);
  return store.changed.wait_for(lock, limit, [&store, engine] {
    const Subscription* subscription = Find(engine);
    return store.running != engine && (subscription == nullptr || subscription->values.empty());
  });
}

void StopDeliveries(const void* engine) {
  Store& store = TheStore();
  std::unique_lock<std::mutex> lock(store.mutex);
  store.stopped.push_back(engine);
  std::erase_if(store.subscriptions, [engine](const auto& s) { return s.userData == engine; });
  NotePending();
  store.changed.notify_all();
  store.changed.wait(lock, [&store, engine] { return store.running != engine; });
  // The next engine may stand at the same address.
  std::erase(store.stopped, engine);
}

void OnDelivered(std::function<void(const void*, const std::string&)> listener) {
  TheStore().listener = std::move(listener);
}

}  // namespace storm

using namespace storm;

int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* user_data) {
  AttachSource();
  const std::lock_guard<std::mutex> lock(TheStore().mutex);
  const auto& stopped = TheStore().stopped;
  if (std::find(stopped.begin(), stopped.end(), user_data) != stopped.end()) return 0;
  TheStore().subscriptions.push_back({key, callback, user_data, {}});
  return 0;
}

/// Does not wait for a delivery that runs.
int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback) {
  Store& store = TheStore();
  const std::lock_guard<std::mutex> lock(store.mutex);
  const auto found = std::find_if(store.subscriptions.begin(), store.subscriptions.end(),
                                  [=](const auto& s) { return s.key == key && s.callback == callback; });
  if (found == store.subscriptions.end()) return -1;
  store.subscriptions.erase(found);
  NotePending();
  store.changed.notify_all();
  return 0;
}
