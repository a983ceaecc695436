// SPDX-License-Identifier: Apache-2.0
#include "tests/kit/LogFold.h"

#include <array>
#include <cstdarg>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/olm_emp.h"
#include "tests/kit/Journal.h"
#include "tests/kit/MaskedFormat.h"
#include "tests/kit/Mutexes.h"

namespace kit {
namespace {

constexpr unsigned int kModule = 2;
constexpr char kPrefixFormat[] = "[OLM][%s(%d)] ";
constexpr std::string_view kReset = "\033[0m";

struct Prefix {
  unsigned int module;
  unsigned int level;
  std::string function;
  int line;
};

thread_local std::optional<Prefix> t_prefix;

struct Colour {
  std::string_view sequence;
  const char* name;
  unsigned int level;
};

constexpr std::array<Colour, 3> kColours = {
    {{"\033[31m", "red", 1}, {"\033[33m", "yellow", 2}, {"\033[34m", "blue", 4}}};

bool TakePrefix(std::string_view& text, std::string_view prefix) {
  if (text.substr(0, prefix.size()) != prefix) return false;
  text.remove_prefix(prefix.size());
  return true;
}

bool TakeSuffix(std::string_view& text, std::string_view suffix) {
  if (text.size() < suffix.size() || text.substr(text.size() - suffix.size()) != suffix) return false;
  text.remove_suffix(suffix.size());
  return true;
}

std::string Entry(const Prefix& prefix, const char* colour, std::string_view text) {
  return "log " + std::to_string(prefix.level) + " " + colour + " " + prefix.function + ": " + Escaped(text);
}

std::optional<std::string> FoldTrace(const Prefix& prefix, std::string_view text) {
  if (prefix.level != 2 || !TakePrefix(text, "\033[34m[Picture-EMP] ") || !TakePrefix(text, prefix.function) ||
      !TakePrefix(text, " ==========> ") || !TakeSuffix(text, kReset)) {
    return std::nullopt;
  }
  if (text != "Enter" && text != "Leave") return std::nullopt;
  return Entry(prefix, "trace", text);
}

std::optional<std::string> FoldColoured(const Prefix& prefix, std::string_view text) {
  const std::string own = "[Picture-EMP][" + prefix.function + " (" + std::to_string(prefix.line) + ")] ";
  for (const Colour& colour : kColours) {
    std::string_view rest = text;
    if (prefix.level == colour.level && TakePrefix(rest, colour.sequence) && TakePrefix(rest, own) &&
        TakeSuffix(rest, kReset) && rest.find('\033') == rest.npos && LockLineIsTrue(rest)) {
      return Entry(prefix, colour.name, rest);
    }
  }
  return std::nullopt;
}

std::optional<std::string> FoldPlain(const Prefix& prefix, std::string_view text) {
  const bool level = prefix.level == 0 || prefix.level == 4;
  if (!level || text.find('\033') != text.npos || text.find("[Picture-EMP]") != text.npos) return std::nullopt;
  return Entry(prefix, "plain", text);
}

std::string Raw(unsigned int module, unsigned int level, std::string_view text) {
  return "log! module " + std::to_string(module) + " level " + std::to_string(level) + " " + Quoted(text);
}

std::string AsText(const Prefix& prefix) {
  return "module " + std::to_string(prefix.module) + " level " + std::to_string(prefix.level) + " [" + prefix.function +
         "(" + std::to_string(prefix.line) + ")]";
}

std::string Fold(const std::optional<Prefix>& prefix, unsigned int module, unsigned int level, std::string_view text) {
  if (!prefix) return Raw(module, level, text) + " without a prefix";
  if (module == kModule && prefix->module == module && prefix->level == level) {
    if (auto entry = FoldTrace(*prefix, text)) return *entry;
    if (auto entry = FoldColoured(*prefix, text)) return *entry;
    if (auto entry = FoldPlain(*prefix, text)) return *entry;
  }
  return Raw(module, level, text) + " after " + AsText(*prefix);
}

}  // namespace

std::string TakePendingPrefix() {
  const auto prefix = std::exchange(t_prefix, std::nullopt);
  return prefix ? AsText(*prefix) : std::string();
}

void DropPendingPrefix() {
  t_prefix.reset();
}

}  // namespace kit

void olm::COLMDebug::PrintLog(unsigned int module, unsigned int level, const char* format, ...) {
  if (!kit::Recording()) return;
  va_list arguments;
  va_start(arguments, format);
  if (std::strcmp(format, kit::kPrefixFormat) == 0) {
    const char* function = va_arg(arguments, const char*);
    const int line = va_arg(arguments, int);
    const std::string stray = kit::TakePendingPrefix();
    if (!stray.empty()) kit::Append("log! " + stray + " (a prefix without its message)");
    kit::t_prefix = kit::Prefix{module, level, function, line};
  } else {
    const std::string text = kit::MaskedFormat(format, arguments);
    const auto prefix = std::exchange(kit::t_prefix, std::nullopt);
    kit::Append(kit::Fold(prefix, module, level, text));
  }
  va_end(arguments);
}
