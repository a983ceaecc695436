// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/DisplayGivens.h"

namespace {

struct GivenScreen : given::FreshAdapter {
  int GetScreenSize(int* width, int* height) {
    return kit::Run([&] { return adapter->GetScreenSize(width, height); });
  }
};

TEST_F(GivenScreen, AdapterMeasuresItWhenItIsMade) {
  EXPECT_EQ(adapter->m_iScreenWidth, 1920);
  EXPECT_EQ(adapter->m_iScreenHeight, 1080);
}

TEST_F(GivenScreen, GetScreenSizeWritesBothSizes) {
  int width = -7;
  int height = -7;

  EXPECT_EQ(GetScreenSize(&width, &height), 1);

  kit::ExpectGolden("GetScreenSize", "plain path");
  EXPECT_EQ(width, 1920);
  EXPECT_EQ(height, 1080);
}

TEST_F(GivenScreen, GetScreenSizeNeedsBothPointers) {
  int size = -7;

  EXPECT_EQ(GetScreenSize(nullptr, &size), 0);
  kit::ExpectGolden("GetScreenSize", "width is null");

  kit::Begin();
  EXPECT_EQ(GetScreenSize(&size, nullptr), 0);
  kit::ExpectGolden("GetScreenSize", "height is null");
  EXPECT_EQ(size, -7);
}

TEST_F(GivenScreen, GetScreenSizeWithoutAServerWritesNothing) {
  int width = -7;
  int height = -7;
  kit::FailNext("XOpenDisplay");

  EXPECT_EQ(GetScreenSize(&width, &height), 0);

  kit::ExpectGolden("GetScreenSize", "no server");
  EXPECT_EQ(width, -7);
  EXPECT_EQ(height, -7);
}

}  // namespace
