// SPDX-License-Identifier: Apache-2.0
/// Counts of the threads that the engine makes.
#ifndef TESTS_KIT_WORKERS_H
#define TESTS_KIT_WORKERS_H

#include <chrono>
#include <cstddef>

namespace kit {

struct WorkerCounts {
  size_t started;
  size_t returned;
  size_t joined;
  size_t detached;
};

WorkerCounts CountWorkers();

/// Waits until every worker's function has returned; false when `limit` passes first.
bool AwaitWorkers(std::chrono::milliseconds limit = std::chrono::seconds(20));

}  // namespace kit

#endif
