// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/LineBuffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace sim::rpc {
namespace {

using testing::ElementsAre;

class GivenLineBuffer : public testing::Test {
 protected:
  std::vector<std::string> TakeAll() {
    std::vector<std::string> lines;
    while (const auto line = m_buffer.Next()) {
      lines.push_back(line->oversized ? "(oversized)" : line->text);
    }
    return lines;
  }

  LineBuffer m_buffer{8};
};

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

TEST_F(GivenLineBuffer, MemoryThatIsGivenBackServesALaterLineWithoutItsText) {
  LineBuffer buffer(1 << 20);
  buffer.Append(std::string(100, 'x') + "\n");
  auto first = buffer.Next();
  const char* const memory = first->text.data();
  buffer.Reuse(std::move(*first));
  buffer.Append("a\nb\n");  // "a" was begun before there was any

  EXPECT_EQ(buffer.Next()->text, "a");
  const auto second = buffer.Next();
  EXPECT_EQ(second->text, "b");
  EXPECT_EQ(second->text.data(), memory);
}

TEST_F(GivenLineBuffer, MemoryOfALongLineIsNotKept) {
  LineBuffer buffer(1 << 20);
  buffer.Append(std::string(100000, 'x') + "\n");
  buffer.Reuse(std::move(*buffer.Next()));
  buffer.Append("a\nb\n");

  buffer.Next();
  EXPECT_LT(buffer.Next()->text.capacity(), 100000u);
}

TEST_F(GivenLineBuffer, LineAboveTheLimitIsReportedOnceAndTheNextIsWhole) {
  m_buffer.Append("123456789\n12345");
  m_buffer.Append("6789abcdefghijklmnop");
  m_buffer.Append("q\nnext\n");
  EXPECT_THAT(TakeAll(), ElementsAre("(oversized)", "(oversized)", "next"));
}

}  // namespace
}  // namespace sim::rpc
