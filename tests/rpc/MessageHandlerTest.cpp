// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/MessageHandler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/rpc/LoopFixture.h"

namespace sim::rpc {
namespace {

using Json = nlohmann::json;

struct SumParams {
  int64_t a = 0;
  int64_t b = 0;
};
const Fields<SumParams> kSumParams = {Required("a", &SumParams::a), Optional("b", &SumParams::b)};

struct Replies final : MessageSink {
  bool Send(std::string_view message) override {
    all.emplace_back(message);
    return true;
  }
  std::vector<std::string> all;
};

class GivenHandler : public LoopFixture {
 protected:
  std::vector<std::string> Handle(std::string_view message) {
    const auto replies = std::make_shared<Replies>();
    m_handler.Handle(message, replies);
    return replies->all;
  }

  /// The one reply to `message`.
  Json Answer(std::string_view message) {
    const std::vector<std::string> replies = Handle(message);
    EXPECT_EQ(replies.size(), 1u) << message;
    return replies.empty() ? Json() : Json::parse(replies.front());
  }

  void ExpectError(std::string_view message, int code, const Json& id) {
    const Json reply = Answer(message);
    EXPECT_EQ(reply["error"]["code"], code) << message;
    EXPECT_TRUE(reply["error"]["message"].is_string());
    EXPECT_EQ(reply["id"], id) << message;
    EXPECT_EQ(reply["jsonrpc"], "2.0");
    EXPECT_FALSE(reply.contains("result"));
  }

