// SPDX-License-Identifier: Apache-2.0
// Time as a parameter: which frames of transitions and animations are due when.
#include <gtest/gtest.h>

#include <set>

#include "simulator/lumaview/animate/AnimationTimeline.h"
#include "simulator/lumaview/animate/EffectChooser.h"
#include "simulator/lumaview/animate/TransitionTimeline.h"

namespace sim::lumaview {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
constexpr Time kStart{std::chrono::seconds(100)};

TEST(GivenTransitionOfOneSecond, EachFrameComesAtItsTimeAndTheLastIsTheNewPicture) {
  TransitionTimeline timeline(kStart, milliseconds(1000));
  int frames = 0;
  bool last = false;
  while (!last) {
    const Time due = timeline.GetNextTime();
    EXPECT_FALSE(timeline.Next(due - Duration(1)));
    const auto step = timeline.Next(due);
    ASSERT_TRUE(step);
    EXPECT_FLOAT_EQ(step->progress, static_cast<float>(++frames) / 60);
    last = step->last;
  }
  EXPECT_EQ(frames, 60);
  EXPECT_EQ(timeline.GetStatistics().shown, 60);
  EXPECT_EQ(timeline.GetStatistics().skipped, 0);
  EXPECT_NEAR(static_cast<double>(timeline.GetStatistics().worst_gap.count()), 16.67e6, 0.1e6);
  EXPECT_FALSE(timeline.Next(kStart + milliseconds(5000)));
}

TEST(GivenTransitionOfOneSecond, LateFramesAreSkippedAndCounted) {
  TransitionTimeline timeline(kStart, milliseconds(1000));
  EXPECT_TRUE(timeline.Next(kStart + milliseconds(17)));

  const auto late = timeline.Next(kStart + milliseconds(101));  // frames 2 to 5 are over, 6 is due since 100

  ASSERT_TRUE(late);
  EXPECT_FLOAT_EQ(late->progress, 6.0f / 60);
  EXPECT_EQ(timeline.GetStatistics().skipped, 4);
  EXPECT_EQ(timeline.GetStatistics().worst_gap, milliseconds(84));
}

TEST(GivenTransitionOfOneSecond, OneThatWasHeldUpEndsAtOnce) {
  TransitionTimeline timeline(kStart, milliseconds(1000));
  const auto step = timeline.Next(kStart + milliseconds(3000));
  ASSERT_TRUE(step);
  EXPECT_TRUE(step->last);
  EXPECT_EQ(step->progress, 1.0f);
  EXPECT_EQ(timeline.GetStatistics().skipped, 59);
}

TEST(GivenTransitionWithoutDuration, OnlyTheNewPictureIsShown) {
  TransitionTimeline timeline(kStart, Duration(0));
  const auto step = timeline.Next(kStart);
  ASSERT_TRUE(step);
  EXPECT_TRUE(step->last);
}

TEST(GivenAnimation, FramesLastAsTheFileSays) {
  AnimationTimeline timeline(kStart, 40, 3, 1);
  EXPECT_TRUE(timeline.HasNext());
  EXPECT_EQ(timeline.GetNextTime(), kStart + milliseconds(40));
  timeline.Advance(kStart + milliseconds(41), 250);
  EXPECT_TRUE(timeline.HasNext());
  EXPECT_EQ(timeline.GetNextTime(), kStart + milliseconds(290));
  timeline.Advance(kStart + milliseconds(290), 40);
  EXPECT_FALSE(timeline.HasNext()) << "the third frame of one loop stays";
}

TEST(GivenAnimation, LoopsAreCountedOrEndless) {
  AnimationTimeline twice(kStart, 40, 2, 2);
  AnimationTimeline endless(kStart, 40, 2, 0);
  for (int i = 1; i <= 3; ++i) {
    EXPECT_TRUE(twice.HasNext());
    twice.Advance(kStart, 40);
    endless.Advance(kStart, 40);
  }
  EXPECT_FALSE(twice.HasNext());
  EXPECT_TRUE(endless.HasNext());
}

TEST(GivenAnimation, FrameThatCameLateDoesNotHastenTheNext) {
  AnimationTimeline timeline(kStart, 40, 3, 0);
  timeline.Advance(kStart + milliseconds(500), 40);
  EXPECT_EQ(timeline.GetNextTime(), kStart + milliseconds(540));
}

TEST(GivenAnimation, FramesWithoutATimeLastATenthOfASecond) {
  EXPECT_EQ(AnimationTimeline(kStart, 0, 2, 0).GetNextTime(), kStart + milliseconds(100));
  EXPECT_EQ(AnimationTimeline(kStart, 10, 2, 0).GetNextTime(), kStart + milliseconds(100));
  EXPECT_EQ(AnimationTimeline(kStart, 20, 2, 0).GetNextTime(), kStart + milliseconds(20));
}

TEST(GivenEffectChooser, EveryEffectComesOnceARoundAndNoneTwiceInARow) {
  for (unsigned int seed = 0; seed < 50; ++seed) {
    EffectChooser chooser(seed);
    int last = -1;
    for (int round = 0; round < 5; ++round) {
      std::set<int> dealt;
      for (int i = 0; i < kEffectCount; ++i) {
        const int effect = chooser.Choose();
        EXPECT_NE(effect, last);
        EXPECT_TRUE(effect >= 0 && effect < kEffectCount);
        dealt.insert(effect);
        last = effect;
      }
      EXPECT_EQ(dealt.size(), size_t{kEffectCount});
    }
  }
}

}  // namespace
}  // namespace sim::lumaview
