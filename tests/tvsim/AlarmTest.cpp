// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/Alarm.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <utility>

namespace sim::tvsim {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

class GivenAlarm : public testing::Test {
 protected:
  /// False when that takes a minute.
  bool RunUntilRings(int rings) {
    bool is_late = false;
    const guint limit = g_timeout_add_seconds(
        60,
        [](gpointer flag) -> gboolean {
          *static_cast<bool*>(flag) = true;
          return G_SOURCE_CONTINUE;
        },
        &is_late);
    while (m_rings < rings && !is_late) {
      g_main_context_iteration(nullptr, TRUE);
    }
    g_source_remove(limit);
    return !is_late;
  }

  int m_rings = 0;
  const std::unique_ptr<Alarm> m_alarm = std::move(*Alarm::Create([this] { ++m_rings; }));
};

TEST_F(GivenAlarm, RingsOnceAndNotBeforeItsTime) {
  const auto begin = steady_clock::now();
  EXPECT_FALSE(m_alarm->IsSet());
  m_alarm->RingAfter(milliseconds(20));
  EXPECT_TRUE(m_alarm->IsSet());

  ASSERT_TRUE(RunUntilRings(1));
  EXPECT_GE(steady_clock::now() - begin, milliseconds(20));
  EXPECT_FALSE(m_alarm->IsSet());
}

TEST_F(GivenAlarm, RingsAgainWhenItIsSetAgain) {
  m_alarm->RingAfter(milliseconds(1));
  ASSERT_TRUE(RunUntilRings(1));
  m_alarm->RingAfter(milliseconds(0));
  EXPECT_TRUE(RunUntilRings(2));
}

TEST_F(GivenAlarm, ALaterTimeTakesThePlaceOfAnEarlierOneThatHasPassed) {
  m_alarm->RingAfter(milliseconds(1));
  const auto passed = steady_clock::now() + milliseconds(2);
  while (steady_clock::now() < passed) {
  }
  const auto begin = steady_clock::now();
  m_alarm->RingAfter(milliseconds(20));

  ASSERT_TRUE(RunUntilRings(1));
  EXPECT_GE(steady_clock::now() - begin, milliseconds(20));
}

}  // namespace
}  // namespace sim::tvsim
