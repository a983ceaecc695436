// SPDX-License-Identifier: Apache-2.0
#include "simulator/vconf/Subscriptions.h"

#include <algorithm>
#include <utility>

namespace sim::vconf {
namespace {

/// The store's number for the type of a value. It holds texts only.
constexpr int kTextType = 1;

}  // namespace

Status Subscriptions::Add(const char* key, vconf_callback_fn callback, void* userData) {
  const std::lock_guard lock(m_mutex);
  if (m_watch == nullptr) {
    SIM_TRY(StartLocked());
  }
  const auto newest = m_watch->NewestSequence();
  if (!newest) {
    return newest.error();
  }
  m_subscriptions.push_back(std::make_shared<const Subscription>(Subscription{key, callback, userData, *newest}));
  return Ok();
}

bool Subscriptions::Remove(const char* key, vconf_callback_fn callback) {
  const std::lock_guard lock(m_mutex);
  const auto found = std::ranges::find_if(m_subscriptions, [&](const auto& subscription) {
    return subscription->key == key && subscription->callback == callback;
  });
  if (found == m_subscriptions.end()) {
    return false;
  }
  m_subscriptions.erase(found);
  if (m_subscriptions.empty()) {
    m_watch.reset();
  }
  return true;
}

void Subscriptions::Stop() {
  std::unique_lock lock(m_mutex);
  do {  // again when the callback that was waited for has subscribed to something
    m_subscriptions.clear();
    m_watch.reset();
    m_callbackEnded.wait(lock, [this] { return !IsRunningElsewhereLocked(); });
  } while (!m_subscriptions.empty());
}

Status Subscriptions::StartLocked() {
  const auto folder = Store::SessionFolder();
  if (!folder) {
    return folder.error();
  }
  auto store = Store::Open(*folder);
  if (!store) {
    return store.error();
  }
  auto watch = Watch::Create(**store, nullptr, [this](const Record& record) { Deliver(record); });
  if (!watch) {
    return watch.error();
  }
  m_watch = std::move(*watch);
  return Ok();
}

void Subscriptions::Deliver(const Record& record) {
  std::unique_lock lock(m_mutex);
  const auto subscriptions = m_subscriptions;
  lock.unlock();
  for (const auto& subscription : subscriptions) {
    if (subscription->key == record.key && subscription->since < record.sequence) {
      DeliverTo(subscription, record);
    }
  }
}

/// Unless it was removed in the meantime.
void Subscriptions::DeliverTo(const std::shared_ptr<const Subscription>& subscription, const Record& record) {
  std::unique_lock lock(m_mutex);
  if (std::ranges::find(m_subscriptions, subscription) == m_subscriptions.end()) {
    return;
  }
  const std::thread::id outer = std::exchange(m_running, std::this_thread::get_id());
  lock.unlock();

  std::string key = record.key;
  std::string value = record.value;
  keynode_t node{key.data(), kTextType, {}, nullptr};
  node.value.s = value.data();
  subscription->callback(&node, subscription->userData);

  lock.lock();
  m_running = outer;  // of a callback that runs the loop itself, or none
  m_callbackEnded.notify_all();
}

bool Subscriptions::IsRunningElsewhereLocked() const {
  return m_running != std::thread::id() && m_running != std::this_thread::get_id();
}

}  // namespace sim::vconf
