// SPDX-License-Identifier: Apache-2.0
#include <functional>

#include "tests/engine/DisplayGivens.h"

namespace {

using olm::CPictureAdapter;

/// The two names under which the screen is cleared.
struct Clearing {
  const char* name;
  int (CPictureAdapter::*operation)();
};

constexpr Clearing kClearings[] = {{"ClearScreen", &CPictureAdapter::ClearScreen},
                                   {"ClearScreenForImage", &CPictureAdapter::ClearScreenForImage}};

struct EitherClearing : given::FreshAdapter, testing::WithParamInterface<Clearing> {
  int Clear() {
    kit::Begin();
    return kit::Run([&] { return (adapter->*GetParam().operation)(); });
  }
  void ExpectPath(const char* path) { kit::ExpectGolden(GetParam().name, path); }
  void ExpectLibraryDisplay(bool initialised) {
    EXPECT_EQ(adapter->m_bInitDisplay, initialised);
    EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, initialised ? 1 : 0);
  }
};

TEST_P(EitherClearing, DoesNothingBeforeAnythingWasShown) {
  EXPECT_EQ(Clear(), 1);

  ExpectPath("nothing was shown");
}

TEST_P(EitherClearing, DoesNothingToAPreparedPicture) {
  Prepare(*adapter);

  EXPECT_EQ(Clear(), 1);

  ExpectPath("a window and no display of the library");
}

TEST_P(EitherClearing, ShutsTheLibrarysDisplayDownAndLeavesTheWindow) {
  Show(*adapter);

  EXPECT_EQ(Clear(), 1);

  ExpectPath("picture shown");
  ExpectLibraryDisplay(false);
  EXPECT_NE(adapter->m_pDisplay, nullptr);
  EXPECT_NE(adapter->m_cWin, olm::kNoWindow);
  EXPECT_TRUE(adapter->m_bInitWindow);
}

TEST_P(EitherClearing, FailsWithTheLibrary) {
  Show(*adapter);
  kit::FailNext("lumaview_destroy_display", 7);

  EXPECT_EQ(Clear(), 0);

  ExpectPath("the library fails");
  ExpectLibraryDisplay(true);
}

TEST_P(EitherClearing, DoesNothingTheSecondTime) {
  Show(*adapter);
  adapter->ClearScreen();

  EXPECT_EQ(Clear(), 1);

  ExpectPath("again");
}

INSTANTIATE_TEST_SUITE_P(Both, EitherClearing, testing::ValuesIn(kClearings),
                         [](const auto& clearing) { return std::string(clearing.param.name); });

struct GivenClearedScreen : given::ShownPicture {};

TEST_F(GivenClearedScreen, NextPictureInitialisesTheLibrarysDisplayAgain) {
  adapter->ClearScreen();
  kit::Begin();

  EXPECT_EQ(kit::Run([&] { return adapter->StartPlayback(0); }), 1);

  kit::ExpectGolden("ClearScreen", "the next picture initialises the display again");
  EXPECT_TRUE(adapter->m_bInitDisplay);
}

}  // namespace
