// SPDX-License-Identifier: Apache-2.0
/// Plays the conversations that stand in files: "> " what the application sends, "< " what has to come back, "# " why.
/// Afterwards the input ends, and the engine has to end in order without another word.
#include <gmock/gmock.h>

#include <filesystem>

#include "simulator/rpc/JsonText.h"
#include "tests/framework/EngineChild.h"

namespace sim::framework {
namespace {

class GivenConversation : public testing::TestWithParam<std::filesystem::path> {};

std::vector<std::filesystem::path> Conversations() {
  const std::filesystem::directory_iterator files(CONVERSATIONS);
  return {begin(files), end(files)};
}

INSTANTIATE_TEST_SUITE_P(All, GivenConversation, testing::ValuesIn(Conversations()),
                         [](const auto& suite) { return suite.param.stem().string(); });

void Play(EngineChild& engine, const std::filesystem::path& conversation) {
  for (const std::string& line : ReadLines(conversation)) {
    if (line.starts_with("> ")) {
      engine.Send(line.substr(2) + "\n");
    } else if (line.starts_with("< ")) {
      ASSERT_EQ(engine.Receive(), line.substr(2));
    } else {
      ASSERT_TRUE(line.empty() || line.starts_with("#")) << line;
    }
  }
  engine.EndInput();
  EXPECT_EQ(engine.Receive(), "(end)");
  EXPECT_EQ(engine.Wait(), 0);
}

TEST_P(GivenConversation, GoesAsWrittenOverTheInheritedSocket) {
  EngineChild engine(EngineChild::Channel::kSocket);
  Play(engine, GetParam());
}

TEST_P(GivenConversation, GoesAsWrittenOverStandardInputAndOutput) {
  EngineChild engine(EngineChild::Channel::kStandardStreams);
  Play(engine, GetParam());
}

class GivenEngine : public testing::Test {
 protected:
  EngineChild m_engine;
};

TEST_F(GivenEngine, ParametersAreBytes) {
  const std::string name = "caf\xE9";
  m_engine.Send("{\"jsonrpc\":\"2.0\",\"method\":\"engine.execute\",\"params\":{\"command\":\"Length\",\"params\":[\"" +
                name + "\"]},\"id\":1}\n");
  EXPECT_EQ(m_engine.Receive(), R"({"jsonrpc":"2.0","result":4,"id":1})");
  m_engine.Send("{\"jsonrpc\":\"2.0\",\"method\":\"engine.execute\",\"params\":{\"command\":\"Echo\",\"params\":[\"" +
                name + "\"]},\"id\":1}\n");
  EXPECT_EQ(m_engine.Receive(), "{\"jsonrpc\":\"2.0\",\"result\":\"caf\uFFFD|||\",\"id\":1}");
}

/// A request whose line is exactly `size` bytes long.
std::string RequestOfSize(size_t size) {
  const std::string head = R"({"jsonrpc":"2.0","method":"engine.execute","params":{"command":"Length","params":[")";
  const std::string tail = R"("]},"id":1})";
  return head + std::string(size - head.size() - tail.size(), 'x') + tail + "\n";
}

TEST_F(GivenEngine, MessageOfAMegabyteIsTaken) {
  m_engine.Send(RequestOfSize(1 << 20));
  EXPECT_THAT(m_engine.Receive(), testing::StartsWith(R"({"jsonrpc":"2.0","result":10484)"));
}

TEST_F(GivenEngine, LongerMessageIsRefusedAndTheConnectionLives) {
  m_engine.Send(RequestOfSize((1 << 20) + 1));
  EXPECT_EQ(
      m_engine.Receive(),
      R"({"jsonrpc":"2.0","error":{"code":-32600,"message":"the message is too long","data":{"stage":"message","hint":"a message may have 1 MiB"}},"id":null})");
  EXPECT_EQ(m_engine.Execute("Number", {"7"}), R"({"jsonrpc":"2.0","result":7,"id":1})");
}

TEST_F(GivenEngine, CommandsAreAnsweredInTheirOrder) {
  std::string requests;
  for (int id = 0; id < 500; ++id) {
    requests += R"({"jsonrpc":"2.0","method":"engine.execute","params":["Number",[")" + std::to_string(id) +
                "\"]],\"id\":" + std::to_string(id) + "}\n";
  }
  m_engine.Send(requests);
  for (int id = 0; id < 500; ++id) {
    const std::string number = std::to_string(id);
    ASSERT_EQ(m_engine.Receive(), R"({"jsonrpc":"2.0","result":)" + number + ",\"id\":" + number + "}");
  }
}

TEST_F(GivenEngine, ChannelIsNotPassedOnInTheEnvironment) {
  EXPECT_EQ(m_engine.Execute("Environment", {"OLM_CHANNEL_FD"}), R"({"jsonrpc":"2.0","result":"unset","id":1})");
}

TEST_F(GivenEngine, DefaultContextIsNotTheFrameworks) {
  EXPECT_EQ(m_engine.Execute("OwnsDefaultContext"), R"({"jsonrpc":"2.0","result":0,"id":1})");
}

TEST_F(GivenEngine, NoThreadIsStartedBeforeTheEngineIsAskedFor) {
  m_engine.Execute("Nothing");
  EXPECT_THAT(m_engine.Log(), testing::ElementsAre("CreateEmpEngine, threads: 1", "ECORE_NO_SYSTEM_MODULES=1"));
}

TEST(GivenStandardStreams, OutputCarriesOnlyTheProtocol) {
  EngineChild engine(EngineChild::Channel::kStandardStreams);
  EXPECT_EQ(engine.Execute("Print", {"stray"}), R"({"jsonrpc":"2.0","result":1,"id":1})");
  EXPECT_EQ(engine.StandardError(), "stray\n");
}

}  // namespace
}  // namespace sim::framework
