// SPDX-License-Identifier: Apache-2.0
/// The engine object: how it is made, how it lets its adapter go, and the subtitle callback.
#include "tests/engine/CommandGiven.h"

namespace {

struct NoEngine : kit::EngineTest {};
using AnEngine = GivenEngine;

TEST_F(NoEngine, IsMadeWithItsAdapter) {
  auto& engine = MakeEngine();
  kit::ExpectGolden("CEmpEnginePicture", "made");
  EXPECT_EQ(olm::m_pEngine, &engine);
  ASSERT_NE(engine.m_pAdapter, nullptr);
  EXPECT_EQ(engine.m_pAdapter->m_pEmpEngine, &engine);
  EXPECT_EQ(engine.GetAdapter(), engine.m_pAdapter);
}

TEST_F(NoEngine, IsKnownBeforeItsAdapterIsMade) {
  const olm::CEmpEnginePicture* known = nullptr;
  kit::OnCall("lumaview_pre_loading", [&] { known = olm::m_pEngine; });
  const auto& engine = MakeEngine();
  EXPECT_EQ(known, &engine);
}

TEST_F(AnEngine, DeletesItsAdapterUnderItsMutex) {
  DeleteEngine(Engine());
  kit::ExpectGolden("~CEmpEnginePicture", "adapter present");
}

TEST_F(AnEngine, DeletesNothingTwice) {
  ASSERT_TRUE(Engine().AppDestroy());
  kit::Begin();
  DeleteEngine(Engine());
  kit::ExpectGolden("~CEmpEnginePicture", "adapter gone");
}

TEST_F(AnEngine, LetsItsAdapterGoWhenTheApplicationIsDestroyed) {
  ExpectOperation("Engine-AppDestroy", "adapter present", [&] { return Engine().AppDestroy(); });
  EXPECT_EQ(Engine().m_pAdapter, nullptr);
  EXPECT_EQ(Engine().GetAdapter(), nullptr);
}

TEST_F(AnEngine, MayBeDestroyedTwice) {
  ASSERT_TRUE(Engine().AppDestroy());
  ExpectOperation("Engine-AppDestroy", "adapter gone", [&] { return Engine().AppDestroy(); });
}

class SubtitleCallback : public GivenEngine {
 protected:
  void ExpectCallback(unsigned short* code, char* text, const char* path) {
    int unread = 5;
    kit::Begin();
    olm::CEmpEnginePicture::SubtitleTextCallback(code, text, &unread, nullptr, nullptr);
    kit::ExpectGolden("SubtitleTextCallback", path);
  }
  unsigned short m_code[3] = {65, 66, 0};
  char m_text[6] = "Hello";
  char m_abc[4] = "abc";
  char m_empty[1] = "";
};

TEST_F(SubtitleCallback, SendsTheNumberAndTheText) {
  ExpectCallback(m_code, m_text, "code 65");
}

TEST_F(SubtitleCallback, TakesEveryNumber) {
  m_code[0] = 0;
  ExpectCallback(m_code, m_abc, "code 0");
  m_code[0] = 65535;
  ExpectCallback(m_code, m_abc, "code 65535");
}

TEST_F(SubtitleCallback, IsNotChangedByTheProcesssLocale) {
  const GroupedThousands locale;
  m_code[0] = 65535;
  ExpectCallback(m_code, m_abc, "code 65535");
}

TEST_F(SubtitleCallback, ReadsTheFirstUnitOfATextAlone) {
  m_code[0] = 'H';
  ExpectCallback(m_code, m_abc, "first unit only");
}

TEST_F(SubtitleCallback, SendsAnEmptyText) {
  m_code[0] = 7;
  ExpectCallback(m_code, m_empty, "empty text");
}

TEST_F(SubtitleCallback, SendsNothingWithoutBoth) {
  ExpectCallback(nullptr, m_abc, "no code");
  ExpectCallback(m_code, nullptr, "no text");
  ExpectCallback(nullptr, nullptr, "neither");
}

TEST_F(SubtitleCallback, CopiesTheTextAndNeedsNoLock) {
  ASSERT_EQ(pthread_mutex_lock(&Engine().m_EngineMut), 0);
  ExpectCallback(m_code, m_text, "code 65");
  pthread_mutex_unlock(&Engine().m_EngineMut);
}

TEST_F(SubtitleCallback, WorksWithoutAnAdapter) {
  ASSERT_TRUE(Engine().AppDestroy());
  ExpectCallback(m_code, m_text, "code 65");
}

}  // namespace
