// SPDX-License-Identifier: Apache-2.0
/// Engine after engine: "InitPlayer", an end at once, and nothing may remain but the workers' loops.
#include <malloc.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include "tests/engine/storm/Keys.h"
#include "tests/engine/storm/Storm.h"
#include "tests/kit/Journal.h"
#include "tests/kit/Names.h"
#include "tests/kit/Workers.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMemoryIsCounted = false;  // these allocators keep no such count; the leak check stands for it
#else
constexpr bool kMemoryIsCounted = true;
#endif

namespace storm {
namespace {

constexpr size_t kWarmUp = 200;
constexpr size_t kLoopBytes = 96;  ///< a GMainLoop with what the allocator adds, generously
constexpr size_t kSlackBytes = 256 * 1024;

size_t Threads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return static_cast<size_t>(std::distance(begin(tasks), end(tasks)));
}

/// A detached thread is listed for a moment after its function has returned.
bool AwaitThreads(size_t expected) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (Threads() > expected && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
  return Threads() <= expected;
}

size_t BytesInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void Round(Random& random) {
  auto engine = std::make_unique<olm::CEmpEnginePicture>();
  Check(Send(*engine, "InitPlayer", "/pictures/a.jpg") == "1", "InitPlayer fails");
  switch (Pick(random, 4)) {
    case 0:
      Check(Send(*engine, "Stop") == "1", "Stop fails");
      break;
    case 1:
      Check(SetKey(engine.get(), "destroy"), "the key is not followed");
      Check(AwaitDeliveries(engine.get()), "a key is not delivered");
      Check(engine->GetAdapter() == nullptr, "the adapter outlives its destruction");
      Check(Send(*engine, "Play", "/pictures/a.jpg") == "0", "a command finds an adapter that is gone");
      break;
    case 2:
      SetKey(engine.get(), "destroy");
      break;
    default:
      break;
  }
  StopDeliveries(engine.get());
}

}  // namespace

bool Rounds(size_t rounds, unsigned int seed) {
  Watchdog watchdog("rounds");
  Random random(seed);
  const size_t failedBefore = FailedChecks();
  const size_t violationsBefore = kit::Violations();
  const size_t threadsBefore = Threads();
  const kit::WorkerCounts before = kit::CountWorkers();
  size_t bytesBefore = BytesInUse();
  for (size_t round = 0; round < rounds; ++round) {
    Round(random);
    watchdog.Progress();
    if (round + 1 == kWarmUp) {
      Check(kit::AwaitWorkers(), "a worker of the first rounds does not return");
      bytesBefore = BytesInUse();
    }
  }
  Check(kit::AwaitWorkers(), "a worker does not return");
  Check(AwaitThreads(threadsBefore), "threads remain: " + std::to_string(Threads()));
  const kit::WorkerCounts after = kit::CountWorkers();
  Check(after.started - before.started == rounds, "another number of workers than of rounds");
  Check(after.returned == after.started, "not every worker has returned");
  Check(after.joined + after.detached == after.started, "a worker was neither joined nor detached, or both");
  Check(kit::Alive(kit::Kind::kDisplay) + kit::Alive(kit::Kind::kWindow) + kit::Alive(kit::Kind::kGC) == 0,
        "something of the X server remains");
  Check(kit::Alive(kit::Kind::kPicture) + kit::Alive(kit::Kind::kEffect) + kit::Alive(kit::Kind::kBlock) == 0,
        "a picture, an effect or a block remains");
  if (kMemoryIsCounted && rounds > kWarmUp) {
    const size_t bytes = BytesInUse();
    const size_t allowed = bytesBefore + (rounds - kWarmUp) * kLoopBytes + kSlackBytes;
    Check(bytes <= allowed, "memory remains: " + std::to_string(bytes - bytesBefore) + " bytes");
  }
  return FailedChecks() == failedBefore && kit::Violations() == violationsBefore;
}

}  // namespace storm
