// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/LogTail.h"

#include <cctype>
#include <filesystem>
#include <fstream>

namespace sim::tvsim {
namespace {

constexpr std::streamoff kEndToRead = 64 * 1024;

/// A log may go to a device, which cannot be read or has no end.
std::ifstream OpenLog(const std::string& file) {
  std::error_code none;
  return std::filesystem::is_regular_file(file, none) ? std::ifstream(file, std::ios::binary) : std::ifstream();
}

}  // namespace

std::string WithoutColours(const std::string& text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\033' || i + 1 == text.size() || text[i + 1] != '[') {
      plain += text[i];
      continue;
    }
    for (i += 2; i < text.size() && std::isalpha(static_cast<unsigned char>(text[i])) == 0; ++i) {
    }
  }
  return plain;
}

bool HasLineWith(const std::string& file, const std::string& text) {
  std::ifstream log = OpenLog(file);
  for (std::string line; std::getline(log, line);) {
    if (WithoutColours(line).find(text) != std::string::npos) {
      return true;
    }
  }
  return false;
}

std::vector<std::string> LastLines(const std::string& file, size_t count) {
  std::ifstream log = OpenLog(file);
  log.seekg(0, std::ios::end);
  const std::streamoff size = log.tellg();
  if (size <= 0) {
    return {};
  }
  log.seekg(size > kEndToRead ? size - kEndToRead : 0);
  std::vector<std::string> lines;
  for (std::string line; std::getline(log, line);) {
    if (!line.empty()) {
      lines.push_back(WithoutColours(line));
    }
  }
  if (lines.size() > count) {
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(count));
  }
  return lines;
}

}  // namespace sim::tvsim
