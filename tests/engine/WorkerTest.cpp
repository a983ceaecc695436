// SPDX-License-Identifier: Apache-2.0
/// The adapter's making and end, and the worker's.
#include "tests/engine/AdapterGiven.h"

namespace {

struct GivenFreshProcess : kit::EngineTest {};

TEST_F(GivenFreshProcess, MakingAnAdapterMeasuresTheScreenAndMakesNothingElse) {
  MakeAdapter();
  kit::ExpectGolden("CPictureAdapter", "screen can be measured");
}

TEST_F(GivenFreshProcess, MakingAnAdapterLeavesEveryDefault) {
  olm::CEmpEnginePicture& engine = MakeEngine();
  const olm::CPictureAdapter& adapter = MakeAdapter(&engine);

  EXPECT_EQ(adapter.m_pEmpEngine, &engine);
  EXPECT_EQ(adapter.m_pPicture, nullptr);
  EXPECT_EQ(adapter.m_thread_id, pthread_t{});
  EXPECT_EQ(adapter.m_pMainLoop, nullptr);
  EXPECT_EQ(adapter.m_pTransitionEffect, nullptr);
  EXPECT_TRUE(kit::IsZero(adapter.m_cURL, sizeof adapter.m_cURL));
  EXPECT_EQ(sizeof adapter.m_cURL, 500U);
  EXPECT_EQ(adapter.m_pDisplay, nullptr);
  EXPECT_EQ(adapter.m_cWin, ~Window{0});
  EXPECT_EQ(adapter.m_GC, nullptr);
  EXPECT_EQ(adapter.m_pImage, nullptr);
  EXPECT_FALSE(adapter.m_bInitWindow || adapter.m_bInitDisplay || adapter.m_bSlideShow || adapter.m_bVconfRegistered);
  EXPECT_EQ(adapter.m_iScreenWidth, 1920);
  EXPECT_EQ(adapter.m_iScreenHeight, 1080);
  EXPECT_EQ(adapter.m_i3DSetting, 0);
  EXPECT_FALSE(adapter.m_b3DSettingChanged);
  EXPECT_EQ(adapter.m_taskID, 0);
  EXPECT_EQ(adapter.m_strAppID + adapter.m_strAppName + adapter.m_strAppShortName + adapter.m_strVconfKey, "");
  EXPECT_EQ(adapter.m_pEventCallback, nullptr);
}

/// A constructor that forgets a field finds other bytes than zero there.
TEST_F(GivenFreshProcess, MakingAnAdapterSetsEveryFieldWhateverTheMemoryHeld) {
  alignas(olm::CPictureAdapter) static unsigned char memory[sizeof(olm::CPictureAdapter)];
  std::fill(std::begin(memory), std::end(memory), static_cast<unsigned char>(0xA5));
  kit::FailAt("XOpenDisplay", 1);
  auto* adapter = new (memory) olm::CPictureAdapter(nullptr);

  EXPECT_EQ(adapter->m_pEmpEngine, nullptr);
  EXPECT_EQ(adapter->m_pPicture, nullptr);
  EXPECT_EQ(adapter->m_thread_id, pthread_t{});
  EXPECT_EQ(adapter->m_pMainLoop, nullptr);
  EXPECT_EQ(adapter->m_pTransitionEffect, nullptr);
  EXPECT_TRUE(kit::IsZero(adapter->m_cURL, sizeof adapter->m_cURL));
  EXPECT_EQ(adapter->m_pDisplay, nullptr);
  EXPECT_EQ(adapter->m_cWin, ~Window{0});
  EXPECT_EQ(adapter->m_GC, nullptr);
  EXPECT_EQ(adapter->m_pImage, nullptr);
  EXPECT_FALSE(adapter->m_bInitWindow || adapter->m_bInitDisplay || adapter->m_bSlideShow);
  EXPECT_FALSE(adapter->m_bVconfRegistered || adapter->m_b3DSettingChanged);
  EXPECT_EQ(adapter->m_iScreenWidth, 0);
  EXPECT_EQ(adapter->m_iScreenHeight, 0);
  EXPECT_EQ(adapter->m_i3DSetting, 0);
  EXPECT_EQ(adapter->m_taskID, 0);
  EXPECT_EQ(adapter->m_pEventCallback, nullptr);
  adapter->~CPictureAdapter();
}

TEST_F(GivenFreshProcess, WithoutAnXServerTheScreenStaysUnknown) {
  kit::FailNext("XOpenDisplay");
  const olm::CPictureAdapter& adapter = MakeAdapter();
  kit::ExpectGolden("CPictureAdapter", "no X server");
  EXPECT_EQ(adapter.m_iScreenWidth, 0);
  EXPECT_EQ(adapter.m_iScreenHeight, 0);
}

TEST_F(GivenFreshProcess, MakingAnAdapterLooksAtNoOtherResult) {
  kit::FailNext("lumaview_pre_loading", 9);
  kit::FailNext("pthread_mutex_init", 12);
  MakeAdapter();
  kit::ExpectGolden("CPictureAdapter", "results that nobody looks at");
}

TEST_F(GivenFreshProcess, DestroyingAnUnusedAdapterReleasesNothing) {
  olm::CPictureAdapter& adapter = MakeAdapter();
  kit::Begin();
  DeleteAdapter(adapter);
  kit::ExpectGolden("~CPictureAdapter", "InitPlayer never ran");
}

TEST_F(GivenPlayingAdapter, DestroyingTheAdapterReleasesEverythingInOrder) {
  DeleteAdapter(*adapter);
  kit::ExpectGolden("~CPictureAdapter", "playing");
  EXPECT_EQ(olm::CPictureAdapter::lumaviewInitFlag, 0);
  EXPECT_EQ(olm::CPictureAdapter::window_id, olm::kNoWindow);
  EXPECT_EQ(olm::CPictureAdapter::winNum, 0);
}

TEST_F(GivenPreparedAdapter, DestroyingTheAdapterLeavesTheLibraryDisplayOut) {
  DeleteAdapter(*adapter);
  kit::ExpectGolden("~CPictureAdapter", "prepared, not played");
}

TEST_F(GivenPlayingAdapter, ADisplayThatCannotBeShutDownKeepsTheFlagAndLosesTheWindow) {
  kit::FailNext("lumaview_destroy", 3);
  kit::FailNext("lumaview_destroy_transition_effect", 4);
  kit::FailNext("lumaview_destroy_display", 5);
  DeleteAdapter(*adapter);
  kit::ExpectGolden("~CPictureAdapter", "the library refuses everything");
  EXPECT_EQ(olm::CPictureAdapter::lumaviewInitFlag, 1);
  EXPECT_EQ(olm::CPictureAdapter::window_id, olm::kNoWindow);
}

TEST_F(GivenAdapter, DestroyingItWithoutAWindowSkipsTheLibraryDisplayToo) {
  ASSERT_EQ(adapter->Play("/pictures/a.jpg", 0), 1);
  ASSERT_TRUE(adapter->m_bInitDisplay);
  kit::Begin();
  DeleteAdapter(*adapter);
  kit::ExpectGolden("~CPictureAdapter", "a picture but no window");
  EXPECT_EQ(olm::CPictureAdapter::lumaviewInitFlag, 1);
}

TEST_F(GivenPlayingAdapter, DestroyingItAfterStopFindsNothing) {
  ASSERT_EQ(adapter->Stop(), 1);
  kit::Begin();
  DeleteAdapter(*adapter);
  kit::ExpectGolden("~CPictureAdapter", "stopped");
}

TEST_F(GivenPreparedAdapter, TheDestructorReturnsAfterTheWorkerHas) {
  bool returned = false;
  kit::OnCall("pthread_join", [&returned] {
    const kit::WorkerCounts workers = kit::CountWorkers();
    returned = workers.started == workers.returned;
  });
  DeleteAdapter(*adapter);
  EXPECT_TRUE(returned);
}

TEST_F(GivenAdapter, TheWorkerRunsALoopUntilStop) {
  ASSERT_EQ(adapter->InitPlayer("/pictures/a.jpg"), 1);
  ASSERT_EQ(adapter->Stop(), 1);
  kit::ExpectWorkerGolden("picture_thread_func", "made by InitPlayer, ended by Stop");
}

TEST_F(GivenAdapter, TheWorkerRunsALoopUntilTheDestructor) {
  ASSERT_EQ(adapter->InitPlayer("/pictures/a.jpg"), 1);
  DeleteAdapter(*adapter);
  kit::ExpectWorkerGolden("picture_thread_func", "made by InitPlayer, ended by the destructor");
}

TEST_F(GivenAdapter, AfterStopTheNextInitPlayerMakesASecondWorker) {
  ASSERT_EQ(adapter->InitPlayer("/pictures/a.jpg"), 1);
  ASSERT_EQ(adapter->Stop(), 1);
  ASSERT_TRUE(kit::AwaitWorkers());
  ASSERT_EQ(adapter->InitPlayer("/pictures/a.jpg"), 1);
  ASSERT_EQ(adapter->Stop(), 1);
  kit::ExpectWorkerGolden("picture_thread_func", "Stop, then a second InitPlayer and Stop");
}

TEST_F(GivenAdapter, TheWorkersFunctionReturnsNull) {
  void* result = this;
  kit::OnCall("g_main_loop_run", [this] { EXPECT_NE(adapter->m_pMainLoop, nullptr); });
  ASSERT_EQ(adapter->InitPlayer("/pictures/a.jpg"), 1);
  const pthread_t worker = adapter->m_thread_id;
  kit::QuitLoop(adapter->m_pMainLoop);
  pthread_join(worker, &result);
  EXPECT_EQ(result, nullptr);
  adapter->m_thread_id = 0;
}

TEST_F(GivenAdapter, EveryWorkerIsDetachedOrJoinedOnce) {
  const kit::WorkerCounts before = kit::CountWorkers();
  for (int round = 0; round < 3; ++round) {
    ASSERT_EQ(adapter->InitPlayer("/pictures/a.jpg"), 1);
    ASSERT_EQ(adapter->Stop(), 1);
  }
  ASSERT_EQ(adapter->InitPlayer("/pictures/a.jpg"), 1);
  DeleteAdapter(*adapter);
  ASSERT_TRUE(kit::AwaitWorkers());
  const kit::WorkerCounts after = kit::CountWorkers();
  EXPECT_EQ(after.started - before.started, 4U);
  EXPECT_EQ(after.detached - before.detached, 3U);
  EXPECT_EQ(after.joined - before.joined, 1U);
}

}  // namespace
