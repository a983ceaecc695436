// SPDX-License-Identifier: Apache-2.0
#include "bench/effects_measure.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <thread>

#include "bench/effects_limit.h"
#include "simulator/lumaview/effect/Effect.h"

namespace bench {
namespace {

using sim::lumaview::DrawEffect;
using sim::lumaview::ImageView;
using sim::lumaview::Size;

constexpr int kRounds = 3;

/// Processor time, so that what else the machine does counts as little as possible.
double ThreadMilliseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

template <typename Work>
double Time(const Work& work) {
  const double start = ThreadMilliseconds();
  work();
  return ThreadMilliseconds() - start;
}

uint32_t* MapFrame(size_t bytes) {
  const int fd = memfd_create("frame", MFD_CLOEXEC);
  void* pixels = MAP_FAILED;
  if (fd >= 0 && ftruncate(fd, static_cast<off_t>(bytes)) == 0) {
    pixels = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, fd, 0);
    close(fd);
  }
  if (pixels == MAP_FAILED) {
    std::abort();
  }
  return static_cast<uint32_t*>(pixels);
}

size_t LargestCache() {
  constexpr long kWhereUnknown = 32 << 20;
  const long bytes = sysconf(_SC_LEVEL3_CACHE_SIZE);
  return static_cast<size_t>(std::max(bytes, kWhereUnknown));
}

}  // namespace

double MedianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

FrameMemory::FrameMemory(Size size)
    : m_size(size),
      m_bytes(static_cast<size_t>(size.width) * static_cast<size_t>(size.height) * sizeof(uint32_t)),
      m_pixels(MapFrame(m_bytes)) {}

void FrameMemory::FillWithNoise(uint32_t seed) {
  for (size_t i = 0; i < m_bytes / sizeof(uint32_t); ++i) {
    seed = seed * 1664525U + 1013904223U;
    m_pixels[i] = 0xFF000000U | (seed >> 8);
  }
}

Workplace::Workplace(Size size) : m_size(size), m_from(size), m_to(size), m_other_memory(2 * LargestCache()) {
  m_from.FillWithNoise(1);
  m_to.FillWithNoise(2);
  for (auto& target : m_targets) {
    target = std::make_unique<FrameMemory>(size);
  }
}

ImageView Workplace::NextTarget() {
  m_next = (m_next + 1) % m_targets.size();
  return m_targets[m_next]->View();
}

void Workplace::EmptyCache() {
  constexpr size_t kCacheLine = 64;
  for (size_t i = 0; i < m_other_memory.size(); i += kCacheLine) {
    ++m_other_memory[i];
  }
}

double Workplace::Fastest(const std::function<double()>& measure) {
  double fastest = measure();
  for (int round = 1; round < kRounds; ++round) {
    fastest = std::min(fastest, measure());
  }
  return fastest;
}

double Workplace::MeasureLimit() {
  const double cached = Fastest([this] { return Time([this] { AverageThroughCache(From(), To(), NextTarget()); }); });
  const double streaming = Fastest([this] { return Time([this] { AverageStreaming(From(), To(), NextTarget()); }); });
  return std::min(cached, streaming);
}

double Workplace::MeasureEffect(int effect) {
  std::vector<double> values;
  for (int step = 0; step < kProgresses; ++step) {
    const auto draw = [&] { DrawEffect(effect, From(), To(), ProgressAt(step), NextTarget(), 0, m_size.height); };
    values.push_back(Fastest([&] { return Time(draw); }));
  }
  return MedianOf(values);
}

double Workplace::MeasureEffectUncached(int effect) {
  std::vector<double> values;
  for (int step = 0; step < kProgresses; ++step) {
    const auto draw = [&] { DrawEffect(effect, From(), To(), ProgressAt(step), NextTarget(), 0, m_size.height); };
    values.push_back(Fastest([&] {
      EmptyCache();
      return Time(draw);
    }));
  }
  return MedianOf(values);
}

double Workplace::MeasureEffectOnTwo(int effect) {
  std::vector<double> values;
  for (int step = 0; step < kProgresses; ++step) {
    values.push_back(Fastest([&] {
      const ImageView target = NextTarget();
      const auto band = [&](int first, int last) {
        return Time([&] { DrawEffect(effect, From(), To(), ProgressAt(step), target, first, last); });
      };
      double lower = 0;
      std::thread other([&] { lower = band(m_size.height / 2, m_size.height); });
      const double upper = band(0, m_size.height / 2);
      other.join();
      return std::max(upper, lower);
    }));
  }
  return MedianOf(values);
}

}  // namespace bench
