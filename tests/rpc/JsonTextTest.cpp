// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/JsonText.h"

#include <gtest/gtest.h>

#include "simulator/rpc/JsonBytes.h"

namespace sim::rpc {
namespace {

const std::string kLatinName = "/photos/caf\xE9.jpg";

std::string AllBytes() {
  std::string bytes;
  for (int value = 1; value < 256; ++value) {
    bytes += static_cast<char>(value);
  }
  return bytes;
}

TEST(JsonText, ValuesAreWrittenAsJson) {
  EXPECT_EQ(Quote("a \"b\" \\ \n").text, R"("a \"b\" \\ \n")");
  EXPECT_EQ(Number(-7).text, "-7");
  EXPECT_EQ(Boolean(true).text, "true");
  EXPECT_EQ(Quote(std::vector<std::string>{"a", "b"}).text, R"(["a","b"])");
  EXPECT_EQ(Quote(std::vector<std::string>{}).text, "[]");
  EXPECT_EQ(ObjectWriter().Take().text, "{}");
  EXPECT_EQ(ObjectWriter().Add("x", Number(1)).Add("y", Quote("z")).Take().text, R"({"x":1,"y":"z"})");
}

TEST(JsonText, ForeignBytesAreReplacedOutward) {
  EXPECT_EQ(Quote(kLatinName).text, "\"/photos/caf\uFFFD.jpg\"");
}

TEST(JsonText, KeptBytesComeBackExactly) {
  for (const std::string& text : {kLatinName, AllBytes(), std::string("\uFDD8\uFDE9 and \xE9"), std::string()}) {
    EXPECT_EQ(ReadText(Quote(text, ForeignBytes::kKeep).text), text);
  }
}

TEST(JsonText, TextIsReadWithItsEscapes) {
  EXPECT_EQ(ReadText(R"("\u00e4\n\ud83d\ude00")"), "\u00e4\n\U0001F600");
  EXPECT_EQ(ReadText("7"), std::nullopt);
}

TEST(JsonText, IntegersAndFlagsAreTyped) {
  EXPECT_EQ(ReadInteger("-12"), -12);
  EXPECT_EQ(ReadInteger("\"12\""), std::nullopt);
  EXPECT_EQ(ReadInteger("1.5"), std::nullopt);
  EXPECT_EQ(ReadBoolean("false"), false);
  EXPECT_EQ(ReadBoolean("0"), std::nullopt);
}

TEST(JsonText, OneValueAndNothingElseIsJson) {
  for (const char* json : {"1", "\"a\"", "[1,{}]", " null ", "\"[[[[\""}) {
    EXPECT_TRUE(IsJson(json)) << json;
  }
  for (const char* text : {"", "1 2", "{", "640*480", "'a'", "[1,]", "\x80"}) {
    EXPECT_FALSE(IsJson(text)) << text;
  }
}

TEST(JsonText, NestingIsLimited) {
  EXPECT_TRUE(IsJson(std::string(64, '[') + std::string(64, ']')));
  EXPECT_FALSE(IsJson(std::string(65, '[') + std::string(65, ']')));
  EXPECT_FALSE(IsJson(std::string(500000, '[')));
}

TEST(JsonText, Utf8IsWrappedAsItself) {
  const std::string text = "plain \u00e4 \U0001F600 \uFFFD";
  EXPECT_EQ(WrapForeignBytes(text), text);
}

}  // namespace
}  // namespace sim::rpc
