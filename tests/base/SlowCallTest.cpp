// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/SlowCall.h"

#include <gmock/gmock.h>

#include <thread>

#include "simulator/base/Faults.h"
#include "tests/base/LoggedBy.h"

namespace sim {
namespace {

using std::chrono::milliseconds;
using testing::MatchesRegex;

constexpr milliseconds kLimit(20);

TEST_F(GivenLogInAFile, ALongCallIsLogged) {
  EXPECT_THAT(LoggedBy([] {
                const SlowCall call("lumaview", "lumaview_destroy", kLimit);
                std::this_thread::sleep_for(kLimit * 2);
              }),
              MatchesRegex("\\[lumaview\\] lumaview_destroy took [0-9]+ ms\n"));
}

TEST_F(GivenLogInAFile, ACallWithinTheLimitIsNot) {
  EXPECT_EQ(LoggedBy([] { const SlowCall call("lumaview", "lumaview_destroy"); }), "");
}

TEST_F(GivenLogInAFile, ADelayedCallIsOne) {
  const std::string rules = m_folder / "faults";
  ASSERT_TRUE(WriteFaultRules(rules, {"lumaview_parse 1 delay 50ms"}));
  EXPECT_THAT(LoggedBy([&] {
                setenv("OLM_FAULTS", rules.c_str(), 1);
                const SlowCall call("lumaview", "lumaview_parse", kLimit);
                (void)NextFaultOfCall("lumaview_parse");
              }),
              MatchesRegex("\\[fault\\] lumaview_parse waits 50 ms first\n"
                           "\\[lumaview\\] lumaview_parse took [0-9]+ ms\n"));
}

}  // namespace
}  // namespace sim
