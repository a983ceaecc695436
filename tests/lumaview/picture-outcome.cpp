// SPDX-License-Identifier: Apache-2.0
/// picture-outcome FILE [WIDTH HEIGHT [OUTPUT]]: opens and draws one picture as the library does, and says on one line
/// what came of it: "show TYPE WIDTH HEIGHT FRAMES LOOPS MILLISECONDS OWN-KIBIBYTES KIBIBYTES" or "refuse CODE
/// MILLISECONDS OWN-KIBIBYTES KIBIBYTES REASON". OWN-KIBIBYTES is the growth of this process' peak, KIBIBYTES the same
/// or the peak of a process of the cage where that is more. OUTPUT receives the window's pixels as a PPM.
/// LUMAVIEW_CAGE=on or off says where the picture is decoded. A program of its own, so that a test sees a crash, the
/// time and the memory of each picture alone.
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "simulator/lumaview/cage/Cage.h"
#include "simulator/lumaview/picture/FrameStream.h"

#if defined(__SANITIZE_ADDRESS__)
/// Its own view of thread-local storage fails in libraries that are loaded while the process runs, and the search for
/// leaks at the end then faults.
extern "C" const char* __asan_default_options() {
  return "intercept_tls_get_addr=0";
}
#endif

using namespace sim;
using namespace sim::lumaview;

namespace {

long PeakKibibytes(__rusage_who whose) {
  rusage usage{};
  getrusage(whose, &usage);
  return usage.ru_maxrss;
}

void WritePpm(const char* path, ConstImageView image) {
  std::FILE* file = std::fopen(path, "wb");
  if (file == nullptr) {
    return;
  }
  std::fprintf(file, "P6\n%d %d\n255\n", image.width, image.height);
  std::vector<uint8_t> row(static_cast<size_t>(image.width) * 3);
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      const uint32_t pixel = image.Row(y)[x];
      row[static_cast<size_t>(x) * 3] = static_cast<uint8_t>(pixel >> 16);
      row[static_cast<size_t>(x) * 3 + 1] = static_cast<uint8_t>(pixel >> 8);
      row[static_cast<size_t>(x) * 3 + 2] = static_cast<uint8_t>(pixel);
    }
    std::fwrite(row.data(), 1, row.size(), file);
  }
  std::fclose(file);
}

struct Outcome {
  Error error{0, ""};
  PictureInfo info;
  FramePtr frame;
};

Outcome Show(const char* path, Size window) {
  const auto file = PictureFile::Open(path);
  if (!file) {
    return {file.error(), {}, nullptr};
  }
  const auto stream = FrameStream::Open(*file, std::make_shared<Cancellation>());
  if (!stream) {
    return {stream.error(), {}, nullptr};
  }
  const auto frame = (*stream)->RenderNext(View{}, window);
  return frame ? Outcome{{0, ""}, (*stream)->GetInfo(), *frame} : Outcome{frame.error(), (*stream)->GetInfo(), nullptr};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 4 && argc != 5) {
    std::fprintf(stderr, "usage: picture-outcome FILE [WIDTH HEIGHT [OUTPUT]]\n");
    return 2;
  }
  const Size window{argc > 2 ? std::atoi(argv[2]) : 1920, argc > 2 ? std::atoi(argv[3]) : 1080};
  StartCage();
  const long peak_before = PeakKibibytes(RUSAGE_SELF);
  const auto begin = std::chrono::steady_clock::now();
  const Outcome outcome = Show(argv[1], window);
  const auto spent = std::chrono::steady_clock::now() - begin;
  const auto milliseconds = static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(spent).count());
  StopCage();
  const long own_kibibytes = PeakKibibytes(RUSAGE_SELF) - peak_before;
  const long kibibytes = std::max(own_kibibytes, PeakKibibytes(RUSAGE_CHILDREN));
  if (outcome.error.code != 0) {
    std::printf("refuse %d %ld %ld %ld %s\n", outcome.error.code, milliseconds, own_kibibytes, kibibytes,
                outcome.error.reason.c_str());
    return 0;
  }
  const Size upright = UprightSize(outcome.info);
  std::printf("show %d %d %d %d %d %ld %ld %ld\n", outcome.info.type, upright.width, upright.height,
              outcome.info.frames, outcome.info.loops, milliseconds, own_kibibytes, kibibytes);
  if (argc == 5) {
    WritePpm(argv[4], outcome.frame->GetPixels());
  }
  return 0;
}
