// SPDX-License-Identifier: Apache-2.0
/// The key-value store: one subscription at a time, deliveries by hand.
#include "platform/vconf.h"

#include <mutex>
#include <optional>
#include <string>

#include "adapter/CPictureAdapter.h"
#include "tests/kit/Journal.h"
#include "tests/kit/Names.h"
#include "tests/kit/Script.h"
#include "tests/kit/World.h"

namespace kit {
namespace {

struct Subscription {
  std::string key;
  vconf_callback_fn callback;
  void* userData;
};

struct Store {
  std::mutex mutex;
  std::optional<Subscription> subscription;
};

Store& TheStore() {
  static auto& store = *new Store;  // never destroyed: what is called while the process ends asks for it too
  return store;
}

std::string CallbackName(vconf_callback_fn callback) {
  return callback == &olm::CPictureAdapter::AppNotifyCB ? "AppNotifyCB" : "other";
}

std::optional<Subscription> Subscribed() {
  const std::lock_guard<std::mutex> lock(TheStore().mutex);
  return TheStore().subscription;
}

}  // namespace

bool DeliverNode(keynode_t* node) {
  const auto subscription = Subscribed();
  if (!subscription) return false;
  subscription->callback(node, subscription->userData);
  return true;
}

bool DeliverKey(const char* value) {
  constexpr int kTextType = 40;
  const auto subscription = Subscribed();
  if (!subscription) return false;
  std::string key = subscription->key;
  std::string text = value == nullptr ? "" : value;
  keynode_t node{};
  node.keyname = key.data();
  node.type = kTextType;
  node.value.s = value == nullptr ? nullptr : text.data();
  subscription->callback(&node, subscription->userData);
  return true;
}

void ResetVconf() {
  const std::lock_guard<std::mutex> lock(TheStore().mutex);
  TheStore().subscription.reset();
}

}  // namespace kit

using namespace kit;

int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* user_data) {
  Call call("vconf_notify_key_changed");
  call.Arg(Quoted(key)).Arg(CallbackName(callback)).Arg(NameOfEngine(user_data));
  if (!call.Fails()) {
    const std::lock_guard<std::mutex> lock(TheStore().mutex);
    if (TheStore().subscription) Violation("a second subscription without the first one's end");
    TheStore().subscription = Subscription{key, callback, user_data};
  }
  return call.Done(0);
}

int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback) {
  Call call("vconf_ignore_key_changed");
  call.Arg(Quoted(key)).Arg(CallbackName(callback));
  if (!call.Fails()) {
    const std::lock_guard<std::mutex> lock(TheStore().mutex);
    auto& subscription = TheStore().subscription;
    // As in the real store, only the same key and callback end it.
    if (subscription && subscription->key == key && subscription->callback == callback) subscription.reset();
  }
  return call.Done(0);
}
