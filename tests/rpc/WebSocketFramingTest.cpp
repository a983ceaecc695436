// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/WebSocketFraming.h"

#include <gmock/gmock.h>

#include <vector>

namespace sim::rpc {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kText = 1, kBinary = 2, kClose = 8, kPing = 9, kMore = 0;

/// A client's frame, masked as it has to be.
std::string Frame(int opcode, const std::string& payload, bool last = true) {
  std::string frame(1, static_cast<char>((last ? 0x80 : 0) | opcode));
  if (payload.size() < 126) {
    frame += static_cast<char>(0x80 | payload.size());
  } else {
    frame += static_cast<char>(0x80 | 127);
    for (int shift = 56; shift >= 0; shift -= 8) {
      frame += static_cast<char>(payload.size() >> shift & 0xFF);
    }
  }
  const std::string mask = "\x01\x82\x03\xF4";
  frame += mask;
  for (size_t i = 0; i < payload.size(); ++i) {
    frame += static_cast<char>(payload[i] ^ mask[i % 4]);
  }
  return frame;
}

class GivenWebSocket : public testing::Test {
 protected:
  std::vector<std::string> TakeAll() {
    std::vector<std::string> messages;
    while (const auto message = m_framing.Next()) {
      messages.push_back(message->oversized ? "(oversized)" : std::string(message->text));
    }
    return messages;
  }

  /// The number with which it closed, 0 where it did not.
  int Closed() {
    const std::string reply = m_framing.TakeReplies();
    return reply.size() < 4 || reply[0] != '\x88'
               ? 0
               : static_cast<unsigned char>(reply[2]) << 8 | static_cast<unsigned char>(reply[3]);
  }

  WebSocketFraming m_framing{300};
};

TEST_F(GivenWebSocket, MessagesComeInOrderHoweverTheBytesAreCut) {
  const std::string long_one(299, 'x');
  for (const char c : Frame(kText, "one") + Frame(kText, "") + Frame(kText, long_one) + Frame(kText, "two")) {
    m_framing.Append(std::string_view(&c, 1));
  }
  EXPECT_THAT(TakeAll(), ElementsAre("one", long_one, "two"));
}

TEST_F(GivenWebSocket, FramesOfAMessageAreJoinedAroundAPing) {
  m_framing.Append(Frame(kText, "on", false) + Frame(kPing, "there?") + Frame(kMore, "e"));

  EXPECT_THAT(TakeAll(), ElementsAre("one"));
  EXPECT_EQ(m_framing.TakeReplies(), std::string("\x8A\x06") + "there?");
}

TEST_F(GivenWebSocket, MessageAboveTheLimitIsReportedOnceAndTheNextIsWhole) {
  m_framing.Append(Frame(kText, std::string(301, 'x')) + Frame(kText, std::string(200, 'x'), false) +
                   Frame(kMore, std::string(200, 'x'), false) + Frame(kMore, "x") + Frame(kText, "next"));

  EXPECT_THAT(TakeAll(), ElementsAre("(oversized)", "(oversized)", "next"));
  EXPECT_FALSE(m_framing.IsOver());
}

TEST_F(GivenWebSocket, CloseIsReturnedAndEndsIt) {
  m_framing.Append(Frame(kText, "last") + Frame(kClose, "\x03\xE8") + Frame(kText, "late"));

  EXPECT_EQ(Closed(), 1000);
  EXPECT_EQ(m_framing.IsOver(), "");
  EXPECT_THAT(TakeAll(), ElementsAre("last"));
}

struct Fault {
  const char* name;
  std::string bytes;
  int code;
};

class GivenFault : public GivenWebSocket, public testing::WithParamInterface<Fault> {};

INSTANTIATE_TEST_SUITE_P(
    Frames, GivenFault,
    testing::Values(Fault{"Unmasked", std::string("\x81\x03one"), 1002},
                    Fault{"Reserved", std::string("\xC1\x80\x00\x00\x00\x00", 6), 1002},
                    Fault{"UnknownOpcode", Frame(3, "x"), 1002}, Fault{"Binary", Frame(kBinary, "x"), 1003},
                    Fault{"LongPing", Frame(kPing, std::string(126, 'x')), 1002},
                    Fault{"PingInParts", Frame(kPing, "x", false), 1002},
                    Fault{"ContinuationOfNothing", Frame(kMore, "x"), 1002},
                    Fault{"TwoBeginnings", Frame(kText, "x", false) + Frame(kText, "y"), 1002},
                    Fault{"NotUtf8", Frame(kText, "\xFF"), 1007},
                    Fault{"LengthOf64Bits", std::string("\x81\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x00\x00\x00\x00", 14),
                          1002}),
    [](const auto& suite) { return suite.param.name; });

TEST_P(GivenFault, ThePeerIsToldAndLeft) {
  m_framing.Append(GetParam().bytes + Frame(kText, "late"));

  EXPECT_EQ(Closed(), GetParam().code);
  EXPECT_TRUE(m_framing.IsOver());
  EXPECT_THAT(TakeAll(), IsEmpty());
}

TEST_F(GivenWebSocket, EndlessFrameTakesNoMemory) {
  m_framing.Append(std::string("\x81\xFF\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x00\x00\x00\x00", 14));
  for (int i = 0; i < 1000; ++i) {
    m_framing.Append(std::string(65536, 'x'));
  }
  EXPECT_FALSE(m_framing.HasNext());
  EXPECT_FALSE(m_framing.IsOver());
}

TEST_F(GivenWebSocket, MessagesLeaveInOneFrame) {
  EXPECT_EQ(m_framing.Around("123").before, "\x81\x03");
  EXPECT_EQ(m_framing.Around(std::string(200, 'x')).before, std::string("\x81\x7E\x00\xC8", 4));
  EXPECT_EQ(m_framing.Around(std::string(70000, 'x')).before,
            std::string("\x81\x7F\x00\x00\x00\x00\x00\x01\x11\x70", 10));
  EXPECT_EQ(m_framing.Around("123").after, "");
}

}  // namespace
}  // namespace sim::rpc
