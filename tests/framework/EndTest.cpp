// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <fstream>

#include "simulator/vconf/include/Store.h"
#include "tests/framework/EngineChild.h"

namespace sim::framework {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kOpen =
    "{\"jsonrpc\":\"2.0\",\"method\":\"app.open\",\"params\":[\"app\",\"widget.x\"],\"id\":1}\n";
constexpr const char* kStart = "CreateEmpEngine, threads: 1";
constexpr const char* kModules = "ECORE_NO_SYSTEM_MODULES=1";
constexpr const char* kClosed = "[framework] the application has closed the channel";
constexpr const char* kSignalled = "[framework] a signal asks for the end";

class GivenOpenApplication : public testing::Test {
 protected:
  GivenOpenApplication() {
    m_engine.Send(kOpen);
    EXPECT_EQ(m_engine.Receive(), R"({"jsonrpc":"2.0","result":true,"id":1})");
  }

  void ExpectOrderlyEnd(const char* reason) {
    EXPECT_EQ(m_engine.Wait(), 0);
    EXPECT_THAT(m_engine.Log(), ElementsAre(kStart, kModules, "Open 1 app widget.x", reason, "Close 1", "Destroy",
                                            "~Engine", "App::Destroy", "~App"));
  }

  EngineChild m_engine;
};

TEST_F(GivenOpenApplication, EndOfInputEndsItInOrder) {
  m_engine.EndInput();
  ExpectOrderlyEnd(kClosed);
}

TEST_F(GivenOpenApplication, LostConnectionEndsItInOrder) {
  m_engine.Hang();
  ExpectOrderlyEnd(kClosed);
}

TEST_F(GivenOpenApplication, EndByALibraryIsInTheLog) {
  m_engine.Send("{\"jsonrpc\":\"2.0\",\"method\":\"engine.execute\",\"params\":[\"Exit\"],\"id\":2}\n");

  EXPECT_EQ(m_engine.Wait(), 1);
  EXPECT_THAT(m_engine.Log(), testing::Contains(HasSubstr("[framework] a library ends the process")));
}

TEST_F(GivenOpenApplication, EndInTheMiddleOfAMessageIsRefusedAndEndsItInOrder) {
  m_engine.Send(R"({"jsonrpc":"2.0","method":"engine.execute","params":["Nu)");
  m_engine.EndInput();
  EXPECT_THAT(m_engine.Receive(), HasSubstr("-32700"));
  ExpectOrderlyEnd(kClosed);
}

TEST_F(GivenOpenApplication, LastMessageNeedsNoLineEnd) {
  m_engine.Send(R"({"jsonrpc":"2.0","method":"engine.execute","params":["Number",["5"]],"id":2})");
  m_engine.EndInput();
  EXPECT_EQ(m_engine.Receive(), R"({"jsonrpc":"2.0","result":5,"id":2})");
  ExpectOrderlyEnd(kClosed);
}

class GivenEndSignal : public GivenOpenApplication, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(All, GivenEndSignal, testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](const auto& suite) { return std::string(sigabbrev_np(suite.param)); });

TEST_P(GivenEndSignal, EndsItInOrder) {
  m_engine.Signal(GetParam());
  ExpectOrderlyEnd(kSignalled);
}

TEST_P(GivenEndSignal, EndsItAlsoAfterTheHandlersWereReplaced) {
  EXPECT_EQ(m_engine.Execute("SwallowSignals"), R"({"jsonrpc":"2.0","result":1,"id":1})");
  m_engine.Signal(GetParam());
  ExpectOrderlyEnd(kSignalled);
}

TEST_P(GivenEndSignal, TwoOfThemAreAsGoodAsOne) {
  m_engine.Signal(GetParam());
  m_engine.Signal(GetParam());
  ExpectOrderlyEnd(kSignalled);
}

/// A key is being delivered on the worker, and waits at a gate before it takes the engine's lock.
class GivenRunningDelivery : public testing::Test {
 protected:
  GivenRunningDelivery() {
    setenv("VCONF_SESSION", (m_folder / "").c_str(), 1);
    mkfifo(m_gate.c_str(), 0600);
    m_store = std::move(*vconf::Store::Create(m_folder / ""));
    m_engine.emplace();
    EXPECT_EQ(m_engine->Execute("Follow", {"key", m_gate}), R"({"jsonrpc":"2.0","result":0,"id":1})");
    EXPECT_TRUE(m_store->Set("key", "destroy"));
    EXPECT_THAT(m_engine->Receive(), HasSubstr("delivering"));
  }

  void OpenGate() const { std::ofstream(m_gate) << "go\n"; }

  const TemporaryFolder m_folder;
  const std::string m_gate = m_folder / "gate";
  std::unique_ptr<vconf::Store> m_store;
  std::optional<EngineChild> m_engine;
};

TEST_F(GivenRunningDelivery, EndWaitsForIt) {
  m_engine->Signal(SIGTERM);
  m_engine->WaitForLog(kSignalled);
  OpenGate();
  EXPECT_EQ(m_engine->Wait(), 0);
  EXPECT_THAT(m_engine->Log(), ElementsAre(kStart, kModules, kSignalled, "delivered destroy", "Destroy", "~Engine",
                                           "App::Destroy", "~App"));
}

TEST(GivenNoEngine, StartFails) {
  EngineChild engine(EngineChild::Channel::kSocket, {"FAKE_NO_ENGINE=1"});
  EXPECT_EQ(engine.Wait(), 1);
  EXPECT_THAT(engine.Log(),
              ElementsAre(kStart, kModules, "[framework] cannot start: the application object has made no engine",
                          "App::Destroy", "~App"));
}

class GivenBadChannel : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(All, GivenBadChannel, testing::Values("", "7x", "-1", "999", "99999999999", "1"));

TEST_P(GivenBadChannel, StartFailsWithTheReason) {
  const std::string number = GetParam();
  EngineChild engine(EngineChild::Channel::kStandardStreams, {"OLM_CHANNEL_FD=" + number});
  EXPECT_EQ(engine.Wait(), 1);
  EXPECT_THAT(engine.Log(),
              ElementsAre("[framework] cannot start: OLM_CHANNEL_FD is \"" + number + "\", which is not an open socket",
                          "App::Destroy", "~App"));
}

TEST(EngineThatCrashes, HasAnsweredTheCommandsBefore) {
  EngineChild engine;
  engine.Send(R"({"jsonrpc":"2.0","method":"engine.execute","params":{"command":"Number","params":["1"]},"id":1})"
              "\n"
              R"({"jsonrpc":"2.0","method":"engine.execute","params":{"command":"Die"},"id":2})"
              "\n");
  EXPECT_EQ(engine.Receive(), R"({"jsonrpc":"2.0","result":1,"id":1})");
  EXPECT_EQ(engine.Receive(), "(end)");
  EXPECT_EQ(engine.Wait(), -SIGKILL);
}

}  // namespace
}  // namespace sim::framework
