// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_ANIMATE_EFFECTCHOOSER_H
#define SIMULATOR_LUMAVIEW_ANIMATE_EFFECTCHOOSER_H

#include <array>
#include <mutex>
#include <random>

#include "simulator/lumaview/effect/Effect.h"

namespace sim::lumaview {

/// Deals out effects when the caller leaves the choice to the library: each once, in random order, then again in
/// another order; never the same one twice in a row. Thread-safe.
class EffectChooser {
 public:
  explicit EffectChooser(unsigned int seed) : m_random(seed) {}

  /// 0 to kEffectCount - 1.
  int Choose();

 private:
  void Shuffle();

  std::mutex m_mutex;
  std::minstd_rand m_random;
  std::array<int, kEffectCount> m_deck{};
  size_t m_dealt = kEffectCount;  ///< of the deck; all = shuffle first
};

}  // namespace sim::lumaview

#endif
