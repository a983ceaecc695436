// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <csignal>

#include "tests/framework/EngineChild.h"

namespace sim::framework {
namespace {

using Channel = EngineChild::Channel;

class GivenEngineThatSends : public testing::TestWithParam<Channel> {
 protected:
  EngineChild m_engine{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Channels, GivenEngineThatSends, testing::Values(Channel::kSocket, Channel::kStandardStreams),
                         [](const auto& suite) { return suite.param == Channel::kSocket ? "Socket" : "Pipes"; });

constexpr const char* kDone = R"({"jsonrpc":"2.0","result":1,"id":1})";

std::string RenderCompleted(int number, const std::string& text) {
  return R"({"jsonrpc":"2.0","method":"engine.event","params":{"event":8,"name":"RENDER_COMPLETED","param1":")" +
         std::to_string(number) + R"(","param2":")" + text + R"("}})";
}

TEST_P(GivenEngineThatSends, EventsOfACommandComeBeforeItsReply) {
  EXPECT_EQ(m_engine.Execute("Events", {"2", "x"}), RenderCompleted(0, "x"));
  EXPECT_EQ(m_engine.Receive(), RenderCompleted(1, "x"));
  EXPECT_EQ(m_engine.Receive(), kDone);
}

/// 3 MB, more than any pipe or socket holds.
constexpr int kManyEvents = 3000;
const std::string kLongText(1000, 'x');

TEST_P(GivenEngineThatSends, ReaderWhoDoesNotReadStallsNobodyAndLosesNothing) {
  m_engine.Request("Events", {std::to_string(kManyEvents), kLongText});
  m_engine.WaitForLog("sent");
  for (int event = 0; event < kManyEvents; ++event) {
    ASSERT_EQ(m_engine.Receive(), RenderCompleted(event, kLongText));
  }
  EXPECT_EQ(m_engine.Receive(), kDone);
}

TEST_P(GivenEngineThatSends, EndDoesNotWaitLongForAReaderWhoDoesNotRead) {
  m_engine.Request("Events", {std::to_string(kManyEvents), kLongText});
  m_engine.WaitForLog("sent");
  m_engine.Signal(SIGTERM);
  EXPECT_EQ(m_engine.Wait(), 0);
  EXPECT_THAT(m_engine.Log(), testing::Contains("[framework] the last replies and events were not read"));
}

TEST_P(GivenEngineThatSends, ReaderWhoNeverReadsIsGivenUp) {
  m_engine.Request("Events", {"200", std::string(100000, 'x')});
  EXPECT_EQ(m_engine.Wait(), 0);
  EXPECT_THAT(m_engine.Log(), testing::Contains("[framework] the channel is lost: the peer does not read any more"));
}

TEST_P(GivenEngineThatSends, EventsForNobodyDoNoHarm) {
  m_engine.Request("Events", {"10", ""});
  m_engine.Hang();
  EXPECT_EQ(m_engine.Wait(), 0);
}

}  // namespace
}  // namespace sim::framework
