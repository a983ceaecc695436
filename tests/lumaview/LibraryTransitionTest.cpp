// SPDX-License-Identifier: Apache-2.0
// Transition effects on a real screen. LUMAVIEW_EFFECT_MS makes them shorter than a television's.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <set>
#include <thread>

#include "tests/lumaview/GivenDisplay.h"

namespace lumaview_test {
namespace {

constexpr int kFade = 0;
constexpr int kWipeLeft = 5;
constexpr int kChoose = 36;

/// A red picture is shown and its handle destroyed, as the engine does before an effect.
class GivenRedScreen : public GivenDisplay {
 protected:
  GivenRedScreen()
      : green(folder.WritePng("green.png", 64, 48, Solid(kGreen))),
        blue(folder.WritePng("blue.png", 64, 48, Solid(kBlue))) {
    ShowUntilSeen(folder.WritePng("red.png", 64, 48, Solid(kRed)));
    DestroyPicture();
  }

  bool WholeWindowIs(uint32_t colour) {
    const auto pixels = screen.Grab(window, kWidth, kHeight);
    return std::all_of(pixels.begin(), pixels.end(), [colour](uint32_t pixel) { return pixel == colour; });
  }
  /// Waits for a moment in the middle of a fade from red to green.
  bool IsHalfWay() {
    return Eventually([&] {
      const uint32_t pixel = screen.PixelAt(window, 100, 100);
      return pixel != kRed && pixel != kGreen;
    });
  }
  Report EndOfEffect(int result) const { return {effect, 3, result}; }

  std::string green;
  std::string blue;
};

TEST_F(GivenRedScreen, EveryEffectEndsExactlyOnTheNewPicture) {
  for (int number = 0; number < 24; ++number) {
    StartEffect(number, number % 2 == 0 ? green : blue);
    ASSERT_EQ(Reports::Get().Next(), EndOfEffect(8)) << number;
    ASSERT_TRUE(WholeWindowIs(number % 2 == 0 ? kGreen : kBlue)) << number;
  }
  EXPECT_TRUE(Reports::Get().IsEmpty());
}

TEST_F(GivenRedScreen, WipeShowsBothPicturesOnItsWay) {
  StartEffect(kWipeLeft, green);

  EXPECT_TRUE(Eventually([&] {
    const auto pixels = screen.Grab(window, kWidth, kHeight);
    return std::count(pixels.begin(), pixels.end(), kRed) > 1000 &&
           std::count(pixels.begin(), pixels.end(), kGreen) > 1000;
  }));
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));
  EXPECT_TRUE(WholeWindowIs(kGreen));
}

TEST_F(GivenRedScreen, FadeRisesWithoutAnythingElseInBetween) {
  StartEffect(kFade, green);

  std::vector<uint32_t> seen;
  while (Reports::Get().IsEmpty()) {
    seen.push_back(screen.PixelAt(window, 100, 100));
  }
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));
  EXPECT_GT(std::set(seen.begin(), seen.end()).size(), 5u) << "frames between the two pictures";
  for (size_t i = 0; i < seen.size(); ++i) {
    const int red = static_cast<int>(seen[i] >> 16 & 0xFF);
    const int green_part = static_cast<int>(seen[i] >> 8 & 0xFF);
    EXPECT_NEAR(red + green_part, 255, 2) << "a mixture of the two pictures and nothing else";
    EXPECT_GE(green_part, i == 0 ? 0 : static_cast<int>(seen[i - 1] >> 8 & 0xFF)) << "never back";
  }
}

TEST_F(GivenRedScreen, ChosenEffectIsOneOfThem) {
  for (int i = 0; i < 3; ++i) {
    StartEffect(kChoose, i % 2 == 0 ? green : blue);
    EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));
    EXPECT_TRUE(WholeWindowIs(i % 2 == 0 ? kGreen : kBlue));
  }
}

TEST_F(GivenRedScreen, NumbersThatAreNoEffectAreRefusedWhenTheyRun) {
  StartEffect(kFade, green);
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));
  for (int number : {-2, -1, 24, 35, 37, 1000}) {
    EXPECT_EQ(lumaview_set_effect_type(effect, static_cast<effect_type_e>(number)), 0);
    EXPECT_EQ(lumaview_run_transition_effect(effect, blue.c_str()), -1) << number;
  }
  EXPECT_TRUE(WholeWindowIs(kGreen));
}

TEST_F(GivenRedScreen, MissingPictureIsRefusedAndTheOldOneStays) {
  StartEffect(kFade, green);
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));

  EXPECT_EQ(lumaview_run_transition_effect(effect, folder.GetPath("missing.png").c_str()), -4);
  EXPECT_EQ(lumaview_run_transition_effect(effect, ""), -4);

  EXPECT_TRUE(WholeWindowIs(kGreen));
}

TEST_F(GivenRedScreen, UndecodablePictureIsReportedAndTheOldOneStays) {
  StartEffect(kFade, folder.WriteBytes("text.png", "no picture"));

  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(9));
  EXPECT_TRUE(WholeWindowIs(kRed));
}

