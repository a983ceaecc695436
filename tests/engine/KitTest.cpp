// SPDX-License-Identifier: Apache-2.0
/// The kit itself: what it folds, what it refuses, how it compares.
#include "adapter/PictureLog.h"
#include "tests/kit/Kit.h"

namespace {

using olm::COLMDebug;

const olm::Operation kStop{"Stop"};

struct GivenEmptyJournal : kit::EngineTest {
  static std::string Only() {
    const auto entries = kit::Entries();
    return entries.size() == 1 ? entries.front() : std::to_string(entries.size()) + " entries";
  }
};

TEST_F(GivenEmptyJournal, ColouredLinesFoldIntoOneEntryEach) {
  LOG_RED(kStop, "iFunRet = %d\n", 7);
  LOG_YELLOW(kStop, "a\tb");
  LOG_BLUE(kStop, "%s", "back\\slash");
  LOG_ENTER(kStop);
  LOG_PLAIN(kStop, 0, "bare\n");

  const std::vector<std::string> expected = {"log 1 red Stop: iFunRet = 7\\n", "log 2 yellow Stop: a\\tb",
                                             "log 4 blue Stop: back\\\\slash", "log 2 trace Stop: Enter",
                                             "log 0 plain Stop: bare\\n"};
  EXPECT_EQ(kit::Entries(), expected);
}

TEST_F(GivenEmptyJournal, AMessageWithoutPrefixIsRaw) {
  COLMDebug::PrintLog(2, 0, "bare");
  EXPECT_TRUE(Only().starts_with("log! ")) << Only();
}

TEST_F(GivenEmptyJournal, APrefixWithoutMessageIsRaw) {
  COLMDebug::PrintLog(2, 0, "[OLM][%s(%d)] ", "Stop", 3);
  kit::Append("call next()");
  ASSERT_EQ(kit::Entries().size(), 2U);
  EXPECT_TRUE(kit::Entries().front().starts_with("log! "));
}

struct Wrong {
  const char* why;
  unsigned int module;
  unsigned int prefixLevel;
  unsigned int level;
  const char* function;
  int line;
  const char* message;
};

struct GivenWrongLine : GivenEmptyJournal, testing::WithParamInterface<Wrong> {};

TEST_P(GivenWrongLine, ItIsRaw) {
  const Wrong& wrong = GetParam();
  COLMDebug::PrintLog(wrong.module, wrong.prefixLevel, "[OLM][%s(%d)] ", wrong.function, wrong.line);
  COLMDebug::PrintLog(wrong.module, wrong.level, "%s", wrong.message);
  EXPECT_TRUE(Only().starts_with("log! ")) << wrong.why << ": " << Only();
}

INSTANTIATE_TEST_SUITE_P(
    EachRule, GivenWrongLine,
    testing::Values(
        Wrong{"module", 3, 1, 1, "Stop", 5, "\033[31m[Picture-EMP][Stop (5)] x\033[0m"},
        Wrong{"levels differ", 2, 1, 4, "Stop", 5, "\033[34m[Picture-EMP][Stop (5)] x\033[0m"},
        Wrong{"colour of another level", 2, 1, 1, "Stop", 5, "\033[34m[Picture-EMP][Stop (5)] x\033[0m"},
        Wrong{"another function", 2, 1, 1, "Stop", 5, "\033[31m[Picture-EMP][Play (5)] x\033[0m"},
        Wrong{"another line", 2, 1, 1, "Stop", 5, "\033[31m[Picture-EMP][Stop (6)] x\033[0m"},
        Wrong{"no reset", 2, 1, 1, "Stop", 5, "\033[31m[Picture-EMP][Stop (5)] x"},
        Wrong{"trace at another level", 2, 4, 4, "Stop", 5, "\033[34m[Picture-EMP] Stop ==========> Enter\033[0m"},
        Wrong{"neither enter nor leave", 2, 2, 2, "Stop", 5, "\033[34m[Picture-EMP] Stop ==========> Left\033[0m"},
        Wrong{"plain at another level", 2, 1, 1, "Stop", 5, "bare"},
        Wrong{"a lock that is not held", 2, 1, 1, "Stop", 5,
              "\033[31m[Picture-EMP][Stop (5)] lock m_AdapterMut\033[0m"}));

TEST_F(GivenEmptyJournal, AddressesThreadsAndBuildStampsAreMasked) {
  auto& engine = MakeEngine();
  kit::Begin();
  LOG_RED(kStop, "at %p, 0x%x, %s %s, 0x%x, win 0x%x", static_cast<void*>(&engine), olm::Hex32(pthread_self()),
          "Jan  1 2026", "12:34:56", olm::Hex32(&engine), 0x400001U);
  EXPECT_EQ(Only(), "log 1 red Stop: at <engine>, 0x<thread main>, <date> <time>, 0x<engine>, win 0x400001");
}

TEST_F(GivenEmptyJournal, AFailureIsScriptedByCountingFromNow) {
  lumaview_parse(nullptr);
  kit::FailAt("lumaview_parse", 2, 7);
  EXPECT_EQ(lumaview_parse(nullptr), 0);
  EXPECT_EQ(lumaview_parse(nullptr), 7);
  EXPECT_EQ(lumaview_parse(nullptr), 0);
  EXPECT_EQ(kit::CallCount("lumaview_parse"), 4U);
}

TEST(Diff, ShowsBothSidesAndShortensWhatIsEqual) {
  const std::vector<std::string> expected = {"1", "2", "3", "4", "5", "old", "6"};
  const std::vector<std::string> happened = {"1", "2", "3", "4", "5", "new", "6"};
  EXPECT_EQ(kit::Diff(expected, happened), "  ... 2 equal lines\n  3\n  4\n  5\n- old\n+ new\n  6\n");
}

TEST(WithSection, ReplacesOneSectionAndLeavesTheOthers) {
  EXPECT_EQ(kit::WithSection("# head\n\n== a\n1\n\n== b\n2\n", "a", {"x"}), "# head\n\n== a\nx\n\n== b\n2\n");
  EXPECT_EQ(kit::WithSection("# head\n\n== a\n1\n", "b", {"y"}), "# head\n\n== a\n1\n\n== b\ny\n");
}

}  // namespace
