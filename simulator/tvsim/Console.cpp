// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/Console.h"

#include <cstdio>

namespace sim::tvsim {
namespace {

std::string Printable(const std::string& text) {
  std::string printable;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte < 0x20 && c != '\n') || byte == 0x7F) {
      char escaped[5];
      std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
      printable += escaped;
    } else {
      printable += c;
    }
  }
  return printable;
}

}  // namespace

void Complain(const std::string& text) {
  std::fprintf(stderr, "tvsim: %s\n", Printable(text).c_str());
}

void Say(const std::string& text) {
  std::fprintf(stdout, "%s\n", Printable(text).c_str());
  std::fflush(stdout);
}

int Fail(ExitStatus status, const std::string& text) {
  Complain(text);
  return status;
}

}  // namespace sim::tvsim