TEST_F(GivenRedScreen, SecondEffectGoesOnFromWhatTheFirstHasReached) {
  StartEffect(kFade, green);
  ASSERT_TRUE(IsHalfWay());

  StartEffect(kFade, blue);

  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(9)) << "the first one did not come to its end";
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));
  EXPECT_TRUE(WholeWindowIs(kBlue));
}

TEST_F(GivenRedScreen, EffectsThatReplaceEachOtherNeverShowBlack) {
  for (int round = 0; round < 6; ++round) {
    StartEffect(kFade, round % 2 == 0 ? green : blue);
    for (int look = 0; look < 30; ++look) {
      const uint32_t pixel = screen.PixelAt(window, 100, 100);
      const uint32_t light = (pixel >> 16 & 0xFF) + (pixel >> 8 & 0xFF) + (pixel & 0xFF);
      ASSERT_NEAR(static_cast<int>(light), 255, 8) << "a mixture of red, green and blue, in round " << round;
    }
  }
}

TEST_F(GivenRedScreen, UndecodablePictureDuringAnEffectFailsAndTheEffectComesToItsEnd) {
  StartEffect(kFade, green);
  ASSERT_TRUE(IsHalfWay());

  StartEffect(kFade, folder.WriteBytes("text.png", "no picture"));

  std::vector<Report> reports = {Reports::Get().Next(), Reports::Get().Next()};
  EXPECT_EQ(std::count(reports.begin(), reports.end(), EndOfEffect(8)), 1);
  EXPECT_EQ(std::count(reports.begin(), reports.end(), EndOfEffect(9)), 1);
  EXPECT_TRUE(WholeWindowIs(kGreen));
}

TEST_F(GivenRedScreen, DestroyedEffectEndsOnItsPictureWithoutAReport) {
  StartEffect(kFade, green);
  ASSERT_TRUE(IsHalfWay());

  EXPECT_EQ(lumaview_destroy_transition_effect(&effect), 0);

  EXPECT_TRUE(Eventually([&] { return WholeWindowIs(kGreen); }));
  EXPECT_TRUE(Reports::Get().IsEmpty());
}

TEST_F(GivenRedScreen, DestroyedDisplayEndsTheEffect) {
  StartEffect(kFade, green);
  ASSERT_TRUE(IsHalfWay());

  DestroyDisplay();

  EXPECT_TRUE(ShowsEventually(100, 100, kBlack));
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(9));
}

TEST_F(GivenRedScreen, DestroyedWindowEndsTheEffectAndTheLibraryLives) {
  StartEffect(kFade, green);
  ASSERT_TRUE(IsHalfWay());

  screen.Destroy(window);

  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(9));
  EXPECT_NE(lumaview_run_transition_effect(effect, blue.c_str()), 0);
  Window next = screen.MakeWindow(kWidth, kHeight);
  ASSERT_EQ(lumaview_init_display(&next), 0);
  ASSERT_EQ(lumaview_set_effect_window_handle(effect, next), 0);
  ASSERT_EQ(lumaview_create_from_url(blue.c_str(), &picture), 0);
  ASSERT_EQ(lumaview_set_window(picture, next), 0);
  ASSERT_EQ(lumaview_decode(picture, 0), 0);
  EXPECT_TRUE(Eventually([&] { return screen.PixelAt(next, 100, 100) == kBlue; }));
  EXPECT_EQ(lumaview_destroy_display(&next), 0);
  screen.Destroy(next);
}

TEST_F(GivenRedScreen, ResizedWindowEndsTheEffectOnTheNewPictureWithoutBlack) {
  StartEffect(kFade, green);
  ASSERT_TRUE(IsHalfWay());

  screen.Resize(window, kWidth / 2, kHeight / 2);

  while (Reports::Get().IsEmpty()) {
    EXPECT_NE(screen.PixelAt(window, 50, 50), kBlack);
  }
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));
  EXPECT_TRUE(ShowsEventually(2, 2, kGreen));
  EXPECT_TRUE(ShowsEventually(kWidth / 2 - 2, kHeight / 2 - 2, kGreen));
}

TEST_F(GivenRedScreen, PictureShownDuringAnEffectTakesItsPlace) {
  StartEffect(kFade, green);
  ASSERT_TRUE(IsHalfWay());

  ASSERT_EQ(lumaview_create_from_url(blue.c_str(), &picture), 0);
  ASSERT_EQ(lumaview_set_window(picture, window), 0);
  ASSERT_EQ(lumaview_decode(picture, 0), 0);

  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(9));
  EXPECT_TRUE(ShowsEventually(100, 100, kBlue));
}

TEST_F(GivenRedScreen, LockedDisplayShowsTheEffectsPictureOnceItIsUnlocked) {
  ASSERT_EQ(lumaview_create_from_url(blue.c_str(), &picture), 0);
  ASSERT_EQ(lumaview_set_display_lock(picture, window, 1), 0);
  StartEffect(kFade, green);
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));
  EXPECT_TRUE(WholeWindowIs(kRed));

  ASSERT_EQ(lumaview_set_display_lock(picture, window, 0), 0);

  EXPECT_TRUE(ShowsEventually(100, 100, kGreen));
}

