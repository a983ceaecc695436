// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/PlainReader.h"

#include <array>
#include <charconv>

namespace sim::rpc {
namespace {

/// IsPlain for each character: a look at it costs a third of the comparisons, and most of a message is text.
constexpr std::array<bool, 256> kIsPlain = [] {
  std::array<bool, 256> plain{};
  for (size_t c = 0; c < plain.size(); ++c) {
    plain[c] = IsPlain(static_cast<char>(c));
  }
  return plain;
}();

constexpr int kMostLevels = 8;
constexpr size_t kMostDigits = 18;  // which fit into 64 bits

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

/// What was taken between the beginning of `before` and that of `rest`, without blanks in front.
std::string_view Taken(std::string_view before, std::string_view rest) {
  before.remove_suffix(rest.size());
  before.remove_prefix(before.find_first_not_of(' '));
  return before;
}

}  // namespace

char PlainReader::Next() {
  while (m_rest.starts_with(' ')) {
    m_rest.remove_prefix(1);
  }
  return m_rest.empty() ? '\0' : m_rest.front();
}

bool PlainReader::Take(char token) {
  if (Next() != token) {
    return false;
  }
  m_rest.remove_prefix(1);
  return true;
}

bool PlainReader::TakeWord(std::string_view word) {
  if (!m_rest.starts_with(word)) {
    return false;
  }
  m_rest.remove_prefix(word.size());
  return true;
}

bool PlainReader::TakeText(std::string_view& text) {
  if (!Take('"')) {
    return false;
  }
  size_t length = 0;
  while (length < m_rest.size() && kIsPlain[static_cast<unsigned char>(m_rest[length])]) {
    ++length;
  }
  text = m_rest.substr(0, length);
  m_rest.remove_prefix(length);
  return TakeWord("\"");
}

bool PlainReader::TakeInteger(int64_t& number) {
  const bool negative = Next() == '-';
  const std::string_view digits = m_rest.substr(negative ? 1 : 0);
  size_t length = 0;
  while (length < digits.size() && IsDigit(digits[length])) {
    ++length;
  }
  const bool isOdd = digits.starts_with('0') && (negative || length > 1);  // -0, 007
  const bool isBroken =
      length < digits.size() && std::string_view(".eE").find(digits[length]) != std::string_view::npos;
  if (length == 0 || length > kMostDigits || isOdd || isBroken) {
    return false;
  }
  std::from_chars(m_rest.data(), digits.data() + length, number);
  m_rest = digits.substr(length);
  return true;
}

bool PlainReader::TakeBoolean(bool& value) {
  value = Next() == 't';
  return TakeWord(value ? "true" : "false");
}

bool PlainReader::TakeScalar(std::string_view& json) {
  const std::string_view before = m_rest;
  if (!SkipValue(0)) {
    return false;
  }
  json = Taken(before, m_rest);
  return true;
}

bool PlainReader::TakeValue(std::string_view& json) {
  const std::string_view before = m_rest;
  if (!SkipValue(kMostLevels)) {
    return false;
  }
  json = Taken(before, m_rest);
  return true;
}

bool PlainReader::SkipValue(int levels) {
  std::string_view text;
  int64_t number = 0;
  bool flag = false;
  switch (Next()) {
    case '"':
      return TakeText(text);
    case 't':
    case 'f':
      return TakeBoolean(flag);
    case 'n':
      return TakeWord("null");
    case '{':
      return levels > 0 && TakeObject([&](std::string_view) { return SkipValue(levels - 1); });
    case '[':
      return levels > 0 && TakeList([&] { return SkipValue(levels - 1); });
    default:
      return TakeInteger(number);
  }
}

bool PlainReader::IsAtEnd() {
  return Next() == '\0' && m_rest.empty();
}

}  // namespace sim::rpc
