// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/animate/Bands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace sim::lumaview {
namespace {

class GivenBands : public ::testing::Test {
 protected:
  /// How often each row is drawn.
  std::vector<int> DrawnRows(Size size) {
    std::vector<int> rows(static_cast<size_t>(size.height));
    m_bands.Run(size, [&](int first, int last) {
      {
        const std::lock_guard lock(m_mutex);
        m_threads.insert(std::this_thread::get_id());
      }
      for (int y = first; y < last; ++y) {
        ++rows[static_cast<size_t>(y)];
      }
    });
    return rows;
  }

  Bands m_bands;
  std::mutex m_mutex;
  std::set<std::thread::id> m_threads;
};

bool EachOnce(const std::vector<int>& rows) {
  return std::all_of(rows.begin(), rows.end(), [](int count) { return count == 1; });
}

TEST_F(GivenBands, SmallFrameIsDrawnByItsCaller) {
  EXPECT_TRUE(EachOnce(DrawnRows({1920, 1080})));
  EXPECT_EQ(m_threads, std::set{std::this_thread::get_id()});
}

TEST_F(GivenBands, LargeFramesAreDrawnByTwoThreadsEachRowOnce) {
  for (int frame = 0; frame < 200; ++frame) {
    ASSERT_TRUE(EachOnce(DrawnRows({3840, 2160 + frame % 2})));
  }
  EXPECT_EQ(m_threads.size(), 2u);
}

TEST_F(GivenBands, SmallFrameAfterALargeOneIsWholeToo) {
  EXPECT_TRUE(EachOnce(DrawnRows({3840, 2160})));
  EXPECT_TRUE(EachOnce(DrawnRows({1, 1})));
  EXPECT_TRUE(EachOnce(DrawnRows({7, 3})));
}

}  // namespace
}  // namespace sim::lumaview
