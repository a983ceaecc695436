// SPDX-License-Identifier: Apache-2.0
// When callbacks come, and when they come no more. No X server is needed.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <future>
#include <thread>

#include "platform/lumaview.h"
#include "tests/lumaview/PictureFiles.h"
#include "tests/lumaview/Screen.h"

namespace lumaview_test {
namespace {

class GivenPictures : public ::testing::Test {
 protected:
  GivenPictures() : path(folder.WriteJpeg("picture.jpg", 640, 480, Solid(0x808080))) { Reports::Get().Clear(); }

  _lumaview_s* Create() {
    _lumaview_s* picture = nullptr;
    EXPECT_EQ(lumaview_create_from_url(path.c_str(), &picture), 0);
    return picture;
  }

  PictureFolder folder;
  std::string path;
};

TEST_F(GivenPictures, EachParseAndDecodeIsReportedOnce) {
  _lumaview_s* picture = Create();
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_PARSE, Reports::Callback);
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, Reports::Callback);

  EXPECT_EQ(lumaview_parse(picture), 0);
  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 0, 0}));
  EXPECT_EQ(lumaview_decode(picture, 0), 0);
  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 1, 3}));
  EXPECT_EQ(lumaview_decode(picture, 0), 0);
  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 1, 3}));

  EXPECT_EQ(lumaview_destroy(&picture), 0);
  EXPECT_TRUE(Reports::Get().IsEmpty());
}

TEST_F(GivenPictures, NullCallbackEndsTheReports) {
  _lumaview_s* picture = Create();
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_PARSE, Reports::Callback);
  EXPECT_EQ(lumaview_add_event_callback(picture, LUMAVIEW_EVENT_PARSE, nullptr), 0);
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, Reports::Callback);

  EXPECT_EQ(lumaview_parse(picture), 0);
  EXPECT_EQ(lumaview_decode(picture, 0), 0);

  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 1, 3}));
  EXPECT_EQ(lumaview_destroy(&picture), 0);
}

/// A callback that waits inside until the test lets it go.
struct Gate {
  std::promise<void> entered;
  std::promise<void> open;
  std::atomic<bool> left{false};
};
Gate* gate = nullptr;

int WaitAtTheGate(void*, lumaview_event_type_e, lumaview_event_result_e) {
  gate->entered.set_value();
  gate->open.get_future().wait();
  gate->left = true;
  return 0;
}

TEST_F(GivenPictures, DestroyWaitsForTheCallbackThatRuns) {
  Gate waiting;
  gate = &waiting;
  _lumaview_s* picture = Create();
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_PARSE, WaitAtTheGate);
  lumaview_parse(picture);
  waiting.entered.get_future().wait();

  std::atomic<bool> destroyed{false};
  std::thread destroyer([&] {
    EXPECT_EQ(lumaview_destroy(&picture), 0);
    EXPECT_TRUE(waiting.left) << "the callback was still running";
    destroyed = true;
  });

  EXPECT_FALSE(destroyed);
  waiting.open.set_value();
  destroyer.join();
}

int DestroyOneself(void* record, lumaview_event_type_e type, lumaview_event_result_e result) {
  auto* picture = static_cast<_lumaview_s*>(record);
  // The record is still there while its callback runs, also after this.
  EXPECT_EQ(lumaview_destroy(&picture), 0);
  static_cast<_lumaview_s*>(record)->flag = 7;
  return Reports::Callback(record, type, result);
}

TEST_F(GivenPictures, CallbackMayDestroyItsOwnPicture) {
  _lumaview_s* picture = Create();
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_PARSE, DestroyOneself);

  EXPECT_EQ(lumaview_parse(picture), 0);

  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 0, 0}));
  _lumaview_s* dead = picture;
  EXPECT_EQ(lumaview_destroy(&dead), -1);
}

_lumaview_s* other = nullptr;
int DestroyTheOther(void* record, lumaview_event_type_e type, lumaview_event_result_e result) {
  EXPECT_EQ(lumaview_destroy(&other), 0);
  return Reports::Callback(record, type, result);
}

TEST_F(GivenPictures, CallbackMayDestroyAnotherPicture) {
  _lumaview_s* picture = Create();
  other = Create();
  lumaview_add_event_callback(other, LUMAVIEW_EVENT_PARSE, Reports::Callback);
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_PARSE, DestroyTheOther);

  EXPECT_EQ(lumaview_parse(picture), 0);

  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 0, 0}));
  EXPECT_EQ(other, nullptr);
  EXPECT_EQ(lumaview_destroy(&picture), 0);
}

/// Set once the picture is destroyed; a callback that sees it is one too many.
std::array<std::atomic<bool>, 64> dead_rounds;
std::atomic<int> late_callbacks{0};

int CountLateCallbacks(void* record, lumaview_event_type_e type, lumaview_event_result_e result) {
  auto* picture = static_cast<_lumaview_s*>(record);
  if (dead_rounds[static_cast<size_t>(picture->flag)]) {
    ++late_callbacks;
  }
  if (type == LUMAVIEW_EVENT_PARSE && result == LUMAVIEW_RESULT_PARSE_OK) {
    lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, CountLateCallbacks);
    lumaview_decode(picture, 0);
  }
  return 0;
}

TEST_F(GivenPictures, NoCallbackComesAfterDestroyHasReturned) {
  for (size_t round = 0; round < dead_rounds.size(); ++round) {
    _lumaview_s* picture = Create();
    picture->flag = static_cast<int32_t>(round);
    lumaview_add_event_callback(picture, LUMAVIEW_EVENT_PARSE, CountLateCallbacks);
    lumaview_parse(picture);
    for (size_t spin = 0; spin < round * 20; ++spin) {
      std::this_thread::yield();  // each round is destroyed at another moment
    }
    lumaview_destroy(&picture);
    dead_rounds[round] = true;
  }
  EXPECT_EQ(late_callbacks, 0);
}

TEST_F(GivenPictures, HandlesMayBeUsedFromManyThreadsWhileTheyAreDestroyed) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 60;
  std::atomic<_lumaview_s*> shared{nullptr};
  std::atomic<int> destroyed{0};
  const auto use = [&](int seed) {
    for (int round = 0; round < kRounds; ++round) {
      _lumaview_s* mine = nullptr;
      ASSERT_EQ(lumaview_create_from_url(path.c_str(), &mine), 0);
      _lumaview_s* picture = shared.exchange(mine);
      lumaview_add_event_callback(picture, LUMAVIEW_EVENT_PARSE, Reports::Callback);
      lumaview_parse(picture);
      lumaview_display_param_s param{};
      param.field[kDisplayParamZoomRatio] = 1 + (seed + round) % 4;
      lumaview_set_display_param(picture, param);
      int x = 0;
      int y = 0;
      lumaview_set_zoom_move(picture, static_cast<lumaview_key_direction_e>(round % 4), &x, &y);
      lumaview_decode(shared.load(), 0);
      destroyed += lumaview_destroy(&picture) == 0 ? 1 : 0;
    }
  };
  std::array<std::thread, kThreads> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads[static_cast<size_t>(i)] = std::thread(use, i);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  _lumaview_s* last = shared;
  destroyed += lumaview_destroy(&last) == 0 ? 1 : 0;
  EXPECT_EQ(destroyed, kThreads * kRounds);
}

}  // namespace
}  // namespace lumaview_test
