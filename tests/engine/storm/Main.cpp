// SPDX-License-Identifier: Apache-2.0
/// Command line of the storms against the doubles.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "tests/engine/storm/Storm.h"
#include "tests/kit/Journal.h"
#include "tests/kit/World.h"

// The world's parts that a storm replaces have nothing to be made anew.
namespace kit {
void ResetGlib() {}
void ResetVconf() {}
}  // namespace kit

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
