// SPDX-License-Identifier: Apache-2.0
#include "simulator/vconf/include/Watch.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <random>
#include <vector>

#include "simulator/base/CHandle.h"
#include "tests/vconf/SessionFixture.h"

namespace sim::vconf {
namespace {

using testing::ElementsAre;

class GivenWatch : public SessionFixture {
 protected:
  std::unique_ptr<Watch> MakeWatch() {
    auto watch =
        Watch::Create(*m_store, m_context.get(), [this](const Record& record) { m_records.push_back(record); });
    EXPECT_TRUE(watch) << watch.error().reason;
    return watch ? std::move(*watch) : nullptr;
  }

  void RunUntilCount(size_t count) {
    RunUntil(m_context.get(), [&] { return m_records.size() >= count; });
    ASSERT_EQ(m_records.size(), count);
  }

  std::vector<std::string> Values() const {
    std::vector<std::string> values;
    for (const Record& record : m_records) {
      values.push_back(record.value);
    }
    return values;
  }

  const CHandle<GMainContext, g_main_context_unref> m_context{g_main_context_new()};
  const std::unique_ptr<Store> m_store = OpenStore();
  std::vector<Record> m_records;
};

TEST_F(GivenWatch, EveryValueComesOnceAndInOrder) {
  const auto watch = MakeWatch();
  Set(*m_store, "a", "1");
  Set(*m_store, "b", "2");
  Set(*m_store, "a", "1");
  RunUntilCount(3);
  EXPECT_THAT(Values(), ElementsAre("1", "2", "1"));
  EXPECT_EQ(m_records[1].key, "b");
}

TEST_F(GivenWatch, WhatCouldNotBeReadForAWhileComesAfterwards) {
  const auto watch = MakeWatch();
  std::fstream file(File(), std::ios::in | std::ios::out | std::ios::binary);
  const char first = static_cast<char>(file.get());
  file.seekp(0).put(static_cast<char>(~first)).flush();
  while (g_main_context_iteration(m_context.get(), FALSE)) {
  }

  file.seekp(0).put(first).flush();
  Set(*m_store, "a", "1");

  RunUntilCount(1);
  EXPECT_THAT(Values(), ElementsAre("1"));
}

TEST_F(GivenWatch, OnlyWhatIsSetAfterwardsComes) {
  Set(*m_store, "a", "before");
  const auto watch = MakeWatch();
  Set(*m_store, "a", "after");
  RunUntilCount(1);
  EXPECT_THAT(Values(), ElementsAre("after"));
}

TEST_F(GivenWatch, ValuesSetWhileNoLoopRanComeWhenOneDoes) {
  const auto watch = MakeWatch();
  EXPECT_EQ(ExitStatus(Fork([&] {
              for (int i = 0; i < 20000; ++i) {  // more than inotify keeps in its queue
                if (!m_store->Set("a", std::to_string(i))) {
                  return false;
                }
              }
              return true;
            })),
            0);
  RunUntilCount(20000);
  for (size_t i = 0; i < m_records.size(); ++i) {
    ASSERT_EQ(m_records[i].value, std::to_string(i));
  }
}

TEST_F(GivenWatch, NothingComesAfterItsEnd) {
  auto watch = MakeWatch();
  Set(*m_store, "a", "1");
  watch.reset();
  for (int i = 0; i < 100; ++i) {
    g_main_context_iteration(m_context.get(), FALSE);
  }
  EXPECT_TRUE(m_records.empty());
}

TEST_F(GivenWatch, BurstsOfAnotherProcessComeWholeWhileTheLoopRuns) {
  const auto watch = MakeWatch();
  const pid_t writer = Fork([&] {
    for (int burst = 0; burst < 100; ++burst) {
      for (int i = 0; i < 3; ++i) {
        m_store->Set("state", std::to_string(3 * burst + i)) ? void() : _exit(1);
      }
      usleep(500);  // the gap between bursts is what is tested
    }
    return true;
  });
  RunUntilCount(300);
  EXPECT_EQ(ExitStatus(writer), 0);
  for (size_t i = 0; i < m_records.size(); ++i) {
    ASSERT_EQ(m_records[i].value, std::to_string(i));
  }
}

/// Sets values of changing lengths, each all of one letter, until it is killed; it stops before the watch gets too far
/// behind.
bool SetUntilKilled(const std::filesystem::path& folder, int writer) {
  constexpr size_t kMost = 300;
  const auto store = Store::Open(folder);
  const std::string key = "writer" + std::to_string(writer);
  for (size_t i = 0; store && i < kMost; ++i) {
    if (!(*store)->Set(key, std::string(61 * i % 200, static_cast<char>('a' + writer)))) {
      return false;
    }
  }
  pause();
  return false;
}

TEST_F(GivenWatch, KilledWritersLeaveNoHalfAndNoGap) {
  constexpr int kKills = 40;
  const auto watch = MakeWatch();
  std::minstd_rand random(1);
  std::vector<pid_t> writers;
  for (int kill = 0; kill < kKills; ++kill) {
    for (int writer = static_cast<int>(writers.size()); writer < 3; ++writer) {
      writers.push_back(Fork([&] { return SetUntilKilled(m_folder, writer); }));
    }
    const size_t enough = m_records.size() + random() % 50;
    RunUntil(m_context.get(), [&] { return m_records.size() >= enough; });
    ::kill(writers.front(), SIGKILL);
    EXPECT_EQ(ExitStatus(writers.front()), -SIGKILL);
    writers.erase(writers.begin());
  }
  for (const pid_t writer : writers) {
    ::kill(writer, SIGKILL);
    ExitStatus(writer);
  }
  Set(*m_store, "last", "");
  RunUntil(m_context.get(), [&] { return !m_records.empty() && m_records.back().key == "last"; });
  for (size_t i = 0; i < m_records.size(); ++i) {
    const Record& record = m_records[i];
    ASSERT_EQ(record.sequence, i + 1);
    ASSERT_EQ(record.value, std::string(record.value.size(), record.value.empty() ? ' ' : record.value.front()));
  }
  EXPECT_GT(m_records.size(), static_cast<size_t>(kKills));
}

}  // namespace
}  // namespace sim::vconf
