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
  // INT_MAX itself is no float; the next one above it is the first that does not fit.
  constexpr float kBeyond = -static_cast<float>(std::numeric_limits<int>::min());
  if (value >= kBeyond) {
    return std::numeric_limits<int>::max();
  }
  if (value <= -kBeyond) {
    return std::numeric_limits<int>::min();
  }
  return static_cast<int>(value);
}

/// `from`, at least 0, less `amount`; a difference beyond int becomes the nearest int.
inline int SubtractToInt(int from, int amount) {
  const int64_t difference = int64_t{from} - amount;
  return static_cast<int>(std::min<int64_t>(difference, std::numeric_limits<int>::max()));
}

}  // namespace olm

#endif
