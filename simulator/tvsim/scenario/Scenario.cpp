// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/scenario/Scenario.h"

#include <cerrno>
#include <cstdlib>

namespace sim::tvsim {
namespace {

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

/// Takes one line apart.
class LineReader {
 public:
  explicit LineReader(const std::string& line) : m_rest(line) {}

  Result<std::vector<std::string>> Words() {
    std::vector<std::string> words;
    while (SkipSpace()) {
      std::string word;
      SIM_TRY(ReadWord(word));
      words.push_back(std::move(word));
    }
    return words;
  }

 private:
  /// False at the end of the line, or at a comment.
  bool SkipSpace() {
    while (m_at < m_rest.size() && IsSpace(m_rest[m_at])) {
      ++m_at;
    }
    return m_at < m_rest.size() && m_rest[m_at] != '#';
  }

  Status ReadWord(std::string& word) {
    bool quoted = false;
    for (; m_at < m_rest.size() && (quoted || !IsSpace(m_rest[m_at])); ++m_at) {
      const char c = m_rest[m_at];
      if (c == '"') {
        quoted = !quoted;
      } else if (c == '\\' && quoted && m_at + 1 < m_rest.size()) {
        word += m_rest[++m_at];
      } else if (c == '$' && m_rest.compare(m_at, 2, "${") == 0) {
        SIM_TRY(ReadVariable(word));
      } else {
        word += c;
      }
    }
    return quoted ? Status(Error{EINVAL, "a quote is not closed"}) : Ok();
  }

  /// Leaves `m_at` on the closing brace.
  Status ReadVariable(std::string& word) {
    const size_t end = m_rest.find('}', m_at);
    if (end == std::string::npos) {
      return Error{EINVAL, "a \"${\" has no \"}\""};
    }
    const std::string name = m_rest.substr(m_at + 2, end - m_at - 2);
    const char* value = std::getenv(name.c_str());
    if (value == nullptr) {
      return Error{EINVAL, "the variable " + name + " is not set"};
    }
    word += value;
    m_at = end;
    return Ok();
  }

  const std::string& m_rest;
  size_t m_at = 0;
};

/// The number that `text` begins with, when what follows it is `unit`.
std::optional<double> NumberWithUnit(const std::string& text, const std::string& unit) {
  if (text.empty() || (text[0] != '.' && (text[0] < '0' || text[0] > '9'))) {
    return std::nullopt;
  }
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  return unit == end ? std::optional(number) : std::nullopt;
}

}  // namespace

Result<std::vector<Step>> ParseScenario(std::istream& text) {
  std::vector<Step> steps;
  size_t number = 0;
  for (std::string line; std::getline(text, line);) {
    ++number;
    Result<std::vector<std::string>> words = LineReader(line).Words();
    if (!words) {
      return Error{EINVAL, std::to_string(number) + ": " + words.error().reason};
    }
    if (!words->empty()) {
      steps.push_back({number, std::move(*words)});
    }
  }
  return steps;
}

std::optional<std::chrono::milliseconds> ParseDuration(const std::string& text) {
  constexpr double kHour = 3600e3;
  std::optional<double> milliseconds = NumberWithUnit(text, "ms");
  if (const auto seconds = NumberWithUnit(text, "s"); seconds) {
    milliseconds = *seconds * 1000;
  }
  if (!milliseconds || *milliseconds > kHour) {
    return std::nullopt;
  }
  return std::chrono::milliseconds(static_cast<int64_t>(*milliseconds));
}

std::optional<double> ParseDecibels(const std::string& text) {
  return NumberWithUnit(text, "dB");
}

}  // namespace sim::tvsim
