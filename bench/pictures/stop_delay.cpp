// SPDX-License-Identifier: Apache-2.0
/// stop_delay FILE...: how long a decode goes on after nobody wants its picture any more. Decodes each file for a
/// window of 1920 x 1080 on a thread, drops the picture after 1/10, 3/10, 5/10, 7/10 and 9/10 of the time that the
/// whole takes, and prints the file, that time and the longest wait for the thread, in milliseconds. Decoders run in
/// processes of their own as they do in the engine: LUMAVIEW_CAGE=off shows what each library does by itself.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>

#include "simulator/lumaview/cage/Cage.h"
#include "simulator/lumaview/picture/FrameStream.h"

namespace {

using namespace sim;
using namespace sim::lumaview;

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr Size kWindow{1920, 1080};

bool Decode(const char* path, const CancelFlag& cancelled) {
  const auto file = PictureFile::Open(path);
  if (!file) {
    return false;
  }
  const auto stream = FrameStream::Open(*file, cancelled);
  return stream && (*stream)->RenderNext(View{}, kWindow);
}

/// From the moment when the picture is dropped.
Milliseconds StopAfter(Milliseconds lead, const char* path) {
  const auto cancelled = std::make_shared<Cancellation>();
  std::thread decoding([&] { Decode(path, cancelled); });
  std::this_thread::sleep_for(lead);
  const auto dropped = Clock::now();
  cancelled->Cancel();
  decoding.join();
  return Clock::now() - dropped;
}

bool Measure(const char* path) {
  const auto wanted = std::make_shared<Cancellation>();
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
  StartCage();
  int status = argc > 1 ? 0 : 2;
  for (int i = 1; i < argc && status == 0; ++i) {
    if (!Measure(argv[i])) {
      std::fprintf(stderr, "stop_delay: %s cannot be decoded\n", argv[i]);
      status = 1;
    }
  }
  StopCage();
  return status;
}
