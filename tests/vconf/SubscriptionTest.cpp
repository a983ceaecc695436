// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

#include "platform/vconf.h"
#include "simulator/base/CHandle.h"
#include "simulator/vconf/include/vconf_simulator.h"
#include "tests/vconf/SessionFixture.h"

namespace sim::vconf {
namespace {

using testing::ElementsAre;

constexpr const char* kKey = "db/KestWebApp/abcd1234";

struct Seen {
  std::vector<std::string> values;
};

void Collect(keynode_t* node, void* seen) {
  static_cast<Seen*>(seen)->values.emplace_back(std::string(node->keyname) + "=" + node->value.s);
}

void CollectToo(keynode_t* node, void* seen) {
  Collect(node, seen);
}

class GivenSession : public SessionFixture {
 protected:
  ~GivenSession() override { vconf_stop_deliveries(); }

  void SetState(std::string_view value) { Set(*m_store, kKey, value); }
  static void Subscribe(vconf_callback_fn callback, void* data) {
    ASSERT_EQ(vconf_notify_key_changed(kKey, callback, data), 0);
  }
  void RunUntilSeen(const std::vector<std::string>& expected) {
    RunUntil(nullptr, [&] { return m_seen.values.size() >= expected.size(); });
    EXPECT_EQ(m_seen.values, expected);
  }

  const std::unique_ptr<Store> m_store = OpenStore();
  Seen m_seen;
  const std::string m_pause = std::string(kKey) + "=pause";
  const std::string m_resume = std::string(kKey) + "=resume";
};

TEST_F(GivenSession, CallbackGetsWhatIsSetToItsKeyAfterwards) {
  SetState("before");
  Subscribe(Collect, &m_seen);
  Set(*m_store, "db/KestWebApp/other", "x");
  SetState("pause");
  SetState("resume");
  RunUntilSeen({m_pause, m_resume});
}

TEST_F(GivenSession, NodeHoldsOneText) {
  static keynode_t copy{};
  Subscribe([](keynode_t* node, void*) { copy = *node; }, nullptr);
  SetState("");
  RunUntil(nullptr, [] { return copy.keyname != nullptr; });
  EXPECT_NE(copy.value.s, nullptr);
  EXPECT_EQ(copy.next, nullptr);
}

TEST_F(GivenSession, SecondSubscriptionGetsWhatIsSetAfterItWasMade) {
  Seen second;
  Subscribe(Collect, &m_seen);
  SetState("pause");
  Subscribe(CollectToo, &second);
  SetState("resume");
  RunUntilSeen({m_pause, m_resume});
  EXPECT_THAT(second.values, ElementsAre(m_resume));
}

TEST_F(GivenSession, IgnoredKeyCallsNoMoreAlsoForWhatWasSetBefore) {
  Seen second;
  Subscribe(Collect, &m_seen);
  Subscribe(CollectToo, &second);
  SetState("pause");
  EXPECT_EQ(vconf_ignore_key_changed(kKey, CollectToo), 0);
  RunUntilSeen({m_pause});
  EXPECT_TRUE(second.values.empty());
}

TEST_F(GivenSession, SubscriptionMadeAgainMissesWhatWasSetBetween) {
  Subscribe(Collect, &m_seen);
  EXPECT_EQ(vconf_ignore_key_changed(kKey, Collect), 0);
  SetState("pause");
  Subscribe(Collect, &m_seen);
  SetState("resume");
  RunUntilSeen({m_resume});
}

TEST_F(GivenSession, WhatDoesNotExistCannotBeIgnored) {
  EXPECT_NE(vconf_ignore_key_changed(kKey, Collect), 0);
  Subscribe(Collect, &m_seen);
  EXPECT_NE(vconf_ignore_key_changed(kKey, CollectToo), 0);
  EXPECT_NE(vconf_ignore_key_changed("db/KestWebApp/other", Collect), 0);
  EXPECT_NE(vconf_ignore_key_changed(nullptr, Collect), 0);
}

TEST_F(GivenSession, BadSubscriptionsAreRefused) {
  EXPECT_NE(vconf_notify_key_changed(nullptr, Collect, nullptr), 0);
  EXPECT_NE(vconf_notify_key_changed(kKey, nullptr, nullptr), 0);
  unsetenv("VCONF_SESSION");
  EXPECT_NE(vconf_notify_key_changed(kKey, Collect, nullptr), 0);
}

TEST_F(GivenSession, CallbackMayEndItsOwnSubscription) {
  static std::atomic<int> calls = 0;
  const auto once = [](keynode_t*, void*) {
    ++calls;
    vconf_ignore_key_changed(kKey, nullptr);
    vconf_stop_deliveries();  // waits for every callback but this one
  };
  Subscribe(once, nullptr);
  SetState("pause");
  SetState("resume");
  RunUntil(nullptr, [] { return calls > 0; });
  for (int i = 0; i < 100; ++i) {
    g_main_context_iteration(nullptr, FALSE);
  }
  EXPECT_EQ(calls, 1);
}

/// A worker runs the default loop, and a callback on it that waits to be let go.
class GivenRunningCallback : public GivenSession {
 protected:
  GivenRunningCallback() {
    Subscribe(Wait, this);
    SetState("destroy");
    SetState("never delivered");
    m_entered.get_future().wait();
  }
  ~GivenRunningCallback() override {
    g_main_loop_quit(m_loop.get());
    m_worker.join();
  }

  static void Wait(keynode_t*, void* self) {
    auto& given = *static_cast<GivenRunningCallback*>(self);
    if (++given.m_calls == 1) {
      given.m_entered.set_value();
      given.m_release.get_future().wait();
      given.m_returned = true;
    }
  }

  std::promise<void> m_entered;
  std::promise<void> m_release;
  std::atomic<int> m_calls = 0;
  std::atomic<bool> m_returned = false;
  const CHandle<GMainLoop, g_main_loop_unref> m_loop{g_main_loop_new(nullptr, FALSE)};
  std::thread m_worker{[this] { g_main_loop_run(m_loop.get()); }};
};

TEST_F(GivenRunningCallback, IgnoreDoesNotWaitForIt) {
  EXPECT_EQ(vconf_ignore_key_changed(kKey, Wait), 0);
  EXPECT_FALSE(m_returned);
  m_release.set_value();
  vconf_stop_deliveries();
  EXPECT_EQ(m_calls, 1);
}

TEST_F(GivenRunningCallback, StopWaitsForItAndIsTheLastWord) {
  const auto stopped = std::async(std::launch::async, vconf_stop_deliveries);
  EXPECT_EQ(stopped.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  m_release.set_value();
  stopped.wait();
  EXPECT_TRUE(m_returned);
  const int calls = m_calls;
  std::promise<void> delivered;
  Subscribe([](keynode_t*, void* promise) { static_cast<std::promise<void>*>(promise)->set_value(); }, &delivered);
  SetState("to the new subscription only");
  delivered.get_future().wait();
  EXPECT_EQ(m_calls, calls);
}

}  // namespace
}  // namespace sim::vconf
