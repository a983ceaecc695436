// SPDX-License-Identifier: Apache-2.0
/// What many moves of the window, and many windows, leave behind: nothing, here or in the server.
#include <malloc.h>

#include "tests/system/GivenAdapter.h"

namespace {

constexpr int kResizes = 1000;
constexpr int kRounds = 200;
constexpr size_t kImageBytes = size_t{1920} * 1080 * 4;

/// Bytes that this process has allocated and not freed; large blocks are mapped and counted apart.
size_t AllocatedBytes() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

class GivenBareScreenAndCounts : public GivenAdapter {
 protected:
  void Resize(int step) {
    ASSERT_EQ(adapter->SetDisplayArea(step % 100, step % 50, 1000 + step % 900, 600 + step % 400, 1080, true), 1);
  }
};

TEST_F(GivenBareScreenAndCounts, ThousandResizesLeaveNoMemoryAndNoResource) {
  MakeWindow();
  for (int step = 0; step < 10; ++step) Resize(step);
  const size_t bytes = AllocatedBytes();
  const auto resources = screen.ResourcesOf(Window());
  ASSERT_FALSE(resources.empty());

  for (int step = 0; step < kResizes; ++step) Resize(step);

  // One image stands at any time, and they differ in size.
  EXPECT_LT(AllocatedBytes(), bytes + kImageBytes);
  EXPECT_EQ(screen.ResourcesOf(Window()), resources);
}

TEST_F(GivenBareScreenAndCounts, InitWindowAgainAndAgainKeepsOneGraphicsContext) {
  MakeWindow();
  const auto resources = screen.ResourcesOf(Window());

  for (int round = 0; round < kRounds; ++round) ASSERT_EQ(adapter->InitWindow(0, 0, 100, 100), 1);

  EXPECT_EQ(screen.ResourcesOf(Window()), resources);
  olm::CPictureAdapter::winNum = 1;  // each of them counted
}

TEST_F(GivenBareScreenAndCounts, ManyWindowsOneAfterTheOtherLeaveNothing) {
  const auto round = [this] {
    ASSERT_EQ(adapter->SetDisplayArea(0, 0, 0, 0, 540, true), 1);
    ASSERT_EQ(adapter->SetDisplayArea(0, 0, 480, 270, 540, true), 1);
    ASSERT_EQ(adapter->DestroyDisplayWin(), 1);
    ASSERT_EQ(adapter->CloseDisplay(), 1);
    adapter->m_bInitWindow = false;
  };
  for (int i = 0; i < 3; ++i) round();
  const size_t bytes = AllocatedBytes();
  const size_t clients = screen.Clients();

  for (int i = 0; i < kRounds; ++i) round();

  EXPECT_LT(AllocatedBytes(), bytes + kImageBytes / 8);
  EXPECT_TRUE(screen.Await([this, clients] { return screen.Clients() <= clients; }));
}

}  // namespace
