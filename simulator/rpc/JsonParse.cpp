// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/JsonParse.h"

#include <glib.h>

#include <nlohmann/json.hpp>

#include "simulator/rpc/JsonBytes.h"

namespace sim::rpc {
namespace {

/// Counts brackets outside of texts; good for every valid JSON, and the parser sees to the rest.
bool IsTooDeep(std::string_view text) {
  int depth = 0;
  bool inText = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') {
      inText = !inText;
    } else if (inText) {
      i += c == '\\' ? 1 : 0;
    } else if (c == '[' || c == '{') {
      if (++depth > kMaxDepth) {
        return true;
      }
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return false;
}

bool IsUtf8(std::string_view text) {
  return g_utf8_validate_len(text.data(), text.size(), nullptr);
}

}  // namespace

nlohmann::json Parse(std::string_view text) {
  if (IsTooDeep(text)) {
    return nlohmann::json(nlohmann::json::value_t::discarded);
  }
  nlohmann::json value = nlohmann::json::parse(text, nullptr, false);
  if (value.is_discarded() && !IsUtf8(text)) {
    value = nlohmann::json::parse(WrapForeignBytes(text), nullptr, false);
  }
  return value;
}

std::string TextOf(const nlohmann::json& value) {
  return UnwrapForeignBytes(value.get_ref<const std::string&>());
}

std::string Dump(const nlohmann::json& value) {
  return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string Dump(std::string_view text) {
  return Dump(nlohmann::json(text));
}

}  // namespace sim::rpc
