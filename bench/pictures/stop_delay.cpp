// SPDX-License-Identifier: Apache-2.0
/// stop_delay FILE...: how long a decode goes on after nobody wants its picture any more. Decodes each file for a
/// window of 1920 x 1080 on a thread, drops the picture after 1/10, 3/10, 5/10, 7/10 and 9/10 of the time that the
/// whole takes, and prints the file, that time and the longest wait for the thread, in milliseconds.
#include <fcntl.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

#include "simulator/base/UniqueFd.h"
#include "simulator/lumaview/image/Render.h"

namespace {

using namespace sim;
using namespace sim::lumaview;

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr Size kWindow{1920, 1080};

bool Decode(const char* path, const std::atomic<bool>& cancelled) {
  std::vector<uint32_t> pixels(static_cast<size_t>(kWindow.width) * static_cast<size_t>(kWindow.height));
  const UniqueFd file(open(path, O_RDONLY | O_CLOEXEC));
  Source source(file.Get(), GetLimits(), cancelled);
  const Result<std::unique_ptr<Decoder>> decoder = OpenPicture(source);
  return decoder && RenderFrame(**decoder, {}, {pixels.data(), kWindow.width, kWindow.height, kWindow.width});
}

/// From the moment when the picture is dropped.
Milliseconds StopAfter(Milliseconds lead, const char* path) {
  std::atomic<bool> cancelled{false};
  std::thread decoding([&] { Decode(path, cancelled); });
  std::this_thread::sleep_for(lead);
  const auto dropped = Clock::now();
  cancelled = true;
  decoding.join();
  return Clock::now() - dropped;
}

bool Measure(const char* path) {
  const std::atomic<bool> wanted{false};
  Decode(path, wanted);  // reads the file and loads the library
  const auto begin = Clock::now();
  if (!Decode(path, wanted)) {
    return false;
  }
  const Milliseconds whole = Clock::now() - begin;
  Milliseconds longest{};
  for (const double part : {0.1, 0.3, 0.5, 0.7, 0.9}) {
    longest = std::max(longest, StopAfter(whole * part, path));
  }
  std::printf("%s %.1f %.1f\n", path, whole.count(), longest.count());
  std::fflush(stdout);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (!Measure(argv[i])) {
      std::fprintf(stderr, "stop_delay: %s cannot be decoded\n", argv[i]);
      return 1;
    }
  }
  return argc > 1 ? 0 : 2;
}
