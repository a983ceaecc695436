// SPDX-License-Identifier: Apache-2.0
#include "bench/effects_xfade.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <vector>

#include "bench/effects_measure.h"

extern char** environ;

namespace bench {
namespace {

using sim::lumaview::Size;

constexpr int kFrameRate = 25;
constexpr int kRounds = 2;
/// An offset that the graph never reaches: the filter hands the first picture through.
constexpr int kNever = 100;

/// Both inputs are one frame that the loop filter holds, so that neither is made anew.
std::string Graph(Size size, const std::string& transition, int offset) {
  const std::string shape =
      "=s=" + std::to_string(size.width) + "x" + std::to_string(size.height) + ":r=" + std::to_string(kFrameRate);
  const std::string hold = ",format=gbrp,trim=end_frame=1,loop=loop=-1:size=1,setpts=N/" + std::to_string(kFrameRate) +
                           "/TB,fps=" + std::to_string(kFrameRate);
  return "testsrc2" + shape + hold + "[a];testsrc" + shape + hold + "[b];[a][b]xfade=transition=" + transition +
         ":duration=" + std::to_string(static_cast<double>(kProgresses) / kFrameRate) +
         ":offset=" + std::to_string(offset);
}

double Milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) * 1e-3;
}

/// Processor time of one run; nothing when it failed.
std::optional<double> RunGraph(std::string graph) {
  std::vector<std::string> words = {"ffmpeg",
                                    "-v",
                                    "quiet",
                                    "-nostdin",
                                    "-threads",
                                    "1",
                                    "-filter_complex_threads",
                                    "1",
                                    "-filter_complex",
                                    std::move(graph),
                                    "-frames:v",
                                    std::to_string(kProgresses),
                                    "-f",
                                    "null",
                                    "-"};
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  pid_t child = 0;
  int status = 0;
  rusage used{};
  if (posix_spawnp(&child, "ffmpeg", nullptr, nullptr, arguments.data(), environ) != 0 ||
      wait4(child, &status, 0, &used) != child || status != 0) {
    return std::nullopt;
  }
  return Milliseconds(used.ru_utime) + Milliseconds(used.ru_stime);
}

/// As with the effects: what else the machine does makes a run longer, never shorter.
std::optional<double> FastestRun(const std::string& graph) {
  std::optional<double> fastest;
  for (int round = 0; round < kRounds; ++round) {
    const auto time = RunGraph(graph);
    if (!time) {
      return std::nullopt;
    }
    fastest = fastest ? std::min(*fastest, *time) : *time;
  }
  return fastest;
}

}  // namespace

Xfade::Xfade(Size size) : m_size(size), m_around(FastestRun(Graph(size, "fade", kNever))) {}

std::optional<double> Xfade::Measure(const std::string& transition) const {
  const auto time = FastestRun(Graph(m_size, transition, 0));
  if (!time || !m_around) {
    return std::nullopt;
  }
  return (*time - *m_around) / kProgresses;
}

}  // namespace bench
