// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/JsonText.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "simulator/base/TextScan.h"
#include "simulator/rpc/JsonParse.h"
#include "simulator/rpc/PlainReader.h"

namespace sim::rpc {
namespace {

/// More bytes than a request has besides its method, parameters and id.
constexpr size_t kMostAround = 64;
/// Room for an object as most are: a text that grows bit by bit is copied each time.
constexpr size_t kUsualObject = 128;

void AppendEscaped(std::string& json, char c) {
  constexpr char kDigits[] = "0123456789abcdef";
  if (c == '"' || c == '\\') {
    (json += '\\') += c;
  } else if (static_cast<unsigned char>(c) < 0x20) {
    json += "\\u00";
    json += kDigits[c >> 4];
    json += kDigits[c & 0xF];
  } else {
    json += c;
  }
}

void AppendKeepingBytes(std::string& json, std::string_view text) {
  json += '"';
  for (const char c : text) {
    AppendEscaped(json, c);
  }
  json += '"';
}

/// Whether it stands in a text of JSON as it is.
bool IsPlainText(std::string_view text) {
  return !HasAny(text, [](auto c) { return kIsOdd(c) | (c == '"'); });
}

void AppendQuoted(std::string& json, std::string_view text, ForeignBytes foreign) {
  if (IsPlainText(text)) {
    json.reserve(json.size() + text.size() + 2);
    json.append("\"").append(text).append("\"");
  } else if (foreign == ForeignBytes::kKeep) {
    AppendKeepingBytes(json, text);
  } else {
    json += Dump(text);
  }
}

}  // namespace

JsonText Quote(std::string_view text, ForeignBytes foreign) {
  JsonText json;
  AppendQuoted(json.text, text, foreign);
  return json;
}

JsonText Quote(const std::vector<std::string>& texts, ForeignBytes foreign) {
  std::string json = "[";
  for (const std::string& text : texts) {
    json += json.size() > 1 ? "," : "";
    AppendQuoted(json, text, foreign);
  }
  return {json += ']'};
}

JsonText Number(int64_t number) {
  return {std::to_string(number)};
}

JsonText Boolean(bool value) {
  return {value ? "true" : "false"};
}

bool IsJson(std::string_view json) {
  PlainReader reader(json);
  std::string_view value;
  if (reader.TakeValue(value) && reader.IsAtEnd()) {
    return true;
  }
  return !Parse(json).is_discarded();
}

std::optional<std::string> ReadText(std::string_view json) {
  const nlohmann::json value = Parse(json);
  return value.is_string() ? std::optional(TextOf(value)) : std::nullopt;
}

std::optional<int64_t> ReadInteger(std::string_view json) {
  const nlohmann::json value = Parse(json);
  return value.is_number_integer() ? std::optional(value.get<int64_t>()) : std::nullopt;
}

std::optional<bool> ReadBoolean(std::string_view json) {
  const nlohmann::json value = Parse(json);
  return value.is_boolean() ? std::optional(value.get<bool>()) : std::nullopt;
}

ObjectWriter::ObjectWriter() {
  m_text.reserve(kUsualObject);
  m_text += '{';
}

ObjectWriter& ObjectWriter::Add(std::string_view name, const JsonText& value) {
  if (m_text.size() > 1) {
    m_text += ',';
  }
  AppendQuoted(m_text, name, ForeignBytes::kReplace);
  m_text.append(1, ':').append(value.text);
  return *this;
}

ObjectWriter& ObjectWriter::AddText(std::string_view name, std::string_view text, ForeignBytes foreign) {
  Add(name, {});
  AppendQuoted(m_text, text, foreign);
  return *this;
}

JsonText ObjectWriter::Take() {
  m_text += '}';
  return {std::exchange(m_text, std::string(1, '{'))};
}

std::string WriteRequest(std::string_view method, const JsonText& params, const JsonText& id) {
  std::string request;
  request.reserve(kMostAround + method.size() + params.text.size() + id.text.size());
  request += R"({"jsonrpc":"2.0","method":)";
  AppendQuoted(request, method, ForeignBytes::kReplace);
  if (!params.text.empty()) {
    request.append(R"(,"params":)").append(params.text);
  }
  if (!id.text.empty()) {
    request.append(R"(,"id":)").append(id.text);
  }
  request += '}';
  return request;
}

}  // namespace sim::rpc
