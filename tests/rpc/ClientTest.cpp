// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/Client.h"

#include <gmock/gmock.h>

#include <optional>
#include <vector>

#include "tests/rpc/LoopFixture.h"

namespace sim::rpc {
namespace {

using testing::ElementsAre;

std::string Show(const Answer& answer) {
  if (const auto* result = std::get_if<JsonText>(&answer)) {
    return result->text;
  }
  const CallError& error = std::get<CallError>(answer);
  return std::to_string(error.code) + " " + error.message + " " + error.data.text;
}

class GivenClient : public LoopFixture {
 protected:
  GivenClient() {
    auto [ours, peer] = MakeSockets();
    m_peer = std::move(peer);
    m_client.emplace(Connect(std::move(ours)),
                     Client::Callbacks{
                         .onNotification = [this](const std::string& method,
                                                  const JsonText& params) { m_seen.push_back(method + params.text); },
                         .onClosed = [this](const CloseReason&) { m_seen.emplace_back("closed"); },
                     });
  }

  Client::CallId Call(const char* method, const JsonText& params = {}) {
    return m_client->Call(method, params, [this](const Answer& answer) { m_seen.push_back(Show(answer)); });
  }

  void ReceiveAndExpect(std::string_view bytes, std::vector<std::string> expected) {
    WriteAll(m_peer, bytes);
    RunUntil([&] { return m_seen.size() >= expected.size(); });
    EXPECT_EQ(m_seen, expected);
  }

  UniqueFd m_peer;
  std::optional<Client> m_client;
  std::vector<std::string> m_seen;
};

TEST_F(GivenClient, RequestsAndNotificationsAreWritten) {
  Call("one", {R"({"x":1})"});
  Call("two");
  m_client->Notify("three", {"[1]"});
  EXPECT_EQ(ReadAvailable(m_peer),
            "{\"jsonrpc\":\"2.0\",\"method\":\"one\",\"params\":{\"x\":1},\"id\":1}\n"
            "{\"jsonrpc\":\"2.0\",\"method\":\"two\",\"id\":2}\n"
            "{\"jsonrpc\":\"2.0\",\"method\":\"three\",\"params\":[1]}\n");
}

TEST_F(GivenClient, TheOldestCallIsTheOneThatWaitsLongest) {
  EXPECT_FALSE(m_client->OldestCall());
  Call("one");
  const auto first = m_client->OldestCall();
  Call("two");
  EXPECT_EQ(m_client->OldestCall(), first);
  ReceiveAndExpect("{\"jsonrpc\":\"2.0\",\"result\":1,\"id\":1}\n", {"1"});
  EXPECT_GT(m_client->OldestCall(), first);
  ReceiveAndExpect("{\"jsonrpc\":\"2.0\",\"result\":2,\"id\":2}\n", {"1", "2"});
  EXPECT_FALSE(m_client->OldestCall());
}

TEST_F(GivenClient, RepliesFindTheirCallsInAnyOrder) {
  Call("one");
  Call("two");
  ReceiveAndExpect(
      "{\"jsonrpc\":\"2.0\",\"result\":\"640*480\",\"id\":2}\n"
      "{\"jsonrpc\":\"2.0\",\"error\":{\"code\":-32601,\"message\":\"no\",\"data\":{\"command\":\"x\"}},\"id\":1}\n",
      {"\"640*480\"", "-32601 no {\"command\":\"x\"}"});
}

TEST_F(GivenClient, NotificationsComeBetweenReplies) {
  Call("one");
  ReceiveAndExpect(
      "{\"jsonrpc\":\"2.0\",\"method\":\"event\",\"params\":{\"event\":8}}\n"
      "{\"jsonrpc\":\"2.0\",\"result\":1,\"id\":1}\n"
      "{\"jsonrpc\":\"2.0\",\"method\":\"bare\"}\n",
      {"event{\"event\":8}", "1", "bare"});
}

TEST_F(GivenClient, WhatBelongsToNoCallIsThrownAway) {
  Call("one");
  ReceiveAndExpect(
      "nonsense\n[]\n7\n{\"jsonrpc\":\"2.0\",\"result\":1,\"id\":9}\n{\"jsonrpc\":\"2.0\",\"result\":1,\"id\":\"1\"}\n"
      "{\"jsonrpc\":\"2.0\",\"result\":\"mine\",\"id\":1}\n",
      {"\"mine\""});
}

TEST_F(GivenClient, MalformedErrorIsStillAnAnswer) {
  Call("one");
  ReceiveAndExpect("{\"jsonrpc\":\"2.0\",\"error\":7,\"id\":1}\n",
                   {"-32603 the reply's error has not the form of one "});
}

TEST_F(GivenClient, LostConnectionFailsEveryOpenCall) {
  Call("one");
  Call("two");
  ReadAvailable(m_peer);  // closed with something unread, a socket reports a reset instead
  m_peer.Reset();
  RunUntil([&] { return m_seen.size() == 3; });
  EXPECT_THAT(m_seen, ElementsAre("-32000 the connection was lost ", "-32000 the connection was lost ", "closed"));
  Call("three");
  EXPECT_EQ(m_seen.back(), "-32000 the connection is closed ");
}

TEST_F(GivenClient, LostCallsAreHandedOverWhereThatIsWanted) {
  auto [ours, peer] = MakeSockets();
  std::vector<Client::OpenCall> lost;
  Client client(Connect(std::move(ours)), {.onNotification = [](const std::string&, const JsonText&) {},
                                           .onClosed = [this](const CloseReason&) { m_seen.emplace_back("closed"); },
                                           .onLost = [&](Client::OpenCall call) { lost.push_back(std::move(call)); }});
  client.Call("one", {"[1]"}, [this](const Answer& answer) { m_seen.push_back(Show(answer)); });
  ReadAvailable(peer);
  peer.Reset();
  RunUntil([&] { return !m_seen.empty(); });
  client.Call("two", {}, [](const Answer&) {});

  EXPECT_THAT(m_seen, ElementsAre("closed"));
  ASSERT_EQ(lost.size(), 2u);
  EXPECT_EQ(lost[0].method + lost[0].params.text, "one[1]");
  EXPECT_EQ(lost[1].method + lost[1].params.text, "two");
  lost[0].onAnswer(JsonText{"7"});
  EXPECT_EQ(m_seen.back(), "7");
}

TEST_F(GivenClient, AbandonedCallIsAnsweredOnce) {
  const Client::CallId id = Call("one");
  m_client->Abandon(id, {-32001, "too slow"});
  m_client->Abandon(id, {-32001, "too slow"});
  Call("two");
  ReceiveAndExpect("{\"jsonrpc\":\"2.0\",\"result\":1,\"id\":1}\n{\"jsonrpc\":\"2.0\",\"result\":2,\"id\":2}\n",
                   {"-32001 too slow ", "2"});
}

TEST_F(GivenClient, ReleasedClientCallsNothing) {
  Call("one");
  m_client.reset();
  m_peer.Reset();
  while (g_main_context_iteration(Context(), FALSE)) {
  }
  EXPECT_TRUE(m_seen.empty());
}

}  // namespace
}  // namespace sim::rpc
