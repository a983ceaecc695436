// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/PlainReader.h"

#include <charconv>

#include "simulator/base/TextScan.h"

namespace sim::rpc {
namespace {

/// In place of what is not plain: no value, and not the end.
constexpr std::string_view kNothing = "\\";

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

PlainReader::PlainReader(std::string_view json) : m_rest(HasAny(json, kIsOdd) ? kNothing : json) {}

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
  const size_t length = m_rest.find('"');
  if (length == std::string_view::npos) {
    return false;
  }
  text = m_rest.substr(0, length);
  m_rest.remove_prefix(length + 1);
  return true;
}

/// Characters of the whole number that comes next; 0 where none does.
size_t PlainReader::CountInteger() {
  const size_t sign = Next() == '-' ? 1 : 0;
  size_t end = sign;
  while (end < m_rest.size() && IsDigit(m_rest[end])) {
    ++end;
  }
  const size_t digits = end - sign;
  const bool isOdd = digits > 0 && m_rest[sign] == '0' && end > 1;  // -0, 007
  const bool isBroken = end < m_rest.size() && (m_rest[end] == '.' || m_rest[end] == 'e' || m_rest[end] == 'E');
  return digits <= kMostDigits && digits > 0 && !isOdd && !isBroken ? end : 0;
}

bool PlainReader::TakeInteger(int64_t& number) {
  const size_t count = CountInteger();
  std::from_chars(m_rest.data(), m_rest.data() + count, number);
  m_rest.remove_prefix(count);
  return count > 0;
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
    default: {
      const size_t count = CountInteger();
      m_rest.remove_prefix(count);
      return count > 0;
    }
  }
}

bool PlainReader::IsAtEnd() {
  return Next() == '\0' && m_rest.empty();
}

}  // namespace sim::rpc
