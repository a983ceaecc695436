// SPDX-License-Identifier: Apache-2.0
/// Command line and what the storms share.
#include "tests/engine/storm/Storm.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "tests/kit/Journal.h"
#include "tests/kit/World.h"

// The world's parts that a storm replaces have nothing to be made anew.
namespace kit {
void ResetGlib() {}
void ResetVconf() {}
}  // namespace kit

namespace storm {
namespace {

constexpr std::chrono::seconds kDeadlock{120};
std::atomic<size_t> g_failedChecks{0};

}  // namespace

bool Check(bool holds, const std::string& what) {
  if (!holds) {
    ++g_failedChecks;
    std::fprintf(stderr, "storm: %s\n", what.c_str());
  }
  return holds;
}

size_t FailedChecks() {
  return g_failedChecks;
}

std::string Send(olm::CEmpEnginePicture& engine, const std::string& command, const std::string& param1,
                 const std::string& param2, const std::string& param3, const std::string& param4) {
  std::string result;
  engine.Execute(result, command, param1, param2, param3, param4);
  return result;
}

Watchdog::Watchdog(const char* storm) : m_storm(storm), m_thread([this] { Watch(); }) {}

Watchdog::~Watchdog() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_over = true;
  }
  m_ends.notify_all();
  m_thread.join();
}

void Watchdog::Watch() {
  std::unique_lock<std::mutex> lock(m_mutex);
  size_t seen = 0;
  while (!m_ends.wait_for(lock, kDeadlock, [this] { return m_over; })) {
    const size_t steps = m_steps;
    if (steps == seen) {
      std::fprintf(stderr, "storm: %s hangs after %zu steps\n", m_storm, steps);
      std::abort();
    }
    seen = steps;
  }
}

}  // namespace storm

namespace {

struct Options {
  size_t rounds = 2000;
  size_t operations = 20000;
  unsigned int seed = 1;
};

bool Read(int argc, char** argv, Options& options) {
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string name = argv[i];
    const unsigned long value = std::strtoul(argv[i + 1], nullptr, 10);
    if (name == "--rounds") {
      options.rounds = value;
    } else if (name == "--operations") {
      options.operations = value;
    } else if (name == "--seed") {
      options.seed = static_cast<unsigned int>(value);
    } else {
      return false;
    }
  }
  return argc % 2 == 1;
}

bool Run(const char* name, size_t amount, const char* unit, const std::function<bool()>& storm) {
  const auto begin = std::chrono::steady_clock::now();
  const bool passed = storm();
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  std::printf("%-13s %zu %s in %.1f s: %s\n", name, amount, unit, took.count(), passed ? "passed" : "FAILED");
  std::fflush(stdout);
  return passed;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!Read(argc, argv, options)) {
    std::fprintf(stderr, "usage: storm [--rounds N] [--operations N] [--seed N]\n");
    return 2;
  }
  std::printf("seed %u\n", options.seed);
  kit::SetRecording(false);
  kit::world().screenWidth = 64;  // keeps the transparent images small
  kit::world().screenHeight = 36;
  bool passed = Run("rounds", options.rounds, "rounds", [&] { return storm::Rounds(options.rounds, options.seed); });
  passed &= Run("crossfire", options.operations, "operations",
                [&] { return storm::Crossfire(options.operations, options.seed); });
  passed &= Run("shared window", options.operations, "operations",
                [&] { return storm::SharedWindow(options.operations, options.seed); });
  return passed ? 0 : 1;
}
