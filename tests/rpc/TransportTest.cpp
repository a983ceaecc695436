// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/Transport.h"

#include <gmock/gmock.h>

#include <functional>
#include <thread>
#include <vector>

#include "tests/rpc/LoopFixture.h"

namespace sim::rpc {
namespace {

using testing::ElementsAre;

class GivenConnection : public LoopFixture {
 protected:
  void Start(
      TransportLimits limits = {}, const std::function<void(std::string_view)>& handle = [](auto) {}) {
    auto [ours, peer] = MakeSockets();
    m_peer = std::move(peer);
    m_transport = Connect(std::move(ours), limits);
    m_transport->Start({
        .onMessage =
            [this, handle](std::string_view line) {
              m_seen.emplace_back(line);
              handle(line);
            },
        .onOversized = [this] { m_seen.emplace_back("(oversized)"); },
        .onClosed = [this](const CloseReason& reason) { m_seen.push_back("(closed) " + reason); },
    });
  }

  UniqueFd m_peer;
  std::shared_ptr<Transport> m_transport;
  std::vector<std::string> m_seen;
};

TEST_F(GivenConnection, MessagesAndTheEndComeInOrder) {
  Start();
  WriteAll(m_peer, "one\ntwo\nlast");
  m_peer.Reset();
  RunUntil([&] { return m_seen.size() == 4; });
  EXPECT_THAT(m_seen, ElementsAre("one", "two", "last", "(closed) "));
}

TEST_F(GivenConnection, OversizedMessageLeavesTheConnectionAlive) {
  Start({.message = 10});
  WriteAll(m_peer, std::string(100000, 'x') + "\nnext\n");
  RunUntil([&] { return m_seen.size() == 2; });
  EXPECT_THAT(m_seen, ElementsAre("(oversized)", "next"));
}

TEST_F(GivenConnection, MessageOfTheLimitComesWhole) {
  Start();
  const std::string message(1 << 20, 'x');
  std::thread writer([&] { WriteAll(m_peer, message + "\n"); });
  RunUntil([&] { return !m_seen.empty(); });
  writer.join();
  EXPECT_EQ(m_seen.front(), message);
}

TEST_F(GivenConnection, PeerThatClosedOneDirectionStillGetsMessages) {
  Start();
  shutdown(m_peer.Get(), SHUT_WR);
  RunUntil([&] { return !m_seen.empty(); });
  EXPECT_TRUE(m_transport->Send("late"));
  EXPECT_EQ(ReadAvailable(m_peer), "late\n");
}

TEST_F(GivenConnection, QueuedMessagesLeaveWhenThePeerReads) {
  Start();
  const std::string message(1 << 20, 'x');
  EXPECT_TRUE(m_transport->Send(message));
  std::string received;
  RunUntil([&] {
    received += ReadAvailable(m_peer);
    return received.size() == message.size() + 1;
  });
}

TEST_F(GivenConnection, PeerWithTooMuchToReadIsNotReadFrom) {
  Start({.unread = 1000});
  m_transport->Send(std::string(2 << 20, 'x'));
  WriteAll(m_peer, "one\n");
  for (int i = 0; i < 100; ++i) {
    g_main_context_iteration(Context(), FALSE);
  }
  EXPECT_THAT(m_seen, ElementsAre());
  RunUntil([&] {
    ReadAvailable(m_peer);
    return !m_seen.empty();
  });
  EXPECT_THAT(m_seen, ElementsAre("one"));
}

TEST_F(GivenConnection, PeerThatNeverReadsIsDropped) {
  Start({.queue = 1 << 20});
  while (m_transport->Send(std::string(100000, 'x'))) {
  }
  RunUntil([&] { return !m_seen.empty(); });
  EXPECT_THAT(m_seen, ElementsAre("(closed) the peer does not read any more"));
}

TEST_F(GivenConnection, SendFromAnotherThreadReachesAPeerThatReadsLater) {
  Start();
  std::thread sender([&] { m_transport->Send(std::string(1 << 20, 'x')); });
  sender.join();
  size_t received = 0;
  RunUntil([&] { return (received += ReadAvailable(m_peer).size()) > 1 << 20; });
}

TEST_F(GivenConnection, MessagesOfOneTurnLeaveTogether) {
  std::string meanwhile, received;
  Start({}, [&](std::string_view message) {
    m_transport->Send(message);
    meanwhile += ReadAvailable(m_peer);
  });
  WriteAll(m_peer, "one\ntwo\n");
  RunUntil([&] { return (received += ReadAvailable(m_peer)).size() == 8; });
  EXPECT_EQ(received, "one\ntwo\n");
  EXPECT_EQ(meanwhile, "");
}

TEST_F(GivenConnection, ATurnsMessagesLeaveBeforeTheConnectionIsClosed) {
  Start({}, [&](std::string_view message) {
    m_transport->Send(message);
    m_transport->Close();
  });
  WriteAll(m_peer, "one\n");
  RunUntil([&] { return !m_seen.empty(); });
  EXPECT_EQ(ReadAvailable(m_peer), "one\n");
}

TEST_F(GivenConnection, FlushSendsBeforeTheTurnEnds) {
  std::string meanwhile;
  Start({}, [&](std::string_view message) {
    m_transport->Send(message);
    m_transport->Flush();
    meanwhile += ReadAvailable(m_peer);
  });
  WriteAll(m_peer, "one\n");
  RunUntil([&] { return !m_seen.empty(); });
  EXPECT_EQ(meanwhile, "one\n");
}

TEST_F(GivenConnection, NothingIsCalledAfterClose) {
  Start();
  WriteAll(m_peer, "one\n");
  m_transport->Close();
  m_peer.Reset();
  while (g_main_context_iteration(Context(), FALSE)) {
  }
  EXPECT_THAT(m_seen, ElementsAre());
}

TEST_F(GivenConnection, CallbackMayReleaseTheTransport) {
  auto [ours, peer] = MakeSockets();
  std::shared_ptr<Transport> transport = Connect(std::move(ours));
  bool released = false;
  transport->Start({
      .onMessage =
          [&](std::string_view) {
            transport.reset();
            released = true;
          },
      .onOversized = [] {},
      .onClosed = [](const CloseReason&) { ADD_FAILURE(); },
  });
  WriteAll(peer, "one\ntwo\n");
  RunUntil([&] { return released; });
  peer.Reset();
  while (g_main_context_iteration(Context(), FALSE)) {
  }
}

}  // namespace
}  // namespace sim::rpc
