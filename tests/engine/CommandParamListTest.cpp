// SPDX-License-Identifier: Apache-2.0
/// The one command that comes with a parameter list.
#include <algorithm>

#include "tests/engine/CommandGiven.h"

namespace {

constexpr const char* kName = "SetDisplayArea";

class ParameterLists : public GivenEngine {
 protected:
  /// `texts`: from position 0 on.
  void ExpectList(const std::string& command, const std::vector<std::string>& texts, const std::string& path) {
    olm::ParamList params;
    for (const std::string& text : texts) params.push_back(text);
    m_answer = kUntouched;
    ExpectOperation("ExecuteWithParamList", path,
                    [&] { return Engine().ExecuteWithParamList(m_answer, command, params); });
  }
  std::string m_answer;
};

class ParameterListsWithAWindow : public ParameterLists {
 protected:
  void SetUp() override {
    ParameterLists::SetUp();
    ASSERT_EQ(Adapter().SetDisplayArea(0, 0, 0, 0, 540, true), 1);
  }
};

TEST_F(ParameterListsWithAWindow, NameTheHeightOfTheLayout) {
  ExpectList(kName, {kName, "100", "50", "640", "360", "720"}, "window moved");
  EXPECT_EQ(m_answer, "1");
}

TEST_F(ParameterListsWithAWindow, MayLeaveEverythingAsItIs) {
  ExpectList(kName, {kName, "1", "2", "30", "40", "1080"}, "widget height 1080");
}

TEST_F(ParameterListsWithAWindow, AreReadFromPositionOneToFive) {
  ExpectList(kName, {"other", "1", "2", "30", "40", "1080", "6", "7"}, "more than five");
}

TEST_F(ParameterLists, FailWithoutAServer) {
  kit::FailNext("XOpenDisplay");
  ExpectList(kName, {kName, "10", "20", "30", "40", "540"}, "no server");
  EXPECT_EQ(m_answer, "0");
}

TEST_F(ParameterLists, NeedAllFive) {
  for (size_t missing = 1; missing <= 5; ++missing) {
    std::vector<std::string> texts{kName, "1", "2", "3", "4", "5"};
    texts[missing].clear();
    ExpectList(kName, texts, "parameter " + std::to_string(missing) + " empty");
    EXPECT_EQ(m_answer, "0");
  }
  ExpectList(kName, {kName, "1", "2", "3", "4"}, "four parameters");
  ExpectList(kName, {}, "no parameter");
}

TEST_F(ParameterLists, KnowNoOtherCommand) {
  ExpectList("Play", {"Play", "1", "2", "3", "4", "5"}, "other command");
  EXPECT_EQ(m_answer, kUntouched);
  ExpectList("setDisplayArea", {kName, "1", "2", "3", "4", "5"}, "case differs");
  EXPECT_EQ(m_answer, kUntouched);
}

TEST_F(ParameterLists, AnswerZeroWithoutAnAdapter) {
  ASSERT_TRUE(Engine().AppDestroy());
  ExpectList(kName, {kName, "1", "2", "30", "40", "1080"}, "adapter gone");
  EXPECT_EQ(m_answer, "0");
  ExpectList("Play", {"Play", "1", "2", "3", "4", "5"}, "other command");
}

}  // namespace
