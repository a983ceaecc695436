// SPDX-License-Identifier: Apache-2.0
#include "tests/lumaview/PictureSet.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "simulator/base/UniqueFd.h"

namespace sim::lumaview::test {
namespace {

/// Only a picture that never ends takes this long, also on a busy machine under a sanitizer.
constexpr std::chrono::seconds kHungAfter{120};

/// Path, bytes, hash, expected outcome, width, height, frames; empty ones at the end of a line are not written.
constexpr size_t kColumns = 7;

int ToNumber(const std::string& text) {
  return text.empty() ? 0 : std::atoi(text.c_str());
}

std::vector<std::string> SplitAtTabs(const std::string& line) {
  std::vector<std::string> columns;
  std::istringstream stream(line);
  for (std::string column; std::getline(stream, column, '\t');) {
    columns.push_back(column);
  }
  columns.resize(std::max<size_t>(columns.size(), kColumns));
  return columns;
}

/// Reads all that comes until the writer is gone; false when that takes too long.
bool ReadToEnd(int fd, std::string& text) {
  const auto deadline = std::chrono::steady_clock::now() + kHungAfter;
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd readable{fd, POLLIN, 0};
    if (left.count() <= 0 || poll(&readable, 1, static_cast<int>(left.count())) == 0) {
      return false;
    }
    char buffer[4096];
    const ssize_t got = read(fd, buffer, sizeof buffer);
    if (got <= 0) {
      return true;
    }
    text.append(buffer, static_cast<size_t>(got));
  }
}

/// The last line is the outcome; some libraries write lines of their own before it.
std::string LastLine(std::string text) {
  while (!text.empty() && text.back() == '\n') {
    text.pop_back();
  }
  const size_t end = text.rfind('\n');
  return end == std::string::npos ? text : text.substr(end + 1);
}

void ReadOutcome(ShownPicture& picture) {
  std::istringstream words(LastLine(picture.output));
  std::string kind;
  int loops = 0;
  long milliseconds = 0;
  words >> kind;
  if (kind == "show") {
    words >> picture.type >> picture.width >> picture.height >> picture.frames >> loops >> milliseconds >>
        picture.own_kibibytes >> picture.kibibytes;
    picture.kind = ShownPicture::Kind::kShown;
  } else if (kind == "refuse") {
    words >> picture.error >> milliseconds >> picture.own_kibibytes >> picture.kibibytes;
    picture.kind = ShownPicture::Kind::kRefused;
  }
}

}  // namespace

std::string PicturesFolder() {
  const char* folder = std::getenv("PICTURES_DIR");
  return folder != nullptr && *folder != '\0' ? folder : SMALL_PICTURES_FOLDER;
}

std::vector<ListedPicture> ReadManifest(const std::string& folder, const std::string& format) {
  std::vector<ListedPicture> pictures;
  std::ifstream file(folder + "/MANIFEST.tsv");
  for (std::string line; std::getline(file, line);) {
    const std::vector<std::string> columns = SplitAtTabs(line);
    if (columns[0].find('/' + format + '/') == std::string::npos) {
      continue;
    }
    pictures.push_back({columns[0], columns[3], ToNumber(columns[4]), ToNumber(columns[5]), ToNumber(columns[6])});
  }
  return pictures;
}

ShownPicture ShowInProcess(const std::string& path, int width, int height, const std::string& ppm) {
  std::vector<std::string> words = {PICTURE_OUTCOME, path, std::to_string(width), std::to_string(height)};
  if (!ppm.empty()) {
    words.push_back(ppm);
  }
  std::vector<char*> argv;
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  int ends[2] = {-1, -1};
  ShownPicture picture;
  if (pipe2(ends, O_CLOEXEC) != 0) {
    return picture;
  }
  const UniqueFd output(ends[0]);
  UniqueFd input(ends[1]);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input.Get(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, input.Get(), STDERR_FILENO);
  pid_t child = -1;
  const int spawned = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  input.Reset();
  if (spawned != 0) {
    return picture;
  }
  const bool is_over = ReadToEnd(output.Get(), picture.output);
  if (!is_over) {
    kill(child, SIGKILL);
  }
  int status = -1;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  picture.cpu_seconds = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                        static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
  if (!is_over) {
    picture.kind = ShownPicture::Kind::kHung;
  } else if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
    ReadOutcome(picture);
  }
  return picture;
}

}  // namespace sim::lumaview::test
