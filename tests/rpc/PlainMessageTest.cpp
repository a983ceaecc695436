// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/PlainMessage.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "simulator/rpc/PlainReader.h"

namespace sim::rpc {
namespace {

using Json = nlohmann::json;

bool IsPlainMessage(std::string_view text) {
  return PlainMessage::Read(text).has_value();
}

/// What was read has to be what the parser finds.
void ExpectAsParsed(const PlainMessage& plain, const std::string& text) {
  const Json json = Json::parse(text, nullptr, false);
  ASSERT_TRUE(json.is_object()) << text;
  size_t members = 0;
  const auto expectMember = [&](const char* name, std::string_view value) {
    EXPECT_EQ(json.contains(name), !value.empty()) << name << " of " << text;
    if (!value.empty()) {
      ++members;
      EXPECT_EQ(Json::parse(value, nullptr, false), json.value(name, Json(Json::value_t::discarded))) << text;
    }
  };
  expectMember("jsonrpc", plain.jsonrpc);
  expectMember("method", plain.method);
  expectMember("params", plain.params);
  expectMember("id", plain.id);
  expectMember("result", plain.result);
  EXPECT_EQ(members, json.size()) << text;
}

TEST(PlainMessage, PartsAreFoundInAnyOrder) {
  const auto call = PlainMessage::Read(
      R"({"id":7,"params":{"command":"Stop","params":["id",{"id":8}]},"method":"engine.execute","jsonrpc":"2.0"})");
  ASSERT_TRUE(call && call->IsCall());
  EXPECT_EQ(call->MethodName(), "engine.execute");
  EXPECT_EQ(call->params, R"({"command":"Stop","params":["id",{"id":8}]})");
  EXPECT_EQ(call->id, "7");
  EXPECT_FALSE(call->IsResult());
}

TEST(PlainMessage, BlanksBetweenPartsAreNoMatter) {
  const auto call =
      PlainMessage::Read(R"(  { "jsonrpc" : "2.0" , "method":"a" , "params" : [ 1 , " 2 " ] , "id" : -3 }  )");
  ASSERT_TRUE(call && call->IsCall());
  EXPECT_EQ(call->params, R"([ 1 , " 2 " ])");
  EXPECT_EQ(call->id, "-3");
}

TEST(PlainMessage, IdsAreTextsNumbersOrNull) {
  for (const std::string id : {"0", "-1", "123456789012345678", "\"\"", "\"a,b}\"", "\"\\u0041\"", "null", "true", "[]",
                               "{}", "1.5", "1e3", "-0", "01", "1234567890123456789", "- 1", "nul"}) {
    const std::string text = R"({"jsonrpc":"2.0","method":"a","id":)" + id + "}";
    const auto call = PlainMessage::Read(text);
    const bool isGood = id.find_first_of("\\[{.e") == std::string::npos && id.size() < 19 && id != "-0" && id != "01" &&
                        id != "- 1" && id != "nul";
    EXPECT_EQ(call.has_value(), isGood || id == "true") << id;
    EXPECT_EQ(call && call->IsCall(), isGood) << id;
    EXPECT_TRUE(!call || call->id == id);
  }
}

TEST(PlainMessage, NotificationsHaveNoId) {
  const auto call = PlainMessage::Read(R"({"jsonrpc":"2.0","method":"a"})");
  ASSERT_TRUE(call && call->IsCall());
  EXPECT_TRUE(call->id.empty());
  EXPECT_TRUE(call->params.empty());
}

TEST(PlainMessage, ResultsAreScalars) {
  const auto result = PlainMessage::Read(R"({"jsonrpc":"2.0","result":"640*480","id":2})");
  ASSERT_TRUE(result && result->IsResult());
  EXPECT_EQ(result->result, R"("640*480")");
  EXPECT_FALSE(result->IsCall());
  EXPECT_FALSE(IsPlainMessage(R"({"jsonrpc":"2.0","result":{"a":1},"id":2})"));
  EXPECT_FALSE(IsPlainMessage(R"({"jsonrpc":"2.0","error":{"code":1,"message":"no"},"id":2})"));
}

TEST(PlainMessage, WhatIsNoCallIsToldApart) {
  for (const char* text :
       {"{}", R"({"jsonrpc":"1.0","method":"a","id":1})", R"({"jsonrpc":2,"method":"a","id":1})",
        R"({"method":"a","id":1})", R"({"jsonrpc":"2.0","id":1})", R"({"jsonrpc":"2.0","method":1,"id":1})",
        R"({"jsonrpc":"2.0","method":"a","params":"x","id":1})", R"({"jsonrpc":"2.0","method":"a","params":null})",
        R"({"jsonrpc":"2.0","method":"a","id":false})", R"({"jsonrpc":"2.0","method":"a","result":1,"id":1})"}) {
    const auto message = PlainMessage::Read(text);
    EXPECT_TRUE(message && !message->IsCall()) << text;
  }
}

TEST(PlainMessage, WhatIsNotPlainIsForTheParser) {
  for (const char* text : {
           R"([{"jsonrpc":"2.0","method":"a","id":1}])",                        // a batch
           R"({"jsonrpc":"2.0","method":"a","id":1,"id":2})",                   // the last one counts
           R"({"jsonrpc":"2.0","method":"a","\u0069d":1})",                     // an id, spelt otherwise
           R"({"jsonrpc":"2.0","method":"a","params":["\"id\":9"],"id":1})",    // no id
           R"({"jsonrpc":"2.0","method":"a","params":["/\u00e4"],"id":1})",     // escapes
           "{\"jsonrpc\":\"2.0\",\"method\":\"a\",\"params\":[\"\xC3\xA4\"]}",  // a path that is not ASCII
           "{\"jsonrpc\":\"2.0\",\"method\":\"a\",\"params\":[\"\xFF\"]}",      // nor UTF-8
           "{\"jsonrpc\":\"2.0\",\"method\":\"a\",\"params\":[\"\x01\"]}",      // no JSON
           "{\"jsonrpc\":\"2.0\",\n\"method\":\"a\"}",                          // on two lines
           R"({"jsonrpc":"2.0","method":"a","extra":1})",                       //
           R"({"jsonrpc":"2.0","method":"a","params":[[[[[[[[[1]]]]]]]]]})",    // deep
           R"({"jsonrpc":"2.0","method":"a","params":[1.5]})",                  //
           R"({"jsonrpc":"2.0","method":"a","params":[tru]})",                  // broken ones
           R"({"jsonrpc":"2.0","method":"a","params":[truely]})",               //
           R"({"jsonrpc":"2.0","method":"a","params":[1 2]})",                  //
           R"({"jsonrpc":"2.0","method":"a","params":[1,]})",                   //
           R"({"jsonrpc":"2.0","method":"a","params":{"a"}})",                  //
           R"({"jsonrpc":"2.0","method":"a","params":{a:1}})",                  //
           R"({"jsonrpc":"2.0","method":"a",})",                                //
           R"({"jsonrpc":"2.0","method":"a")",                                  //
           R"({"jsonrpc":"2.0","method":"a"}})",                                //
           R"({"jsonrpc":"2.0","method":"a"} {})",                              //
           R"({"jsonrpc":"2.0","method":"a)",                                   //
           "",
           " ",
           "1",
           "\"a\"",
           "{",
           "nul",
       }) {
    EXPECT_FALSE(IsPlainMessage(text)) << text;
  }
}

