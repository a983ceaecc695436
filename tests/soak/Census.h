// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SOAK_CENSUS_H
#define TESTS_SOAK_CENSUS_H

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace soak {

/// What a process and its children hold at one moment.
struct Census {
  int64_t anonymous_bytes = 0;  ///< of all of them; changes from moment to moment
  // What must be the same whenever the same stands on the screen:
  int processes = 0;
  int threads = 0;
  std::map<std::string, int> descriptors;  ///< how many of each kind: what they refer to, without its number
  int shared_mappings = 0;  ///< of shared memory, each mapping once
  int x_resources = 0;      ///< of every client of the X server

  /// All the same, but for the memory.
  bool HoldsTheSameAs(const Census& other) const;
  std::string Text() const;
};

/// The descriptors of which there are more or fewer than before, as text; empty where they are the same.
std::string DescriptorChanges(const Census& before, const Census& now);

/// Of `pid` and everything below it, and of the X server on DISPLAY.
Census Take(pid_t pid);

/// The median of the slopes between any two points (Theil and Sen), in units of `values` a step.
double MedianSlope(const std::vector<double>& steps, const std::vector<double>& values);

}  // namespace soak

#endif
