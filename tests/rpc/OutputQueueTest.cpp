// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/OutputQueue.h"

#include <fcntl.h>

#include <thread>
#include <vector>

#include "tests/rpc/LoopFixture.h"

namespace sim::rpc {
namespace {

constexpr size_t kLimit = 1 << 20;
const std::string kLine(1000, 'x');

/// Over a pipe and over a socket.
class GivenOutput : public testing::TestWithParam<bool> {
 protected:
  GivenOutput() : m_ends(GetParam() ? MakeSockets() : MakePipe()) {}

  /// Sends until the reader's buffer is full.
  size_t FillBuffer() {
    size_t sent = 0;
    while (m_queue.Waiting() == 0) {
      EXPECT_TRUE(m_queue.Send(kLine));
      sent += kLine.size() + 1;
    }
    return sent;
  }

  std::pair<UniqueFd, UniqueFd> m_ends;
  UniqueFd& m_reader = m_ends.first;
  OutputQueue m_queue{UniqueFd(m_ends.second.Release()), kLimit};
};

INSTANTIATE_TEST_SUITE_P(Descriptors, GivenOutput, testing::Bool(),
                         [](const auto& suite) { return suite.param ? "Socket" : "Pipe"; });

TEST_P(GivenOutput, LinesAreWrittenAtOnce) {
  EXPECT_TRUE(m_queue.Send("one"));
  EXPECT_TRUE(m_queue.Send("two"));
  EXPECT_EQ(ReadAvailable(m_reader), "one\ntwo\n");
  EXPECT_EQ(m_queue.Waiting(), 0u);
}

TEST_P(GivenOutput, WhatTheReaderDoesNotTakeWaitsAndComesLaterWhole) {
  size_t sent = FillBuffer();
  std::string received;
  while (received.size() < sent) {
    received += ReadAvailable(m_reader);
    EXPECT_TRUE(m_queue.Flush());
  }
  EXPECT_EQ(received.size(), sent);
  EXPECT_EQ(m_queue.Waiting(), 0u);
}

TEST_P(GivenOutput, QueueBreaksAboveItsLimitAndNeverBlocks) {
  FillBuffer();
  size_t lines = 0;
  while (m_queue.Send(kLine)) {
    ASSERT_LT(++lines, 2000u);
  }
  EXPECT_TRUE(m_queue.IsBroken());
  EXPECT_FALSE(m_queue.Send("more"));
}

TEST_P(GivenOutput, QueueBreaksWhenTheReaderIsGone) {
  signal(SIGPIPE, SIG_IGN);
  m_reader.Reset();
  EXPECT_FALSE(m_queue.Send("one"));
  EXPECT_TRUE(m_queue.IsBroken());
}

TEST_P(GivenOutput, DrainGivesUpOnAReaderThatDoesNotRead) {
  FillBuffer();
  EXPECT_FALSE(m_queue.Drain(std::chrono::milliseconds(20)));
}

TEST_P(GivenOutput, DrainWaitsForAReaderThatReads) {
  const size_t sent = FillBuffer();
  std::thread reader([&] {
    std::string received(sent, '\0');
    for (size_t got = 0; got < sent;) {
      got += static_cast<size_t>(read(m_reader.Get(), received.data(), received.size()));
    }
  });
  EXPECT_TRUE(m_queue.Drain(std::chrono::seconds(10)));
  reader.join();
}

TEST_P(GivenOutput, LinesOfManyThreadsStayWhole) {
  std::vector<std::thread> threads;
  for (char name = 'a'; name < 'e'; ++name) {
    threads.emplace_back([this, name] {
      for (int i = 0; i < 10; ++i) {
        m_queue.Send(std::string(500, name));
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const std::string received = ReadAvailable(m_reader);
  ASSERT_EQ(received.size(), 40u * 501);
  for (size_t line = 0; line < received.size(); line += 501) {
    EXPECT_EQ(received.substr(line, 501), std::string(500, received[line]) + '\n');
  }
}

TEST(OutputQueue, SharedPipeKeepsItsFlags) {
  auto [reader, writer] = MakePipe();
  const UniqueFd shared(dup(writer.Get()));
  const OutputQueue queue(std::move(writer), kLimit);
  EXPECT_EQ(fcntl(shared.Get(), F_GETFL) & O_NONBLOCK, 0);
}

TEST(OutputQueue, SaysWhatKeepsItFromWriting) {
  OutputQueue queue(UniqueFd(open("/dev/full", O_WRONLY | O_CLOEXEC)), kLimit);

  EXPECT_FALSE(queue.Send("one"));

  EXPECT_EQ(queue.BreakReason(), "cannot write: No space left on device");
}

}  // namespace
}  // namespace sim::rpc
