// SPDX-License-Identifier: Apache-2.0
/// The adapter's fields are touched by commands and by key notifications, which meet on different threads. Whatever an
/// operation shows of itself, a line or a call, it shows while it holds the lock of the fields.
#include "host/CommandTable.h"
#include "tests/engine/CommandGiven.h"
#include "tests/kit/Mutexes.h"

namespace {

/// True for what is written outside on purpose: the lines of the dispatcher; the traces of the named locks, which are
/// never taken inside the fields' lock; the markers of operations that take a named lock between them.
bool IsOutside(const std::string& entry) {
  constexpr std::string_view kOutside[] = {
      "log 1 red Execute: ",
      "log 4 blue Execute: ",
      "result ",
      "call GetAppInfo(",
      "call malloc(400)",
      "call free(",
      "log 2 trace EffectShow: ",
      "log 2 trace Stop: ",
      "log 2 trace AppPause: ",
      "log 2 trace AppDestroy: ",
      "log 2 trace SetTransitionEffect: Enter",
  };
  if (entry.ends_with("lock m_AdapterMut")) return true;
  return std::any_of(std::begin(kOutside), std::end(kOutside),
                     [&entry](std::string_view start) { return entry.starts_with(start); });
}

class GuardedFields : public GivenShownPicture {
 protected:
  void SetUp() override {
    GivenShownPicture::SetUp();
    kit::OnEntry([this](const std::string& entry) {
      if (IsOutside(entry)) return;
      ++m_guarded;
      if (!kit::ThisThreadHoldsInnerLock()) m_unguarded += entry + "\n";
    });
  }
  void TearDown() override {
    kit::OnEntry(nullptr);
    EXPECT_EQ(m_unguarded, "");
    EXPECT_GT(m_guarded, 0U);
    GivenShownPicture::TearDown();
  }
  std::string m_unguarded;
  size_t m_guarded = 0;
};

class GuardedCommands : public GuardedFields, public testing::WithParamInterface<std::string> {};

TEST_P(GuardedCommands, HoldTheLock) {
  Send(GetParam(), {"1", "2", "3", "4"});
}

std::vector<std::string> CommandNames() {
  std::vector<std::string> names;
  for (const olm::CommandRow& row : olm::CommandTable()) names.emplace_back(row.name);
  return names;
}

INSTANTIATE_TEST_SUITE_P(All, GuardedCommands, testing::ValuesIn(CommandNames()),
                         [](const auto& test) { return test.param; });

TEST_F(GuardedFields, AreGuardedInAPause) {
  EXPECT_EQ(Adapter().AppPause(), 1);
}

TEST_F(GuardedFields, AreGuardedInAResume) {
  kit::OnEntry(nullptr);
  ASSERT_EQ(Adapter().AppPause(), 1);
  const auto guard = [this](const std::string& entry) {
    ++m_guarded;
    if (!kit::ThisThreadHoldsInnerLock()) m_unguarded += entry + "\n";
  };
  kit::OnEntry(guard);
  EXPECT_EQ(Adapter().AppResume(), 1);
}

TEST_F(GuardedFields, AreGuardedAtTheEnd) {
  EXPECT_EQ(Adapter().AppDestroy(), 1);
}

TEST_F(GuardedFields, AreGuardedInEveryStepOfTheWindow) {
  Adapter().ResizeWindow(1, 2, 3, 4);
  Adapter().make_transparent_image(Adapter().m_pDisplay, 5, 6);
  Adapter().InitWindow(0, 0, 10, 10);
  Adapter().CreateWindow(Adapter().m_pDisplay, 0, 0, 10, 10);
  Adapter().DestroyDisplayWin();
  Adapter().CloseDisplay();
}

TEST_F(GuardedFields, AreGuardedInTheIdentity) {
  Adapter().UnregisterVconfKeys();
  Adapter().SetAppID(0, "app", "widget");
  Adapter().RegisterVconfKeys();
}

}  // namespace
