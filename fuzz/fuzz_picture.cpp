// SPDX-License-Identifier: Apache-2.0
#include "fuzz/fuzz_picture.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/base/UniqueFd.h"
#include "simulator/lumaview/decode/Formats.h"
#include "simulator/lumaview/image/Render.h"

using namespace sim;
using namespace sim::lumaview;

namespace {

/// Small enough that a run takes milliseconds, large enough that every kind of scaling happens.
constexpr Size kWindow{61, 47};
constexpr Limits kLimits{.pixels = 1 << 20,
                         .whole_pixels = 1 << 20,
                         .side = 1 << 16,
                         .coefficient_bytes = 1 << 16,
                         .jpeg_thread_bytes = UINT64_MAX};
constexpr Limits kThreadedLimits{.pixels = kLimits.pixels,
                                 .whole_pixels = kLimits.whole_pixels,
                                 .side = kLimits.side,
                                 .coefficient_bytes = kLimits.coefficient_bytes,
                                 .jpeg_thread_bytes = 0,
                                 .jpeg_thread_pixels = UINT64_MAX};
constexpr int kMostFrames = 3;

bool BeginsAs(std::string_view name, Bytes bytes) {
  for (const Format& format : GetFormats()) {
    if (format.name == name) {
      return format.probe(bytes.first(std::min(bytes.size(), kProbeBytes)));
    }
  }
  return false;
}

View ChooseView(size_t size) {
  constexpr int kRotations[] = {0, 90, 180, 270};
  View view{.zoom = 1 + static_cast<int>(size % 3), .rotation = kRotations[size / 3 % 4]};
  view.stereo = static_cast<StereoMode>(size / 12 % 4);
  return view;
}

/// What came of a picture; pixels of a frame that failed do not count.
struct Drawn {
  std::vector<Error> errors;
  std::vector<uint32_t> pixels;
  bool operator==(const Drawn& other) const {
    const auto same = [](const Error& a, const Error& b) { return a.code == b.code && a.reason == b.reason; };
    return std::equal(errors.begin(), errors.end(), other.errors.begin(), other.errors.end(), same) &&
           (!errors.empty() || pixels == other.pixels);
  }
};

Drawn Draw(int file, size_t size, const Limits& limits) {
  const std::atomic<bool> cancelled{false};
  Source source(file, limits, cancelled);
  Result<std::unique_ptr<Decoder>> decoder = OpenPicture(source);
  if (!decoder) {
    return {{decoder.error()}, {}};
  }
  Drawn drawn{{}, std::vector<uint32_t>(static_cast<size_t>(kWindow.width * kWindow.height))};
  const ImageView window{drawn.pixels.data(), kWindow.width, kWindow.height, kWindow.width};
  const int frames = std::min((*decoder)->GetInfo().frames + 1, kMostFrames);
  for (int i = 0; i < frames; ++i) {
    if (const Status status = RenderFrame(**decoder, ChooseView(size), window); !status) {
      drawn.errors.push_back(status.error());
      break;
    }
  }
  (*decoder)->GetExifThumbnail();
  return drawn;
}

/// Empty where the bytes are of no use.
UniqueFd MakeFile(const char* format, const uint8_t* data, size_t size) {
  UniqueFd file(BeginsAs(format, {data, size}) ? memfd_create("picture", MFD_CLOEXEC) : -1);
  return file && write(file.Get(), data, size) == static_cast<ssize_t>(size) ? std::move(file) : UniqueFd();
}

}  // namespace

int DrawPicture(const char* format, const uint8_t* data, size_t size) {
  const UniqueFd file = MakeFile(format, data, size);
  if (!file) {
    return -1;
  }
  Draw(file.Get(), size, kLimits);
  return 0;
}

int DrawPictureTwice(const char* format, const uint8_t* data, size_t size) {
  const UniqueFd file = MakeFile(format, data, size);
  if (!file) {
    return -1;
  }
  if (!(Draw(file.Get(), size, kLimits) == Draw(file.Get(), size, kThreadedLimits))) {
    std::abort();
  }
  return 0;
}
