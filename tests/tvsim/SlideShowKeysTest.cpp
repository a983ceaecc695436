// SPDX-License-Identifier: Apache-2.0
/// A slide show that is driven by the keys of a terminal.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>

#include "simulator/tvsim/slideshow/Keys.h"
#include "tests/tvsim/TvsimFixture.h"

namespace sim::tvsim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<Key> KeysOf(std::string typed) {
  std::vector<Key> keys;
  while (const auto key = TakeKey(typed)) {
    keys.push_back(*key);
  }
  return keys;
}

TEST(GivenTypedBytes, LettersAndCursorKeysAreKeys) {
  EXPECT_THAT(KeysOf("np r+-q"), ElementsAre(Key::kNext, Key::kPrevious, Key::kPause, Key::kRotate, Key::kZoomIn,
                                             Key::kZoomOut, Key::kQuit));
  EXPECT_THAT(KeysOf("\033[C\033[D\033OC\033OD"), ElementsAre(Key::kNext, Key::kPrevious, Key::kNext, Key::kPrevious));
}

TEST(GivenTypedBytes, WhatMeansNothingIsPassedOver) {
  EXPECT_THAT(KeysOf("x\033[1;2p\033\033qz"), ElementsAre(Key::kQuit)) << "the p ends a sequence and is no key";
}

TEST(GivenTypedBytes, AKeyThatHasNotComeWholeIsWaitedFor) {
  std::string typed = "\033[";
  EXPECT_EQ(TakeKey(typed), std::nullopt);
  typed += "C";
  EXPECT_EQ(TakeKey(typed), Key::kNext);
}

