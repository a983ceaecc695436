// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <csignal>

#include "simulator/tvsim/screen/Picture.h"
#include "simulator/vconf/include/Store.h"
#include "tests/tvsim/GivenRunningSession.h"

namespace sim::tvsim {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

TEST_F(GivenRunningSession, StateWritesTheKeyOfTheApplication) {
  const Outcome outcome = Run({"state", "pause"});

  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  const auto store = vconf::Store::Open(PathOf("runtime/tvsim/tv"));
  ASSERT_TRUE(store);
  EXPECT_EQ(**(*store)->Get("db/KestWebApp/slideshow"), "pause");
}

TEST_F(GivenRunningSession, ScreenshotShowsItsScreen) {
  const Outcome outcome = Run({"screenshot", PathOf("shot.png")});

  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  const Result<Picture> shot = ReadPng(PathOf("shot.png"));
  ASSERT_TRUE(shot);
  EXPECT_EQ(shot->width, 640);
}

TEST_F(GivenRunningSession, ScreenshotIntoNowhereSaysSo) {
  const Outcome outcome = Run({"screenshot", PathOf("nowhere/shot.png")});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, HasSubstr("cannot write"));
}

TEST_F(GivenRunningSession, ASecondOneNeedsAnotherName) {
  const Outcome same = Run({"run", "--interval=0", PathOf("a.jpg")});
  const Outcome other = Run({"run", "--interval=0", "--session=second", PathOf("a.jpg")});

  EXPECT_EQ(same.status, 2);
  EXPECT_THAT(same.errors, HasSubstr("--session NAME"));
  EXPECT_EQ(other.status, 0) << other.errors;
}

TEST_F(GivenRunningSession, ItsFolderIsItsOwnersAlone) {
  const auto permissions = std::filesystem::status(PathOf("runtime/tvsim/tv")).permissions();

  EXPECT_EQ(permissions, std::filesystem::perms::owner_all);
}

TEST_F(GivenRunningSession, InterruptingEndsItInGoodOrder) {
  m_tvsim.Signal(SIGINT);

  const auto end = m_tvsim.Wait(kGenerousTime);
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->signalled);
  EXPECT_EQ(end->status, 1);
  ExpectNothingLeft();
}

TEST_F(GivenRunningSession, KillingTvsimLeavesNothing) {
  m_tvsim.Signal(SIGKILL);

  ASSERT_TRUE(m_tvsim.Wait(kGenerousTime));
  ExpectNothingLeft();
}

TEST_F(GivenRunningSession, KillingItsEngineBringsANewOne) {
  const pid_t first = ProcessNamed("fake-engine");
  ASSERT_GT(first, 0);

  kill(first, SIGKILL);

  Await("another engine", [&] {
    const pid_t now = ProcessNamed("fake-engine");
    return now > 0 && now != first;
  });
  Await("the report", [&] {
    return ContentsOf(PathOf("errors")).find("signal 9 (Killed); it is started again") != std::string::npos;
  });
}

TEST_F(GivenRunningSession, WhatIsKnownOfAKilledEngineIsKept) {
  const pid_t engine = ProcessNamed("fake-engine");
  ASSERT_GT(engine, 0);

  kill(engine, SIGKILL);

  Await("a record", [this] { return !CrashRecords().empty(); });
  const std::string record = CrashRecords().front();
  EXPECT_THAT(record, StartsWith("end:     signal 9 (Killed)\n"));
  EXPECT_THAT(record, HasSubstr("\ncommand: \npicture: " + PathOf("a.jpg") + "\n\n"));
  EXPECT_THAT(record, HasSubstr("\"command\":\"StartPlayback\""));  // a line of the log
  EXPECT_THAT(Run({"doctor"}).output, HasSubstr("lacking crashes: end:     signal 9 (Killed); "));
}

TEST_F(TvsimFixture, TheCommandThatAnEngineEndedAtIsKept) {
  Run({"run", PictureNamed("crash.jpg")});

  ASSERT_THAT(CrashRecords(), SizeIs(1));
  EXPECT_THAT(CrashRecords().front(), StartsWith("end:     signal 11 (Segmentation fault)\n"
                                                 "command: engine.execute {\"command\":\"InitPlayer\""));
  EXPECT_THAT(CrashRecords().front(), HasSubstr("\nabout to crash\n"));
}

TEST_F(GivenRunningSession, KillingItsXServerBringsAnotherAndAnotherEngine) {
  const pid_t server = ProcessNamed("Xvfb");
  const pid_t engine = ProcessNamed("fake-engine");
  ASSERT_GT(server, 0);

  kill(server, SIGKILL);

  Await("another X server and another engine", [&] {
    const pid_t server_now = ProcessNamed("Xvfb");
    const pid_t engine_now = ProcessNamed("fake-engine");
    return server_now > 0 && server_now != server && engine_now > 0 && engine_now != engine;
  });
  EXPECT_THAT(ContentsOf(PathOf("errors")), HasSubstr("its X server has ended; the engine follows it"));
}

using GivenNoSession = TvsimFixture;

TEST_F(GivenNoSession, StateSaysHowToStartOne) {
  const Outcome outcome = Run({"state", "pause"});

  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.errors, HasSubstr("no session 'tv' is running"));
}

TEST_F(GivenNoSession, WrongUseIsStatusTwo) {
  EXPECT_EQ(Run({"state", "sleep"}).status, 2);
  EXPECT_EQ(Run({"frobnicate"}).status, 2);
  EXPECT_EQ(Run({"run", "--size=wide", PictureNamed("a.jpg")}).status, 2);
  EXPECT_EQ(Run({"--help"}).status, 0);
  EXPECT_EQ(Run({"--version"}).status, 0);
}

}  // namespace
}  // namespace sim::tvsim
