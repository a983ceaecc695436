// SPDX-License-Identifier: Apache-2.0
/// What is the same for every command: the lock, the adapter, the name, the result.
#include <thread>

#include "host/CommandTable.h"
#include "tests/engine/CommandGiven.h"

namespace {

using Commands = GivenEngine;

TEST_F(Commands, AreKnownByTheirWholeName) {
  ExpectCommand("Execute", "Fly", {"1", "2", "3", "4"}, "unknown command");
  EXPECT_EQ(Result(), kUntouched);
  ExpectCommand("Execute", "play", {"1", "2", "3", "4"}, "lower case");
  ExpectCommand("Execute", "Play ", {"1", "2", "3", "4"}, "trailing blank");
  ExpectCommand("Execute", "", {"1", "2", "3", "4"}, "empty command");
  EXPECT_EQ(Result(), kUntouched);
}

class CommandsWithoutAnAdapter : public GivenEngine {
 protected:
  void SetUp() override {
    GivenEngine::SetUp();
    ASSERT_TRUE(Engine().AppDestroy());
    ASSERT_EQ(Engine().m_pAdapter, nullptr);
  }
};

TEST_F(CommandsWithoutAnAdapter, AnswerZero) {
  ExpectCommand("Execute", "Play", {"/a.jpg", "b", "c", "d"}, "adapter gone");
  EXPECT_EQ(Result(), "0");
}

TEST_F(CommandsWithoutAnAdapter, AnswerZeroEvenWhereTheyAreUnknown) {
  ExpectCommand("Execute", "Fly", {}, "unknown command, adapter gone");
}

TEST_F(CommandsWithoutAnAdapter, AllAnswerZero) {
  for (const olm::CommandRow& row : olm::CommandTable()) {
    kit::Begin();
    EXPECT_TRUE(Send(std::string(row.name), {"1", "2", "3", "4"})) << row.name;
    EXPECT_EQ(Result(), "0") << row.name;
    EXPECT_EQ(kit::Count("log 1 red Execute: Execute m_pAdapter == NULL\\n"), 1U) << row.name;
    EXPECT_EQ(kit::Count("call "), 0U) << row.name;
  }
}

/// Whether another thread could take the mutex now.
bool IsFree(pthread_mutex_t& mutex) {
  bool taken = false;
  std::thread([&] {
    taken = pthread_mutex_trylock(&mutex) == 0;
    if (taken) pthread_mutex_unlock(&mutex);
  }).join();
  return taken;
}

using CommandsOfAPicture = GivenPreparedPicture;

TEST_F(CommandsOfAPicture, HoldTheEnginesMutexWhileTheyRun) {
  bool free = true;
  kit::OnCall("lumaview_get_size", [&] { free = IsFree(Engine().m_EngineMut); });
  ASSERT_TRUE(Send("GetPictureSize"));
  EXPECT_FALSE(free);
  EXPECT_TRUE(IsFree(Engine().m_EngineMut));
}

TEST_F(CommandsOfAPicture, LetTheMutexGoOnEveryWayOut) {
  Send("Fly");
  EXPECT_TRUE(IsFree(Engine().m_EngineMut));
  Send("SetZoomRatio");
  EXPECT_TRUE(IsFree(Engine().m_EngineMut));
  ASSERT_TRUE(Engine().AppDestroy());
  Send("Play");
  EXPECT_TRUE(IsFree(Engine().m_EngineMut));
}

TEST_F(CommandsOfAPicture, HoldTheAdaptersMutexWhileAnEffectIsStarted) {
  bool free = true;
  kit::OnCall("lumaview_run_transition_effect", [&] { free = IsFree(Adapter().m_AdapterMut); });
  ASSERT_TRUE(Send("EffectShow", {"3"}));
  EXPECT_FALSE(free);
  EXPECT_TRUE(IsFree(Adapter().m_AdapterMut));
}

TEST_F(Commands, OfLoadingAreCountedWhereTheySucceed) {
  EXPECT_EQ(olm::s_initPlayerCount, 0);
  EXPECT_EQ(olm::s_playCount, 0);
  Send("InitPlayer");
  Send("Play");
  kit::FailNext("lumaview_create_from_url", -4);
  Send("InitPlayer", {kPicture});
  kit::FailNext("lumaview_parse", -6);
  Send("Play", {kPicture});
  EXPECT_EQ(olm::s_initPlayerCount, 0);
  EXPECT_EQ(olm::s_playCount, 0);
  Send("InitPlayer", {kPicture});
  Send("InitPlayer", {kPicture});
  Send("Play", {kPicture});
  EXPECT_EQ(olm::s_initPlayerCount, 2);
  EXPECT_EQ(olm::s_playCount, 1);
  Send("StartPlayback");
  Send("ChangePlayingURL", {kPicture});
  EXPECT_EQ(olm::s_initPlayerCount, 2);
  EXPECT_EQ(olm::s_playCount, 1);
}

}  // namespace
