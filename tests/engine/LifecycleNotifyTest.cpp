// SPDX-License-Identifier: Apache-2.0
/// Values of the application's state key, as the store hands them to the handler.
#include "tests/engine/DisplayGivens.h"

namespace {

using olm::CEmpEnginePicture;
using olm::CPictureAdapter;

struct GivenEngine : kit::EngineTest {
  void SetUp() override {
    EngineTest::SetUp();
    engine = &MakeEngine();
    engine->m_pAdapter->SetAppID(0, "app", given::kWidget);
    kit::Begin();
  }
  void TearDown() override {
    EXPECT_EQ(kit::PendingFailures(), 0U);
    EngineTest::TearDown();
  }

  /// `value` null: the key has none.
  static void Notify(CEmpEnginePicture* receiver, const char* value, int type = 0) {
    std::string key = "db/KestWebApp/abcd1234";
    std::string text = value == nullptr ? "" : value;
    keynode_t node{};
    node.keyname = key.data();
    node.type = type;
    node.value.s = value == nullptr ? nullptr : text.data();
    CPictureAdapter::AppNotifyCB(&node, receiver);
  }
  static void ExpectPath(const char* path) { kit::ExpectGolden("AppNotifyCB", path); }

  CEmpEnginePicture* engine = nullptr;
};

TEST_F(GivenEngine, NotificationForNoEngineIsDropped) {
  Notify(nullptr, "pause");

  ExpectPath("no engine");
}

TEST_F(GivenEngine, NotificationAfterTheAdapterWentIsDropped) {
  engine->AppDestroy();
  kit::Begin();

  Notify(engine, "pause");

  ExpectPath("no adapter");
}

TEST_F(GivenEngine, NotificationWithoutAKeyIsDropped) {
  CPictureAdapter::AppNotifyCB(nullptr, engine);

  ExpectPath("no key");
}

TEST_F(GivenEngine, NotificationWithoutAValueIsDropped) {
  Notify(engine, nullptr);

  ExpectPath("no value");
}

TEST_F(GivenEngine, PauseOfAnIdleAdapterSucceeds) {
  Notify(engine, "pause", 40);

  ExpectPath("pause, nothing shown");
}

TEST_F(GivenEngine, DestroyTakesTheIdleAdapterAway) {
  Notify(engine, "destroy");

  ExpectPath("destroy, nothing shown");
  EXPECT_EQ(engine->m_pAdapter, nullptr);
}

struct GivenEngineThatShowsAPicture : GivenEngine {
  void SetUp() override {
    GivenEngine::SetUp();
    ASSERT_EQ(engine->m_pAdapter->InitPlayer(given::kPicture), 1);
    ASSERT_EQ(engine->m_pAdapter->StartPlayback(0), 1);
    kit::Begin();
  }
};

TEST_F(GivenEngineThatShowsAPicture, PauseReleasesTheScreen) {
  Notify(engine, "pause");

  ExpectPath("pause");
  EXPECT_EQ(engine->m_pAdapter->m_pDisplay, nullptr);
}

TEST_F(GivenEngineThatShowsAPicture, ResumeShowsThePictureAgain) {
  engine->m_pAdapter->AppPause();
  kit::Begin();

  Notify(engine, "resume");

  ExpectPath("resume");
}

TEST_F(GivenEngineThatShowsAPicture, ResumeThatFailsLeavesNoTrace) {
  engine->m_pAdapter->AppPause();
  kit::Begin();
  kit::FailNext("lumaview_create_from_url", -4);

  Notify(engine, "resume");

  ExpectPath("resume fails");
}

TEST_F(GivenEngineThatShowsAPicture, DestroyTakesTheAdapterAway) {
  Notify(engine, "destroy");

  ExpectPath("destroy");
  EXPECT_EQ(engine->m_pAdapter, nullptr);
}

TEST_F(GivenEngineThatShowsAPicture, OtherValuesDoNothing) {
  const std::pair<const char*, const char*> values[] = {{"stop", "another value"},
                                                        {"", "empty value"},
                                                        {"Pause", "capital letter"},
                                                        {"pause ", "trailing blank"},
                                                        {"paus", "beginning of a value"}};
  for (const auto& [value, path] : values) {
    kit::Begin();
    Notify(engine, value);
    ExpectPath(path);
  }
}

}  // namespace
