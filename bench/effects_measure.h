// SPDX-License-Identifier: Apache-2.0
/// Milliseconds of processor time a frame, of the effects and of the memory limit.
#ifndef BENCH_EFFECTS_MEASURE_H
#define BENCH_EFFECTS_MEASURE_H

#include <sys/mman.h>

#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "simulator/lumaview/image/Image.h"

namespace bench {

/// The values of progress that everything is measured at: the middles of as many equal parts of 0..1.
inline constexpr int kProgresses = 20;
inline float ProgressAt(int step) {
  return (static_cast<float>(step) + 0.5F) / kProgresses;
}

/// One frame's memory, from memfd as the frames that the X server shares.
class FrameMemory {
 public:
  explicit FrameMemory(sim::lumaview::Size size);
  FrameMemory(const FrameMemory&) = delete;
  FrameMemory& operator=(const FrameMemory&) = delete;
  ~FrameMemory() { munmap(m_pixels, m_bytes); }

  sim::lumaview::ImageView View() const { return {m_pixels, m_size.width, m_size.height, m_size.width}; }
  void FillWithNoise(uint32_t seed);

 private:
  const sim::lumaview::Size m_size;
  const size_t m_bytes;
  uint32_t* m_pixels;
};

/// Two pictures and three targets in turn, so that no target is still in a near cache.
class Workplace {
 public:
  explicit Workplace(sim::lumaview::Size size);

  sim::lumaview::Size GetSize() const { return m_size; }
  /// The faster of plain and streaming stores.
  double MeasureLimit();
  /// On one core: the median over all values of progress.
  double MeasureEffect(int effect);
  /// On one core, each frame after the cache was emptied: a small picture finds nothing of itself there either, so
  /// that the sizes can be compared.
  double MeasureEffectUncached(int effect);
  /// On two: the slower of the upper and the lower half, drawn at the same time.
  double MeasureEffectOnTwo(int effect);

 private:
  sim::lumaview::ConstImageView From() const { return AsConst(m_from.View()); }
  sim::lumaview::ConstImageView To() const { return AsConst(m_to.View()); }
  sim::lumaview::ImageView NextTarget();
  void EmptyCache();
  /// Of some rounds: what else the machine does makes a round longer, never shorter.
  double Fastest(const std::function<double()>& measure);

  const sim::lumaview::Size m_size;
  FrameMemory m_from;
  FrameMemory m_to;
  std::array<std::unique_ptr<FrameMemory>, 3> m_targets;
  std::vector<uint8_t> m_other_memory;  ///< twice what the largest cache holds
  size_t m_next = 0;
};

/// Of any values, at least one.
double MedianOf(std::vector<double> values);

}  // namespace bench

#endif
