// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/JsonText.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "simulator/rpc/JsonParse.h"
#include "simulator/rpc/PlainReader.h"

namespace sim::rpc {
namespace {

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

std::string QuoteKeepingBytes(std::string_view text) {
  std::string json = "\"";
  json.reserve(text.size() + 2);
  for (const char c : text) {
    AppendEscaped(json, c);
  }
  return json += '"';
}

}  // namespace

JsonText Quote(std::string_view text, ForeignBytes foreign) {
  if (std::ranges::all_of(text, IsPlain)) {
    return {std::string(1, '"').append(text) + '"'};
  }
  return {foreign == ForeignBytes::kKeep ? QuoteKeepingBytes(text) : Dump(text)};
}

JsonText Quote(const std::vector<std::string>& texts, ForeignBytes foreign) {
  std::string json = "[";
  for (const std::string& text : texts) {
    json += (json.size() > 1 ? "," : "") + Quote(text, foreign).text;
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

ObjectWriter& ObjectWriter::Add(std::string_view name, const JsonText& value) {
  if (m_text.size() > 1) {
    m_text += ',';
  }
  m_text.append(Quote(name).text).append(1, ':').append(value.text);
  return *this;
}

JsonText ObjectWriter::Take() {
  return {std::exchange(m_text, "{") + '}'};
}

std::string WriteRequest(std::string_view method, const JsonText& params, const JsonText& id) {
  std::string request = R"({"jsonrpc":"2.0","method":)";
  request += Quote(method).text;
  if (!params.text.empty()) {
    request.append(R"(,"params":)").append(params.text);
  }
  if (!id.text.empty()) {
    request.append(R"(,"id":)").append(id.text);
  }
  return request += '}';
}

}  // namespace sim::rpc