  int m_pings = 0;
  std::vector<Reply> m_kept;
  const Binder m_binder{{
      Method("sum", "Adds", kSumParams, [](SumParams p) { return Success(Number(p.a + p.b)); }),
      Method("ping", "Counts", kNoFields, [this](NoParams) { return Success(Number(++m_pings)); }),
      Method("fail", "Fails", kNoFields,
             [](NoParams) {
               return rpc::Answer(CallError{-32050, "no luck", Quote("data")});
             }),
      Method("later", "Waits", kNoFields, [this](NoParams, Reply reply) { m_kept.push_back(std::move(reply)); }),
      Method("forget", "Loses its reply", kNoFields, [](NoParams, Reply) {}),
  }};
  const MessageHandler m_handler{m_binder};
};

TEST_F(GivenHandler, RequestGetsItsResult) {
  EXPECT_EQ(Handle(R"({"jsonrpc":"2.0","method":"sum","params":{"a":1,"b":2},"id":7})").at(0),
            R"({"jsonrpc":"2.0","result":3,"id":7})");
}

TEST_F(GivenHandler, IdsAreEchoedWithTheirType) {
  for (const char* id : {"1", "-1", "\"1\"", "\"\"", "null", "1.5", "9007199254740993"}) {
    const std::string request = std::string(R"({"jsonrpc":"2.0","method":"ping","id":)") + id + "}";
    EXPECT_NE(Handle(request).at(0).find(std::string("\"id\":") + id + "}"), std::string::npos) << id;
  }
}

TEST_F(GivenHandler, NotificationsAreRunAndNeverAnswered) {
  EXPECT_TRUE(Handle(R"({"jsonrpc":"2.0","method":"ping"})").empty());
  EXPECT_EQ(m_pings, 1);
  EXPECT_TRUE(Handle(R"({"jsonrpc":"2.0","method":"nothing"})").empty());
  EXPECT_TRUE(Handle(R"({"jsonrpc":"2.0","method":"sum","params":{"a":"x"}})").empty());
  EXPECT_TRUE(Handle(R"({"jsonrpc":"2.0","method":"fail"})").empty());
  EXPECT_TRUE(Handle(R"({"jsonrpc":"2.0","method":"forget"})").empty());
}

TEST_F(GivenHandler, MethodErrorsCarryTheirData) {
  EXPECT_EQ(Handle(R"({"jsonrpc":"2.0","method":"fail","id":1})").at(0),
            R"({"jsonrpc":"2.0","error":{"code":-32050,"message":"no luck","data":"data"},"id":1})");
}

TEST_F(GivenHandler, BadMessagesGetTheStandardErrors) {
  ExpectError("{", kParseError, nullptr);
  ExpectError(std::string(1000, '['), kParseError, nullptr);
  ExpectError("\xFF", kParseError, nullptr);
  ExpectError("7", kInvalidRequest, nullptr);
  ExpectError("{}", kInvalidRequest, nullptr);
  ExpectError(R"({"jsonrpc":"2.0"})", kInvalidRequest, nullptr);
  ExpectError(R"({"jsonrpc":"1.0","method":"ping","id":3})", kInvalidRequest, 3);
  ExpectError(R"({"jsonrpc":2.0,"method":"ping","id":3})", kInvalidRequest, 3);
  ExpectError(R"({"method":"ping","id":3})", kInvalidRequest, 3);
  ExpectError(R"({"jsonrpc":"2.0","method":1,"params":"bar"})", kInvalidRequest, nullptr);
  ExpectError(R"({"jsonrpc":"2.0","method":"ping","params":"bar","id":"x"})", kInvalidRequest, "x");
  ExpectError(R"({"jsonrpc":"2.0","method":"ping","id":[]})", kInvalidRequest, nullptr);
  ExpectError(R"({"jsonrpc":"2.0","method":"ping","id":true})", kInvalidRequest, nullptr);
  ExpectError(R"({"jsonrpc":"2.0","result":1,"id":4})", kInvalidRequest, 4);
  ExpectError(R"({"jsonrpc":"2.0","method":"nothing","id":5})", kMethodNotFound, 5);
  ExpectError(R"({"jsonrpc":"2.0","method":"sum","params":{"a":"1"},"id":6})", kInvalidParams, 6);
  EXPECT_EQ(m_pings, 0);
}

TEST_F(GivenHandler, BatchIsRunInOrderAndAnsweredAsOne) {
  const Json replies = Answer(R"([
    {"jsonrpc":"2.0","method":"ping","id":"a"},
    {"jsonrpc":"2.0","method":"ping"},
    {"foo":"boo"},
    1,
    {"jsonrpc":"2.0","method":"ping","id":"b"}])");
  ASSERT_EQ(replies.size(), 4u);
  EXPECT_EQ(replies[0]["result"], 1);
  EXPECT_EQ(replies[1]["error"]["code"], kInvalidRequest);
  EXPECT_EQ(replies[2]["error"]["code"], kInvalidRequest);
  EXPECT_EQ(replies[3]["result"], 3);
  EXPECT_EQ(replies[3]["id"], "b");
}

TEST_F(GivenHandler, BatchOfNotificationsIsNotAnswered) {
  EXPECT_TRUE(Handle(R"([{"jsonrpc":"2.0","method":"ping"},{"jsonrpc":"2.0","method":"ping"}])").empty());
  EXPECT_EQ(m_pings, 2);
}

TEST_F(GivenHandler, BatchesHaveASize) {
  ExpectError("[]", kInvalidRequest, nullptr);
  std::string batch = "[1";
  for (size_t i = 1; i < kMaxBatch; ++i) {
    batch += ",1";
  }
  EXPECT_EQ(Answer(batch + "]").size(), kMaxBatch);
  ExpectError(batch + ",1]", kInvalidRequest, nullptr);
}

TEST_F(GivenHandler, ForgottenRequestIsAnsweredWithAnInternalError) {
  ExpectError(R"({"jsonrpc":"2.0","method":"forget","id":1})", kInternalError, 1);
}

TEST_F(GivenHandler, BatchWaitsForItsLastReply) {
  const auto replies = std::make_shared<Replies>();
  m_handler.Handle(R"([{"jsonrpc":"2.0","method":"later","id":1},{"jsonrpc":"2.0","method":"ping","id":2}])", replies);
  EXPECT_TRUE(replies->all.empty());
  m_kept.front()(Success(Boolean(true)));
  EXPECT_THAT(replies->all,
              testing::ElementsAre(R"([{"jsonrpc":"2.0","result":1,"id":2},{"jsonrpc":"2.0","result":true,"id":1}])"));
}

TEST_F(GivenHandler, OversizedMessageIsRefused) {
  const auto replies = std::make_shared<Replies>();
  MessageHandler::RefuseOversized(replies);
  ASSERT_EQ(replies->all.size(), 1u);
  const Json reply = Json::parse(replies->all.front());
  EXPECT_EQ(reply["error"]["code"], kInvalidRequest);
  EXPECT_EQ(reply["id"], nullptr);
}

TEST_F(GivenHandler, ServedConnectionLivesUntilItsLastReply) {
  auto [ours, peer] = MakeSockets();
  auto transport = Connect(std::move(ours));
  Serve(transport, m_handler, [&](const CloseReason&) { transport.reset(); });
  WriteAll(peer, R"({"jsonrpc":"2.0","method":"later","id":1})");
  shutdown(peer.Get(), SHUT_WR);
  RunUntil([&] { return transport == nullptr; });
  ASSERT_EQ(m_kept.size(), 1u);
  m_kept.front()(Success(Boolean(true)));
  EXPECT_EQ(ReadAvailable(peer), "{\"jsonrpc\":\"2.0\",\"result\":true,\"id\":1}\n");
}

}  // namespace
}  // namespace sim::rpc