/// Many ways to spoil a message: what is read of it all the same is what the parser finds.
TEST(PlainMessage, AgreesWithTheParser) {
  const std::string good[] = {
      R"({"jsonrpc":"2.0","id":12,"method":"engine.execute","params":{"command":"Play","params":["/a b.jpg","",[-1]]}})",
      R"({"jsonrpc":"2.0","result":"640*480","id":"x"})", R"({"id":null,"result":0,"jsonrpc":"2.0"})"};
  constexpr std::string_view kBytes = "{}[]\":, \\-0129.eEtrufalsn\n\t\xC3\xA4";
  std::mt19937 random(1);
  const auto below = [&random](size_t limit) { return random() % limit; };
  int plain = 0;
  for (int round = 0; round < 300000; ++round) {
    std::string text = good[below(std::size(good))];
    for (size_t change = below(4); change > 0 && !text.empty(); --change) {
      const size_t at = below(text.size());
      switch (below(4)) {
        case 0:
          text.erase(at, 1 + below(3));
          break;
        case 1:
          text.insert(at, 1, kBytes[below(kBytes.size())]);
          break;
        case 2:
          text[at] = kBytes[below(kBytes.size())];
          break;
        default:
          text.insert(at, text.substr(below(text.size()), below(12)));
      }
    }
    if (const auto message = PlainMessage::Read(text)) {
      ++plain;
      ExpectAsParsed(*message, text);
    }
  }
  EXPECT_GT(plain, 1000);
}

TEST(PlainReader, TakesWhatComesNext) {
  PlainReader reader(R"( [ "a" , -12 , true , {"b" : [ ] } ] )");
  std::string_view text, value;
  int64_t number = 0;
  bool flag = false;
  EXPECT_TRUE(reader.Take('[') && reader.TakeText(text) && reader.Take(',') && reader.TakeInteger(number) &&
              reader.Take(',') && reader.TakeBoolean(flag) && reader.Take(',') && reader.TakeValue(value));
  EXPECT_FALSE(reader.IsAtEnd());
  EXPECT_TRUE(reader.Take(']') && reader.IsAtEnd());
  EXPECT_EQ(text, "a");
  EXPECT_EQ(number, -12);
  EXPECT_TRUE(flag);
  EXPECT_EQ(value, R"({"b" : [ ] })");
}

TEST(PlainReader, NulIsNotTheEnd) {
  EXPECT_FALSE(PlainReader(std::string_view("\0", 1)).IsAtEnd());
  EXPECT_FALSE(IsPlainMessage(std::string_view("{}\0", 3)));
}

}  // namespace
}  // namespace sim::rpc
