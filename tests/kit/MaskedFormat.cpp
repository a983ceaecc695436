// SPDX-License-Identifier: Apache-2.0
#include "tests/kit/MaskedFormat.h"

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "tests/kit/Names.h"

namespace kit {
namespace {

template <typename T>
std::string Print(const std::string& spec, T value) {
  const int length = std::snprintf(nullptr, 0, spec.c_str(), value);
  std::string text(static_cast<size_t>(length) + 1, '\0');
  std::snprintf(text.data(), text.size(), spec.c_str(), value);
  text.pop_back();
  return text;
}

/// `pattern`: 'a' stands for a letter, '0' for a digit or a blank, anything else for itself.
bool Matches(std::string_view text, std::string_view pattern) {
  if (text.size() != pattern.size()) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    const bool fits = pattern[i] == 'a'   ? std::isalpha(c) != 0
                      : pattern[i] == '0' ? std::isdigit(c) != 0 || c == ' '
                                          : text[i] == pattern[i];
    if (!fits) return false;
  }
  return true;
}

std::string PrintText(const std::string& spec, const char* text) {
  std::string printed = Print(spec, text == nullptr ? "(null)" : text);
  if (Matches(printed, "aaa 00 0000")) return "<date>";
  if (Matches(printed, "00:00:00")) return "<time>";
  return printed;
}

std::string PrintHex(const std::string& spec, unsigned int value) {
  const std::string name = NameOfLowBits(value);
  return name.empty() ? Print(spec, value) : name;
}

std::string PrintPointer(const std::string& spec, const void* value) {
  const std::string name = NameOfAddress(value);
  return name.empty() ? Print(spec, value) : "<" + name + ">";
}

}  // namespace

std::string MaskedFormat(const char* format, va_list arguments) {
  std::string text;
  while (*format != '\0') {
    if (*format != '%') {
      text += *format++;
      continue;
    }
    std::string spec(1, *format++);
    while (*format != '\0' && std::strchr("-+ #0123456789.", *format) != nullptr) spec += *format++;
    size_t longs = 0;
    while (*format == 'l' || *format == 'z') {
      longs += 1;
      spec += *format++;
    }
    const char conversion = *format == '\0' ? '%' : *format++;
    spec += conversion;
    switch (conversion) {
      case 'd':
      case 'i':
        text += longs != 0 ? Print(spec, va_arg(arguments, long)) : Print(spec, va_arg(arguments, int));
        break;
      case 'x':
      case 'u':
        if (longs != 0) {
          text += Print(spec, va_arg(arguments, unsigned long));
        } else if (conversion == 'x') {
          text += PrintHex(spec, va_arg(arguments, unsigned int));
        } else {
          text += Print(spec, va_arg(arguments, unsigned int));
        }
        break;
      case 'c':
        text += Print(spec, va_arg(arguments, int));
        break;
      case 'f':
      case 'g':
        text += Print(spec, va_arg(arguments, double));
        break;
      case 's':
        text += PrintText(spec, va_arg(arguments, const char*));
        break;
      case 'p':
        text += PrintPointer(spec, va_arg(arguments, void*));
        break;
      case '%':
        text += '%';
        break;
      default:
        text += "<conversion " + spec + " is not known to the kit>";
        return text;
    }
  }
  return text;
}

}  // namespace kit
