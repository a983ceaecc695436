// SPDX-License-Identifier: Apache-2.0
#ifndef ADAPTER_TRUNCATE_H
#define ADAPTER_TRUNCATE_H

#include <algorithm>
#include <cstdint>
#include <limits>

namespace olm {

/// `value` cut toward zero; a value beyond int becomes the nearest int, what is no number becomes 0.
inline int TruncateToInt(float value) {
  if (value != value) {
    return 0;
  }
  // A double holds every int, a float does not.
  using Int = std::numeric_limits<int>;
  return static_cast<int>(std::clamp<double>(value, Int::min(), Int::max()));
}

/// `from`, at least 0, less `amount`; a difference beyond int becomes the nearest int.
inline int SubtractToInt(int from, int amount) {
  const int64_t difference = int64_t{from} - amount;
  return static_cast<int>(std::min<int64_t>(difference, std::numeric_limits<int>::max()));
}

}  // namespace olm

#endif
