// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/Handover.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>
#include <vector>

namespace sim::lumaview {
namespace {

class GivenRoomOf : public testing::TestWithParam<uint32_t> {};
INSTANTIATE_TEST_SUITE_P(Pieces, GivenRoomOf, testing::Values(2, 3, 16));

TEST_P(GivenRoomOf, EveryPieceComesInOrderAndStaysUntilItIsOver) {
  constexpr uint32_t kPieces = 20'000;
  const uint32_t room = GetParam();
  Handover handover(room);
  std::vector<uint32_t> places(room);
  std::thread giver([&] {
    for (uint32_t piece = 0; piece < kPieces && handover.AwaitRoom(); ++piece) {
      places[piece % room] = piece;
      handover.Give();
    }
    handover.End();
  });

  uint32_t taken = 0;
  uint32_t wrong = 0;
  for (; handover.Take(taken); ++taken) {
    wrong += places[taken % room] == taken ? 0u : 1u;
  }
  giver.join();

  EXPECT_EQ(taken, kPieces);
  EXPECT_EQ(wrong, 0u);
}

TEST(GivenHandover, NoMorePiecesComeAfterItsEnd) {
  Handover handover(4);
  handover.Give();
  handover.End();

  EXPECT_TRUE(handover.Take(0));
  EXPECT_TRUE(handover.Take(0));
  EXPECT_FALSE(handover.Take(1));
}

TEST(GivenHandover, WhoWaitsForRoomHearsThatNoMoreIsWanted) {
  Handover handover(2);
  handover.Give();
  handover.Give();
  auto room = std::async(std::launch::async, [&] { return handover.AwaitRoom(); });

  handover.Refuse();

  EXPECT_FALSE(room.get());
}

TEST(GivenHandover, PiecesThatAreSkippedAreGivenAllTheSame) {
  constexpr uint32_t kFar = 1000;
  Handover handover(2);
  std::thread giver([&] {
    for (uint32_t piece = 0; piece <= kFar && handover.AwaitRoom(); ++piece) {
      handover.Give();
    }
    handover.End();
  });

  EXPECT_TRUE(handover.Take(kFar));

  giver.join();
}

}  // namespace
}  // namespace sim::lumaview