/// Three pictures, an engine that shows nothing, and a terminal.
class GivenTerminal : public TvsimFixture {
 protected:
  GivenTerminal() : m_terminal(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    grantpt(m_terminal.Get());
    unlockpt(m_terminal.Get());
    m_far_end.Reset(open(ptsname(m_terminal.Get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
  }

  /// With pictures that stand longer than any test, unless that is said otherwise.
  void Play(const std::vector<std::string>& options = {}, const std::string& interval = "3600") {
    std::vector<std::string> arguments = {"run", "--interval=" + interval};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.insert(arguments.end(), {PictureNamed("a.png"), PictureNamed("b.png"), PictureNamed("c.png")});
    m_tvsim = StartReading(m_far_end, std::move(arguments));
  }

  void Type(const std::string& keys) const {
    ASSERT_EQ(write(m_terminal.Get(), keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }

  /// Waits until the engine was given `command` as its last one.
  void AwaitLast(const std::string& command) const {
    Await(command, [&] {
      const auto commands = CommandsIn(EngineLog());
      return !commands.empty() && commands.back() == command;
    });
  }
  /// Waits until that picture stands. A picture's size is the last thing that is asked.
  void AwaitShown(const std::string& picture, int number) const {
    Await(picture, [&] {
      const std::string output = ContentsOf(PathOf("output"));
      const size_t last = output.rfind('[');
      return last != std::string::npos && output.find(picture + "  shown", last) != std::string::npos &&
             std::atoi(output.c_str() + last + 1) == number;
    });
  }

  void Signal(int number) const { m_tvsim->Signal(number); }
  int End() {
    const auto end = m_tvsim->Wait(std::chrono::minutes(1));
    EXPECT_TRUE(end) << "tvsim does not end";
    return end && !end->signalled ? end->status : -1;
  }

  bool ShowsWhatIsTyped() const {
    termios mode{};
    return tcgetattr(m_far_end.Get(), &mode) == 0 && (mode.c_lflag & (ICANON | ECHO)) == (ICANON | ECHO);
  }

 private:
  UniqueFd m_terminal;
  UniqueFd m_far_end;
  std::optional<ChildProcess> m_tvsim;
};

TEST_F(GivenTerminal, KeysGoForwardsAndBackwards) {
  Play();
  AwaitShown("a.png", 1);
  Type("n");
  AwaitShown("b.png", 2);
  Type("\033[C");
  AwaitShown("c.png", 3);
  Type("p");
  AwaitShown("b.png", 2);
  Type("\033[D");
  AwaitShown("a.png", 1);
  Type("q");

  EXPECT_EQ(End(), 0) << ContentsOf(PathOf("errors"));
  EXPECT_EQ(CommandsIn(EngineLog()).back(), "Stop()");
  EXPECT_THAT(ContentsOf(PathOf("output")), HasSubstr("Keys: n next"));
}

TEST_F(GivenTerminal, PreviousOfTheFirstIsTheLastInALoopAndNothingElsewhere) {
  Play();
  AwaitShown("a.png", 1);
  Type("pn");
  AwaitShown("b.png", 2);
  Type("q");
  EXPECT_EQ(End(), 0);

  Play({"--loop"});
  AwaitShown("a.png", 1);
  Type("p");
  AwaitShown("c.png", 3);
  Type("n");
  AwaitShown("a.png", 1);
  Type("q");
  EXPECT_EQ(End(), 0);
}

TEST_F(GivenTerminal, PauseHoldsAPictureAndTheKeysStillWork) {
  Play({"--loop"}, "0.001");
  Await("the second picture", [&] { return ContentsOf(PathOf("output")).find("[2/3]") != std::string::npos; });
  Type(" ");
  Await("paused", [&] { return ContentsOf(PathOf("output")).ends_with("paused\n"); });
  const size_t before = CommandsIn(EngineLog()).size();
  Type("r");
  AwaitLast("SetRotation(90)");
  EXPECT_EQ(CommandsIn(EngineLog()).size(), before + 1) << "nothing else was shown meanwhile";
  Type(" ");
  Await("going on", [&] { return CommandsIn(EngineLog()).size() > before + 2; });
  Type("q");

  EXPECT_EQ(End(), 0) << ContentsOf(PathOf("errors"));
}

TEST_F(GivenTerminal, KeysTurnAndZoomThePictureThatStands) {
  Play();
  AwaitShown("a.png", 1);
  for (const auto& [key, command] : std::vector<std::pair<std::string, std::string>>{
           {"r", "SetRotation(90)"},
           {"r", "SetRotation(180)"},
           {"+", "SetZoomRatio(2)"},
           {"+", "SetZoomRatio(4)"},
           {"-", "SetZoomRatio(2)"},
           {"r", "SetRotation(90)"}}) {  // a zoom resets the rotation, as the engine does
    Type(key);
    AwaitLast(command);
  }
  Type("n");
  AwaitShown("b.png", 2);
  Type("r");
  AwaitLast("SetRotation(90)");
  Type("q");

  EXPECT_EQ(End(), 0) << ContentsOf(PathOf("errors"));
}

TEST_F(GivenTerminal, APictureThatATransitionHasShownIsLoadedAgainToBeTurned) {
  Play({"--effect=dissolve"});
  AwaitShown("a.png", 1);
  Type("n");
  AwaitShown("b.png", 2);
  Type("rr");
  AwaitLast("SetRotation(180)");
  Type("q");

  EXPECT_EQ(End(), 0) << ContentsOf(PathOf("errors"));
  const auto commands = CommandsIn(EngineLog());
  const auto transition = std::ranges::find(commands, "SetTransitionEffect(1)");
  ASSERT_NE(transition, commands.end());
  EXPECT_THAT(std::vector(transition + 1, commands.end()),
              ElementsAre("GetPictureSize()", "ChangePlayingURL(" + PathOf("b.png") + ")", "StartPlayback()",
                          "SetRotation(90)", "SetRotation(180)", "Stop()"));
}

TEST_F(GivenTerminal, TheQuittingKeyDoesNotWaitForASilentPicture) {
  Play({PictureNamed("silent.png")});
  AwaitLast("StartPlayback()");
  Type("q");

  EXPECT_EQ(End(), 0) << ContentsOf(PathOf("errors"));
}

TEST_F(GivenTerminal, AnInterruptedShowTellsItsFramesToo) {
  Play({"--effect=dissolve"});
  AwaitShown("a.png", 1);
  Type("n");
  AwaitShown("b.png", 2);
  Signal(SIGTERM);

  EXPECT_EQ(End(), 1);
  EXPECT_THAT(ContentsOf(PathOf("output")), HasSubstr("\nFrames: 59 shown, 1 skipped"));
}

TEST_F(GivenTerminal, TheTerminalIsItselfAgainHoweverItEnds) {
  ASSERT_TRUE(ShowsWhatIsTyped());
  for (const bool by_key : {true, false}) {
    Play();
    AwaitShown("a.png", 1);
    EXPECT_FALSE(ShowsWhatIsTyped());
    by_key ? Type("q") : Signal(SIGTERM);
    EXPECT_EQ(End(), by_key ? 0 : 1);
    EXPECT_TRUE(ShowsWhatIsTyped());
  }
}

}  // namespace
}  // namespace sim::tvsim
