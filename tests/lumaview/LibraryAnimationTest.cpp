// SPDX-License-Identifier: Apache-2.0
// Animated pictures, and the rest that a still picture leaves.
#include <dirent.h>

#include <fstream>
#include <sstream>

#include "tests/lumaview/GivenDisplay.h"

namespace lumaview_test {
namespace {

constexpr int kFrameMilliseconds = 50;

class GivenAnimation : public GivenDisplay {
 protected:
  std::string WriteAnimation(int loops) {
    return folder.WriteGif("animation.gif", 64, 48, {kRed, kGreen, kBlue}, kFrameMilliseconds, loops);
  }

  /// True when the middle of the window has `colour` all through some frames' time.
  bool Stays(uint32_t colour) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(6 * kFrameMilliseconds);
    while (std::chrono::steady_clock::now() < end) {
      if (!Shows(100, 100, colour)) {
        return false;
      }
    }
    return true;
  }
};

TEST_F(GivenAnimation, PlaysForEverWhenTheFileSaysSo) {
  ShowUntilSeen(WriteAnimation(0));
  for (int loop = 0; loop < 3; ++loop) {
    EXPECT_TRUE(ShowsEventually(100, 100, kRed));
    EXPECT_TRUE(ShowsEventually(100, 100, kGreen));
    EXPECT_TRUE(ShowsEventually(100, 100, kBlue));
  }
  EXPECT_TRUE(Reports::Get().IsEmpty()) << "frames are not reported";
}

TEST_F(GivenAnimation, StaysOnItsLastFrameAfterTheLastLoop) {
  ShowUntilSeen(WriteAnimation(2));

  EXPECT_TRUE(Eventually([&] { return Stays(kBlue); }));
}

TEST_F(GivenAnimation, StopsWhenItsPictureIsDestroyed) {
  ShowUntilSeen(WriteAnimation(0));
  EXPECT_TRUE(ShowsEventually(100, 100, kGreen));

  DestroyPicture();

  EXPECT_TRUE(Eventually([&] { return Stays(kRed) || Stays(kGreen) || Stays(kBlue); }));
}

TEST_F(GivenAnimation, GoesOnInAnotherSize) {
  ShowUntilSeen(WriteAnimation(0));

  screen.Resize(window, 160, 120);

  EXPECT_TRUE(ShowsEventually(100, 100, kRed));
  EXPECT_TRUE(ShowsEventually(100, 100, kGreen));
  EXPECT_TRUE(ShowsEventually(159, 119, kBlue));
}

TEST_F(GivenAnimation, BeginsAfterTheEffectThatBroughtIt) {
  ShowUntilSeen(folder.WritePng("white.png", 64, 48, Solid(kWhite)));
  DestroyPicture();

  StartEffect(0, WriteAnimation(0));

  EXPECT_EQ(Reports::Get().Next(), (Report{effect, 3, 8}));
  EXPECT_TRUE(ShowsEventually(100, 100, kGreen));
  EXPECT_TRUE(ShowsEventually(100, 100, kBlue));
  EXPECT_TRUE(ShowsEventually(100, 100, kRed));
}

/// How often the library's threads have gone to sleep so far, all together.
long CountSleeps() {
  long sleeps = 0;
  DIR* tasks = opendir("/proc/self/task");
  while (const dirent* task = readdir(tasks)) {
    std::ifstream status(std::string("/proc/self/task/") + task->d_name + "/status");
    bool ours = false;
    for (std::string line; std::getline(status, line);) {
      ours |= line.rfind("Name:\tlumaview-", 0) == 0;
      if (ours && line.rfind("voluntary_ctxt_switches:", 0) == 0) {
        sleeps += std::stol(line.substr(line.find('\t') + 1));
      }
    }
  }
  closedir(tasks);
  return sleeps;
}

TEST_F(GivenAnimation, StillPictureWakesNobodyUp) {
  ShowUntilSeen(folder.WritePng("white.png", 64, 48, Solid(kWhite)));
  EXPECT_TRUE(Eventually([&] {
    const long before = CountSleeps();
    EXPECT_GT(before, 0);
    return Stays(kWhite) && CountSleeps() == before;
  }));
}

}  // namespace
}  // namespace lumaview_test