TEST_F(GivenRedScreen, EffectIsAvailableWithAnEffectAndADisplay) {
  EXPECT_NE(lumaview_is_transition_effect_available(picture, effect, window), 0) << "there is no effect";
  StartEffect(kFade, green);
  EXPECT_EQ(lumaview_is_transition_effect_available(picture, effect, window), 0);
  EXPECT_EQ(lumaview_is_transition_effect_available(nullptr, effect, window), 0);
  EXPECT_NE(lumaview_is_transition_effect_available(picture, effect, window + 1), 0);
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));
}

TEST_F(GivenDisplay, FirstEffectComesOutOfBlack) {
  StartEffect(kFade, folder.WritePng("green.png", 64, 48, Solid(kGreen)));
  EXPECT_EQ(Reports::Get().Next(), (Report{effect, 3, 8}));
  EXPECT_TRUE(Shows(0, 0, kGreen));
}

size_t CountDescriptors() {
  size_t count = 0;
  DIR* folder = opendir("/proc/self/fd");
  while (readdir(folder) != nullptr) {
    ++count;
  }
  closedir(folder);
  return count;
}

size_t CountMappedFrames() {
  std::ifstream maps("/proc/self/maps");
  size_t count = 0;
  for (std::string line; std::getline(maps, line);) {
    count += line.find("lumaview-frame") != std::string::npos ? 1 : 0;
  }
  return count;
}

TEST_F(GivenRedScreen, InterruptedEffectsLeakNothing) {
  StartEffect(kFade, green);
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));
  const size_t descriptors = CountDescriptors();
  const size_t frames = CountMappedFrames();
  for (int round = 0; round < 20; ++round) {
    StartEffect(round, round % 2 == 0 ? blue : green);
  }
  for (int round = 0; round < 19; ++round) {
    EXPECT_EQ(Reports::Get().Next(), EndOfEffect(9));
  }
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));
  EXPECT_TRUE(Eventually([&] { return CountDescriptors() <= descriptors; })) << CountDescriptors() - descriptors;
  EXPECT_TRUE(Eventually([&] { return CountMappedFrames() <= frames; })) << CountMappedFrames() - frames;
}

TEST_F(GivenRedScreen, EffectsThatAreDestroyedOnTheirWayLeakNothing) {
  const auto destroy_on_its_way = [&](const std::string& to, uint32_t colour) {
    const uint32_t before = screen.PixelAt(window, 100, 100);
    StartEffect(kFade, to);
    EXPECT_TRUE(Eventually([&] { return screen.PixelAt(window, 100, 100) != before; }));
    EXPECT_EQ(lumaview_destroy_transition_effect(&effect), 0);
    effect = nullptr;
    EXPECT_TRUE(ShowsEventually(100, 100, colour));
  };
  destroy_on_its_way(green, kGreen);
  const size_t descriptors = CountDescriptors();
  const size_t frames = CountMappedFrames();

  for (int round = 0; round < 10; ++round) {
    destroy_on_its_way(round % 2 == 0 ? blue : green, round % 2 == 0 ? kBlue : kGreen);
  }

  EXPECT_TRUE(Eventually([&] { return CountDescriptors() <= descriptors; })) << CountDescriptors() - descriptors;
  EXPECT_TRUE(Eventually([&] { return CountMappedFrames() <= frames; })) << CountMappedFrames() - frames;
  EXPECT_TRUE(Reports::Get().IsEmpty());
}

/// A file's bytes, filled up to a size that all small pictures can have; what follows a picture is not looked at.
std::string PaddedBytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  bytes.resize(1000);
  return bytes;
}

TEST_F(GivenRedScreen, PreparedPictureIsDecodedOnce) {
  const auto red_bytes = PaddedBytesOf(folder.WritePng("once.png", 64, 48, Solid(kRed)));
  const auto other = folder.WriteBytes("other.png", PaddedBytesOf(blue));
  // Decoded without a window, so that it is prepared for certain; then destroyed unseen.
  ASSERT_EQ(lumaview_create_from_url(other.c_str(), &picture), 0);
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, Reports::Callback);
  ASSERT_EQ(lumaview_decode(picture, 0), 0);
  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 1, 3}));
  DestroyPicture();
  // The file's bytes change in place; its size and time do not. Only a second decode would tell.
  struct stat status {};
  ASSERT_EQ(stat(other.c_str(), &status), 0);
  std::fstream(other, std::ios::binary | std::ios::in | std::ios::out) << red_bytes;
  const timespec times[] = {status.st_atim, status.st_mtim};
  ASSERT_EQ(utimensat(AT_FDCWD, other.c_str(), times, 0), 0);

  StartEffect(kFade, other);
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));
  EXPECT_TRUE(WholeWindowIs(kBlue)) << "what was decoded before";

  StartEffect(kFade, other);
  EXPECT_EQ(Reports::Get().Next(), EndOfEffect(8));
  EXPECT_TRUE(WholeWindowIs(kRed)) << "it was taken out of the cache";
}

}  // namespace
}  // namespace lumaview_test
