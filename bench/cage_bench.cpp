// SPDX-License-Identifier: Apache-2.0
/// cage_bench [-r ROUNDS] FILE...: what a process of its own costs a picture. Each is opened and drawn for a window of
/// 1920 x 1080 in this process and in the cage, by turns; the medians, the least of each, and the bar: 3 % or 1 ms more
/// at most, whichever is more, in the median of the pairs. Exit status: 1 when a picture is over the bar or fails.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "simulator/lumaview/cage/Cage.h"
#include "simulator/lumaview/picture/FrameStream.h"

using namespace sim;
using namespace sim::lumaview;

namespace {

constexpr Size kWindow{1920, 1080};
constexpr double kMoreMilliseconds = 1;
constexpr double kMorePart = 0.03;

using Opener = std::function<Result<std::unique_ptr<FrameStream>>(PictureFilePtr, CancelFlag)>;

/// Milliseconds from the file to the frame; negative when there is none.
double Measure(const char* path, const Opener& open) {
  const auto begin = std::chrono::steady_clock::now();
  const auto file = PictureFile::Open(path);
  const auto stream = file ? open(*file, std::make_shared<Cancellation>()) : file.error();
  const auto frame = stream ? (*stream)->RenderNext(View{}, kWindow) : stream.error();
  const std::chrono::duration<double, std::milli> spent = std::chrono::steady_clock::now() - begin;
  if (!frame) {
    std::printf("%s: %s\n", path, frame.error().reason.c_str());
    return -1;
  }
  return spent.count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

bool Compare(const char* path, int rounds) {
  std::vector<double> local;
  std::vector<double> caged;
  std::vector<double> more;
  for (int round = 0; round < rounds; ++round) {
    local.push_back(Measure(path, OpenLocalStream));
    caged.push_back(Measure(path, [](PictureFilePtr file, CancelFlag cancelled) {
      return OpenCagedStream(*GetCage(), std::move(file), std::move(cancelled));
    }));
    more.push_back(caged.back() - local.back());
    // A slide show leaves time between pictures, in which the next process is made.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  const bool fails = std::ranges::min(local) < 0 || std::ranges::min(caged) < 0;
  // Of the pairs' differences: what the machine does meanwhile meets both of a pair.
  const bool good = !fails && Median(more) <= std::max(Median(local) * kMorePart, kMoreMilliseconds);
  std::printf("%-8s median %8.2f ms, caged %8.2f ms (%+.2f)  least %8.2f, %8.2f  %s\n",
              fails  ? "FAILS"
              : good ? "ok"
                     : "OVER",
              Median(local), Median(caged), Median(more), *std::min_element(local.begin(), local.end()),
              *std::min_element(caged.begin(), caged.end()), path);
  return good;
}

}  // namespace

int main(int argc, char** argv) {
  int first = 1;
  int rounds = 21;
  if (argc > 2 && std::string(argv[1]) == "-r") {
    rounds = std::max(1, std::atoi(argv[2]));
    first = 3;
  }
  setenv("LUMAVIEW_CAGE", "on", 1);
  StartCage();
  if (first >= argc || GetCage() == nullptr) {
    std::fprintf(stderr, "usage: cage_bench [-r ROUNDS] FILE...\n");
    return 2;
  }
  bool good = true;
  for (int i = first; i < argc; ++i) {
    good = Compare(argv[i], rounds) && good;
  }
  StopCage();
  return good ? 0 : 1;
}
