// SPDX-License-Identifier: Apache-2.0
/// How the text of a number is read: decimal, blanks and a sign before it, anything behind it, no check of the range.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "host/CommandTable.h"
#include "tests/engine/CommandGiven.h"

namespace {

/// The reading written out: what a `long` of this machine holds of the number, cut to 32 bits.
int Expected(const std::string& text) {
  size_t at = 0;
  while (at < text.size() && std::string_view(" \t\n\v\f\r").find(text[at]) != std::string_view::npos) ++at;
  const bool negative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  constexpr long kMost = std::numeric_limits<long>::max();
  long value = 0;
  bool tooLong = false;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    const long digit = text[at] - '0';
    tooLong = tooLong || value > (kMost - digit) / 10;
    value = tooLong ? kMost : value * 10 + digit;
  }
  // The least number has no positive twin.
  const long read = tooLong && negative ? std::numeric_limits<long>::min() : negative ? -value : value;
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<unsigned long>(read)));
}

struct NumberText {
  const char* text;
};

class NumbersOfCommands : public GivenPreparedPicture, public testing::WithParamInterface<NumberText> {
 protected:
  std::string Text() const { return GetParam().text; }
};

TEST_P(NumbersOfCommands, AreReadAsThe32BitsOfALong) {
  EXPECT_EQ(olm::Number(Text()), Expected(Text())) << Text();
}

TEST_P(NumbersOfCommands, ReachTheLibraryAndTheLog) {
  const std::string number = std::to_string(Expected(Text()));
  ASSERT_TRUE(Send("SetZoomMove", {Text()}));
  EXPECT_EQ(kit::Count("call lumaview_set_zoom_move(picture#1, " + number + ", &local, &local) = 0"), 1U) << Text();
  EXPECT_EQ(kit::Count("log 4 blue Execute: SetZoomMove int strParam1: " + number + " \\n"), 1U) << Text();
}

TEST_P(NumbersOfCommands, AreSwitchesByBeingZeroOrNot) {
  ASSERT_TRUE(Send("SetDisplayLock", {Text()}));
  const std::string on = Expected(Text()) != 0 ? "1" : "0";
  EXPECT_EQ(kit::Count("call lumaview_set_display_lock(picture#1, 0x400001, " + on + ") = 0"), 1U) << Text();
}

INSTANTIATE_TEST_SUITE_P(Texts, NumbersOfCommands,
                         testing::Values(NumberText{"0"}, NumberText{"7"}, NumberText{"+7"}, NumberText{"-7"},
                                         NumberText{"007"}, NumberText{" 7"}, NumberText{"\t\n\v\f\r 7"},
                                         NumberText{"\xA0"
                                                    "7"},
                                         NumberText{"7 "}, NumberText{"7 8"}, NumberText{"7abc"}, NumberText{"abc"},
                                         NumberText{"x7"}, NumberText{"-"}, NumberText{"+"}, NumberText{" "},
                                         NumberText{"- 7"}, NumberText{"--7"}, NumberText{"+-7"}, NumberText{"0x10"},
                                         NumberText{"010"}, NumberText{"1e3"}, NumberText{"1.9"}, NumberText{"-1.9"},
                                         NumberText{"1,000"}, NumberText{"2147483647"}, NumberText{"2147483648"},
                                         NumberText{"-2147483648"}, NumberText{"-2147483649"}, NumberText{"4294967295"},
                                         NumberText{"4294967296"}, NumberText{"4294967303"},
                                         NumberText{"9223372036854775807"}, NumberText{"9223372036854775808"},
                                         NumberText{"-9223372036854775808"}, NumberText{"-9223372036854775809"},
                                         NumberText{"99999999999999999999999999"},
                                         NumberText{"-99999999999999999999999999"}));

/// A few answers in plain figures, so that the two readings cannot be wrong in the same way.
TEST(ANumber, IsWhatTheDigitsSay) {
  EXPECT_EQ(olm::Number("12abc"), 12);
  EXPECT_EQ(olm::Number("abc"), 0);
  EXPECT_EQ(olm::Number(" -42 and more"), -42);
  EXPECT_EQ(olm::Number("0x10"), 0);
  EXPECT_EQ(olm::Number(""), 0);
  constexpr bool kLongIs64Bits = sizeof(long) == 8;
  EXPECT_EQ(olm::Number("4294967303"), kLongIs64Bits ? 7 : 2147483647);
  EXPECT_EQ(olm::Number("2147483648"), kLongIs64Bits ? -2147483647 - 1 : 2147483647);
  EXPECT_EQ(olm::Number("9223372036854775808"), kLongIs64Bits ? -1 : 2147483647);
  EXPECT_EQ(olm::Number("-9223372036854775809"), kLongIs64Bits ? 0 : -2147483647 - 1);
}

}  // namespace
