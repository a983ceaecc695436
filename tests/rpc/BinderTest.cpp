// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/Binder.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <vector>

namespace sim::rpc {
namespace {

struct AllParams {
  std::string text;
  int64_t number = -1;
  bool flag = false;
  std::vector<std::string> texts;
  JsonText any;
};
const Fields<AllParams> kAllParams = {Required("text", &AllParams::text), Optional("number", &AllParams::number),
                                      Optional("flag", &AllParams::flag), Optional("texts", &AllParams::texts),
                                      Optional("any", &AllParams::any)};

std::string Reason(std::string_view json) {
  const nlohmann::json params = nlohmann::json::parse(json);
  AllParams read;
  const std::optional<CallError> error = kAllParams.Read(&params, read);
  EXPECT_TRUE(!error || error->code == kInvalidParams);
  return error ? error->message : "";
}

TEST(Binder, ParametersAreReadByName) {
  const auto params =
      ReadParams({R"({"text":"t","number":5,"flag":true,"texts":["a","b"],"any":{"x":[1]}})"}, kAllParams);
  ASSERT_TRUE(params);
  EXPECT_EQ(params->text, "t");
  EXPECT_EQ(params->number, 5);
  EXPECT_TRUE(params->flag);
  EXPECT_EQ(params->texts, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(params->any.text, R"({"x":[1]})");
}

TEST(Binder, ParametersAreReadByPosition) {
  const auto params = ReadParams({R"(["t",5])"}, kAllParams);
  ASSERT_TRUE(params);
  EXPECT_EQ(params->text, "t");
  EXPECT_EQ(params->number, 5);
  EXPECT_FALSE(params->flag);
}

TEST(Binder, TextsKeepBytesThatAreNotUtf8) {
  const auto params = ReadParams({"{\"text\":\"caf\xE9\",\"texts\":[\"\xFF\"]}"}, kAllParams);
  ASSERT_TRUE(params);
  EXPECT_EQ(params->text, "caf\xE9");
  EXPECT_EQ(params->texts.at(0), "\xFF");
}

TEST(Binder, PlainParametersAreReadAsAnyOthers) {
  const auto read = [](const std::string& text, bool asPlain) {
    const nlohmann::json document = nlohmann::json::parse(text);
    AllParams params;
    const auto error = asPlain ? kAllParams.Read(Params(text), params) : kAllParams.Read(&document, params);
    return error ? error->message
                 : params.text + "|" + std::to_string(params.number) + "|" + std::to_string(params.flag) + "|" +
                       std::to_string(params.texts.size()) + "|" + params.any.text;
  };
  for (const char* text :
       {R"({"text":"t"})", R"({ "number" : 5 , "text" : "t", "flag":true , "texts" : [ "a", "b" ] })",
        R"(["t",-7,false])", R"(["t",5,true,["a"]])", R"({"texts":[],"text":""})",
        R"({"text":"t","any":{"b":1,"a":2}})", "[]", "{}", R"({"number":5})", R"({"text":5})",
        R"({"text":"t","number":"5"})", R"({"text":"t","texts":["a",1]})", R"({"text":"t","other":1})",
        R"(["t",1,true,[],{},6])", R"({"text":"t","text":"u"})", R"({"text":null})"}) {
    EXPECT_EQ(read(text, true), read(text, false)) << text;
  }
  AllParams params;
  NoParams none;
  EXPECT_TRUE(kAllParams.Read(Params(""), params));
  EXPECT_FALSE(kNoFields.Read(Params(""), none));
}

TEST(Binder, ErrorsNameTheParameter) {
  EXPECT_EQ(Reason(R"({})"), R"(parameter "text" is missing)");
  EXPECT_EQ(Reason(R"([])"), R"(parameter "text" is missing)");
  EXPECT_EQ(Reason(R"({"text":1})"), R"(parameter "text" has to be {"type":"string"})");
  EXPECT_EQ(Reason(R"({"text":null})"), R"(parameter "text" has to be {"type":"string"})");
  EXPECT_EQ(Reason(R"({"text":"","number":1.5})"), R"(parameter "number" has to be {"type":"integer"})");
  EXPECT_EQ(Reason(R"({"text":"","flag":1})"), R"(parameter "flag" has to be {"type":"boolean"})");
  EXPECT_EQ(Reason(R"({"text":"","texts":["a",1]})"),
            R"(parameter "texts" has to be {"type":"array","items":{"type":"string"}})");
  EXPECT_EQ(Reason(R"({"text":"","txt":""})"), R"(parameter "txt" is not known)");
  EXPECT_EQ(Reason(R"(["",1,true,[],0,"more"])"), "more than 5 parameters");
}

TEST(Binder, MethodWithoutParametersTakesNone) {
  AllParams unused;
  NoParams none;
  EXPECT_FALSE(kNoFields.Read(nullptr, none));
  EXPECT_TRUE(kAllParams.Read(nullptr, unused));
}

TEST(Binder, ListDescribesItself) {
  const Binder binder({
      Method("one", "The first", kAllParams, [](AllParams) { return Success(Number(1)); }),
      Method("two", "The second", kNoFields, [](NoParams) { return Success(Number(2)); }),
  });
  const auto methods = nlohmann::json::parse(binder.Describe().text);
  EXPECT_EQ(methods[0]["name"], "one");
  EXPECT_EQ(methods[0]["params"][0]["name"], "text");
  EXPECT_EQ(methods[0]["params"][0]["required"], true);
  EXPECT_EQ(methods[0]["params"][3]["schema"]["items"]["type"], "string");
  EXPECT_EQ(methods[1]["params"].size(), 0u);
  EXPECT_EQ(binder.Find("two")->summary, "The second");
  EXPECT_EQ(binder.Find("three"), nullptr);
}

}  // namespace
}  // namespace sim::rpc
