// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/LineBuffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <vector>

namespace sim::rpc {
namespace {

using testing::ElementsAre;

class GivenLineBuffer : public testing::Test {
 protected:
  std::vector<std::string> TakeAll() {
    std::vector<std::string> lines;
    while (const auto line = m_buffer.Next()) {
      lines.push_back(line->oversized ? "(oversized)" : std::string(line->text));
    }
    return lines;
  }

  LineBuffer m_buffer{8};
};

/// What this process has from the heap. A sanitizer's heap says 0.
size_t HeapBytes() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

TEST_F(GivenLineBuffer, LinesComeInOrderHoweverTheBytesAreCut) {
  for (const char c : std::string("one\ntwo\r\n\nthree\n")) {
    m_buffer.Append(std::string_view(&c, 1));
  }
  EXPECT_THAT(TakeAll(), ElementsAre("one", "two", "three"));
}

TEST_F(GivenLineBuffer, LineWithoutItsEndWaitsForIt) {
  m_buffer.Append("one\ntw");
  EXPECT_THAT(TakeAll(), ElementsAre("one"));
  EXPECT_FALSE(m_buffer.HasNext());
  m_buffer.Append("o\n");
  EXPECT_THAT(TakeAll(), ElementsAre("two"));
}

TEST_F(GivenLineBuffer, EndOfBytesEndsTheLastLine) {
  m_buffer.Append("last");
  m_buffer.End();
  EXPECT_THAT(TakeAll(), ElementsAre("last"));
}

TEST_F(GivenLineBuffer, LineOfTheLimitIsWhole) {
  m_buffer.Append("12345678\n");
  EXPECT_THAT(TakeAll(), ElementsAre("12345678"));
}

TEST_F(GivenLineBuffer, LineKeepsItsTextUntilTheNextIsAskedFor) {
  m_buffer.Append("one\ntwo\n");
  const auto first = m_buffer.Next();
  EXPECT_TRUE(m_buffer.HasNext());
  EXPECT_EQ(first->text, "one");
}

TEST_F(GivenLineBuffer, LinesThatComeOneByOneStandInTheSameMemory) {
  m_buffer.Append("one\n");
  const char* const memory = m_buffer.Next()->text.data();
  m_buffer.Append("two\n");
  EXPECT_EQ(m_buffer.Next()->text.data(), memory);
  EXPECT_FALSE(m_buffer.Next());
  m_buffer.Append("three\n");
  EXPECT_EQ(m_buffer.Next()->text.data(), memory);
}

TEST_F(GivenLineBuffer, MemoryOfALongLineIsNotKept) {
  const size_t before = HeapBytes();
  LineBuffer buffer(1 << 20);
  buffer.Append(std::string(500000, 'x') + "\n");
  EXPECT_EQ(buffer.Next()->text.size(), 500000u);
  EXPECT_FALSE(buffer.Next());
  EXPECT_LT(HeapBytes(), before + 100000);
}

TEST_F(GivenLineBuffer, LineAboveTheLimitTakesNoMemory) {
  const size_t before = HeapBytes();
  for (int i = 0; i < 1000; ++i) {
    m_buffer.Append(std::string(1000, 'x'));
  }
  EXPECT_LT(HeapBytes(), before + 100000);
}

TEST_F(GivenLineBuffer, LineThatCameInPartBeforeTheOthersWereTakenIsWhole) {
  m_buffer.Append("one\ntw");
  m_buffer.Append("o\nthr");
  EXPECT_THAT(TakeAll(), ElementsAre("one", "two"));
  m_buffer.Append("ee\n");
  EXPECT_THAT(TakeAll(), ElementsAre("three"));
}

TEST_F(GivenLineBuffer, LineThatIsTooLongComesBetweenItsNeighbours) {
  m_buffer.Append("one\n123456789\ntwo\n123456789");
  m_buffer.Append("0123\r\n\r\nthree\n");
  EXPECT_THAT(TakeAll(), ElementsAre("one", "(oversized)", "two", "(oversized)", "three"));
}

TEST_F(GivenLineBuffer, LineAboveTheLimitIsReportedOnceAndTheNextIsWhole) {
  m_buffer.Append("123456789\n12345");
  m_buffer.Append("6789abcdefghijklmnop");
  m_buffer.Append("q\nnext\n");
  EXPECT_THAT(TakeAll(), ElementsAre("(oversized)", "(oversized)", "next"));
}

}  // namespace
}  // namespace sim::rpc
