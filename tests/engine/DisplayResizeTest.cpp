// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/DisplayGivens.h"

namespace {

using kit::FailAt;
using kit::FailNext;

int ResizeWindow(olm::CPictureAdapter& adapter, int width = 640, int height = 480) {
  return kit::Run([&] { return adapter.ResizeWindow(30, 40, width, height); });
}

int MakeImage(olm::CPictureAdapter& adapter, int width = 640, int height = 480) {
  return kit::Run([&] { return adapter.make_transparent_image(adapter.m_pDisplay, width, height); });
}

void ExpectPath(const char* path) {
  kit::ExpectGolden("ResizeWindow", path);
}

struct GivenWindowToResize : given::AdapterWithWindow {};

TEST_F(GivenWindowToResize, ResizeWindowPaintsTheWholeWindowTransparent) {
  EXPECT_EQ(ResizeWindow(*adapter), 1);

  ExpectPath("first time");
  ASSERT_NE(adapter->m_pImage, nullptr);
  EXPECT_EQ(adapter->m_pImage->width, 640);
  EXPECT_EQ(adapter->m_pImage->height, 480);
}

TEST_F(GivenWindowToResize, ResizeWindowLeavesOutWhatNeedsTheImage) {
  FailNext("XCreateImage");

  EXPECT_EQ(ResizeWindow(*adapter), 1);

  ExpectPath("no image");
  EXPECT_EQ(adapter->m_pImage, nullptr);
}

TEST_F(GivenWindowToResize, ResizeWindowLeavesOutWhatNeedsPixels) {
  FailNext("calloc");

  EXPECT_EQ(ResizeWindow(*adapter), 1);

  ExpectPath("no pixels");
}

TEST_F(GivenWindowToResize, ResizeWindowLeavesOutWhatNeedsASize) {
  EXPECT_EQ(ResizeWindow(*adapter, 0, 480), 1);
  ExpectPath("width 0");

  kit::Begin();
  EXPECT_EQ(ResizeWindow(*adapter, 640, -1), 1);
  ExpectPath("height -1");
}

TEST_F(GivenWindowToResize, ImageIsMadeAndFilled) {
  EXPECT_EQ(MakeImage(*adapter), 1);

  kit::ExpectGolden("make_transparent_image", "first time");
}

TEST_F(GivenWindowToResize, ImageThatCannotBeMadeIsNoFailure) {
  FailNext("XCreateImage");

  EXPECT_EQ(MakeImage(*adapter), 1);

  kit::ExpectGolden("make_transparent_image", "no image");
}

TEST_F(GivenWindowToResize, ImageWithoutPixelsIsNoFailure) {
  FailNext("calloc");

  EXPECT_EQ(MakeImage(*adapter), 1);

  kit::ExpectGolden("make_transparent_image", "no pixels");
}

TEST_F(GivenWindowToResize, ImageWithoutASizeIsNoFailure) {
  EXPECT_EQ(MakeImage(*adapter, 640, 0), 1);

  kit::ExpectGolden("make_transparent_image", "height 0");
}

struct GivenPaintedWindow : given::AdapterWithWindow {
  void SetUp() override {
    AdapterWithWindow::SetUp();
    ASSERT_EQ(adapter->ResizeWindow(1, 2, 300, 200), 1);
    kit::Begin();
  }
};

TEST_F(GivenPaintedWindow, ResizeWindowReplacesTheImage) {
  EXPECT_EQ(ResizeWindow(*adapter), 1);

  ExpectPath("the image is replaced");
  EXPECT_EQ(adapter->m_pImage->width, 640);
}

TEST_F(GivenPaintedWindow, ResizeWindowLeavesOneEventOfThoseThatNobodyReads) {
  kit::world().eventsQueued = 3;

  EXPECT_EQ(ResizeWindow(*adapter), 1);

  ExpectPath("three events");
  EXPECT_EQ(kit::world().eventsQueued, 1);
}

TEST_F(GivenPaintedWindow, NoImageTakesTheOldOnesPlace) {
  FailNext("XCreateImage");

  EXPECT_EQ(ResizeWindow(*adapter), 1);

  ExpectPath("no image, after another");
  EXPECT_EQ(adapter->m_pImage, nullptr);
}

TEST_F(GivenPaintedWindow, WithoutASizeTheOldImageStays) {
  EXPECT_EQ(ResizeWindow(*adapter, 0, 480), 1);

  ExpectPath("width 0, after an image");
  ASSERT_NE(adapter->m_pImage, nullptr);
  EXPECT_EQ(adapter->m_pImage->width, 300);
}

TEST_F(GivenPaintedWindow, AnotherImageReplacesTheOld) {
  EXPECT_EQ(MakeImage(*adapter), 1);

  kit::ExpectGolden("make_transparent_image", "again");
}

struct GivenAdapterWithoutAll : given::FreshAdapter {};

TEST_F(GivenAdapterWithoutAll, ResizeWindowWithoutAConnectionAsksNothing) {
  EXPECT_EQ(ResizeWindow(*adapter), 1);

  ExpectPath("no connection");
}

TEST_F(GivenAdapterWithoutAll, ResizeWindowDoesNotTestForAWindow) {
  FailNext("malloc");
  InitFullScreen(*adapter);
  kit::Begin();

  EXPECT_EQ(ResizeWindow(*adapter), 1);

  ExpectPath("no window");
}

TEST_F(GivenAdapterWithoutAll, ResizeWindowWithoutAGraphicsContextPutsNothing) {
  FailAt("XCreateGC", 2);
  InitFullScreen(*adapter);
  kit::Begin();

  EXPECT_EQ(ResizeWindow(*adapter), 1);

  ExpectPath("no graphics context");
}

}  // namespace
