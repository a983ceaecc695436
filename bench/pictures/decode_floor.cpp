// SPDX-License-Identifier: Apache-2.0
/// decode_floor FILE...: opens and draws each JPEG into a 1920 x 1080 window as the library does, beside the floor:
/// libjpeg-turbo alone, the same scale, no pixel looked at. Both by turns in one process, the medians of both; one line
/// a file. What was read once comes from the system's cache for both.
#include <fcntl.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/pictures/JpegFloor.h"
#include "simulator/base/UniqueFd.h"
#include "simulator/lumaview/image/Render.h"

using namespace sim;
using namespace sim::lumaview;

namespace {

constexpr Size kWindow{1920, 1080};
constexpr int kRounds = 11;

struct Spent {
  double wall_ms = 0;
  double cpu_ms = 0;
};

double Milliseconds(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

template <typename Work>
Spent Measure(Work work) {
  const double wall = Milliseconds(CLOCK_MONOTONIC);
  const double cpu = Milliseconds(CLOCK_PROCESS_CPUTIME_ID);
  work();
  return {Milliseconds(CLOCK_MONOTONIC) - wall, Milliseconds(CLOCK_PROCESS_CPUTIME_ID) - cpu};
}

double Median(std::vector<Spent> spent, double Spent::*which) {
  std::sort(spent.begin(), spent.end(), [which](const Spent& a, const Spent& b) { return a.*which < b.*which; });
  return spent[spent.size() / 2].*which;
}

bool Ours(const char* path, ImageView window) {
  const UniqueFd file(open(path, O_RDONLY | O_CLOEXEC));
  const std::atomic<bool> cancelled{false};
  Source source(file.Get(), GetLimits(), cancelled);
  const Result<std::unique_ptr<Decoder>> decoder = OpenPicture(source);
  return decoder && RenderFrame(**decoder, {}, window);
}

void Compare(const char* path) {
  std::vector<uint32_t> pixels(static_cast<size_t>(kWindow.width) * static_cast<size_t>(kWindow.height));
  const ImageView window{pixels.data(), kWindow.width, kWindow.height, kWindow.width};
  std::vector<Spent> floor;
  std::vector<Spent> ours;
  bool is_good = true;
  for (int round = 0; round < kRounds; ++round) {
    floor.push_back(Measure([&] { is_good = bench::DecodeJpegFloor(path, kWindow) && is_good; }));
    ours.push_back(Measure([&] { is_good = Ours(path, window) && is_good; }));
  }
  const double floor_ms = Median(floor, &Spent::wall_ms);
  const double ours_ms = Median(ours, &Spent::wall_ms);
  std::printf("%-28s floor %7.1f ms (cpu %7.1f)  ours %7.1f ms (cpu %7.1f)  %.2f times%s\n", path, floor_ms,
              Median(floor, &Spent::cpu_ms), ours_ms, Median(ours, &Spent::cpu_ms), ours_ms / floor_ms,
              is_good ? "" : "  FAILED");
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    Compare(argv[i]);
  }
  return argc > 1 ? 0 : 2;
}
