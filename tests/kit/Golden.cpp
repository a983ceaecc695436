// SPDX-License-Identifier: Apache-2.0
#include "tests/kit/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <sstream>

#include "tests/kit/Journal.h"
#include "tests/kit/Workers.h"

namespace kit {
namespace {

constexpr std::string_view kHeading = "== ";
constexpr int kDeepestInclude = 8;
constexpr size_t kContext = 3;

std::string FileName(const std::string& folder, const std::string& operation) {
  return folder + "/" + operation + ".txt";
}

std::string ReadText(const std::string& file) {
  std::ifstream stream(file);
  std::stringstream text;
  text << stream.rdbuf();
  return text.str();
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

bool IsHeading(const std::string& line) {
  return line.starts_with(kHeading);
}
bool IsHeadingOf(const std::string& line, const std::string& path) {
  return IsHeading(line) && line.substr(kHeading.size()) == path;
}

void AppendSection(std::vector<std::string>& out, const std::string& folder, const std::string& operation,
                   const std::string& path, int depth) {
  const auto lines = Lines(ReadText(FileName(folder, operation)));
  auto line = std::find_if(lines.begin(), lines.end(), [&path](const auto& l) { return IsHeadingOf(l, path); });
  if (line == lines.end() || depth > kDeepestInclude) {
    out.push_back("there is no section \"" + path + "\" in " + operation + ".txt");
    return;
  }
  for (++line; line != lines.end() && !IsHeading(*line); ++line) {
    if (line->empty() || line->front() == '#') continue;
    if (!line->starts_with("@ ")) {
      out.push_back(*line);
      continue;
    }
    const std::string target = line->substr(2);
    const size_t colon = target.find(": ");
    const bool elsewhere = colon != target.npos;
    AppendSection(out, folder, elsewhere ? target.substr(0, colon) : operation,
                  elsewhere ? target.substr(colon + 2) : target, depth + 1);
  }
}

/// Length of the longest common subsequence of the tails that begin at [i] and [j].
std::vector<std::vector<size_t>> CommonTails(const std::vector<std::string>& a, const std::vector<std::string>& b) {
  std::vector<std::vector<size_t>> common(a.size() + 1, std::vector<size_t>(b.size() + 1, 0));
  for (size_t i = a.size(); i-- > 0;) {
    for (size_t j = b.size(); j-- > 0;) {
      common[i][j] = a[i] == b[j] ? common[i + 1][j + 1] + 1 : std::max(common[i + 1][j], common[i][j + 1]);
    }
  }
  return common;
}

/// Leaves `kContext` equal lines around each difference.
std::string Shortened(const std::vector<std::string>& lines) {
  std::string text;
  size_t hidden = 0;
  for (size_t i = 0; i < lines.size(); ++i) {
    const size_t first = i < kContext ? 0 : i - kContext;
    const size_t last = std::min(lines.size(), i + kContext + 1);
    const bool near = std::any_of(lines.begin() + static_cast<long>(first), lines.begin() + static_cast<long>(last),
                                  [](const std::string& line) { return line[0] != ' '; });
    if (near && hidden != 0) text += "  ... " + std::to_string(hidden) + " equal lines\n";
    if (near) text += lines[i] + "\n";
    hidden = near ? 0 : hidden + 1;
  }
  return text;
}

void Compare(const std::string& operation, const std::string& path, const std::vector<std::string>& happened) {
  const std::string folder = KIT_GOLDEN_FOLDER;
  if (const char* update = std::getenv("UPDATE_GOLDEN"); update != nullptr && std::string_view(update) == "1") {
    const std::string file = FileName(folder, operation);
    const std::string text = WithSection(ReadText(file), path, happened);
    std::ofstream(file) << text;
    return;
  }
  const auto expected = ReadSection(folder, operation, path);
  if (expected == happened) return;
  ADD_FAILURE() << operation << ", " << path << ": the sequence differs (- expected, + happened)\n"
                << Diff(expected, happened);
}

}  // namespace

std::vector<std::string> ReadSection(const std::string& folder, const std::string& operation, const std::string& path) {
  std::vector<std::string> lines;
  AppendSection(lines, folder, operation, path, 0);
  return lines;
}

std::string WithSection(const std::string& text, const std::string& path, const std::vector<std::string>& lines) {
  std::string result;
  bool inside = false;
  bool written = false;
  const auto write = [&] {
    result += std::string(kHeading) + path + "\n";
    for (const auto& line : lines) result += line + "\n";
    written = true;
  };
  for (const auto& line : Lines(text.empty() ? "# SPDX-License-Identifier: Apache-2.0\n" : text)) {
    if (IsHeading(line)) {
      if (inside) result += "\n";
      inside = IsHeadingOf(line, path);
      if (inside) write();
    }
    if (!inside) result += line + "\n";
  }
  if (!written) {
    result += "\n";
    write();
  }
  return result;
}

std::string Diff(const std::vector<std::string>& expected, const std::vector<std::string>& happened) {
  const auto common = CommonTails(expected, happened);
  std::vector<std::string> lines;
  size_t i = 0;
  size_t j = 0;
  while (i < expected.size() || j < happened.size()) {
    if (i < expected.size() && j < happened.size() && expected[i] == happened[j]) {
      lines.push_back("  " + expected[i]);
      ++i;
      ++j;
    } else if (j == happened.size() || (i < expected.size() && common[i + 1][j] >= common[i][j + 1])) {
      lines.push_back("- " + expected[i++]);
    } else {
      lines.push_back("+ " + happened[j++]);
    }
  }
  return Shortened(lines);
}

void ExpectGolden(const std::string& operation, const std::string& path) {
  Compare(operation, path, Entries(Track::kMain));
}

void ExpectWorkerGolden(const std::string& operation, const std::string& path) {
  EXPECT_TRUE(AwaitWorkers()) << "a worker does not return";
  Compare(operation, path + " [worker]", Entries(Track::kWorker));
}

}  // namespace kit
