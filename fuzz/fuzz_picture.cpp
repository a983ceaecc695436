// SPDX-License-Identifier: Apache-2.0
#include "fuzz/fuzz_picture.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "simulator/base/UniqueFd.h"
#include "simulator/lumaview/decode/Formats.h"
#include "simulator/lumaview/image/Render.h"

using namespace sim;
using namespace sim::lumaview;

namespace {

/// Small enough that a run takes milliseconds, large enough that every kind of scaling happens.
constexpr Size kWindow{61, 47};
constexpr Limits kLimits{.pixels = 1 << 20, .whole_pixels = 1 << 20, .side = 1 << 16, .coefficient_bytes = 1 << 16};
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

}  // namespace

int DrawPicture(const char* format, const uint8_t* data, size_t size) {
  if (!BeginsAs(format, {data, size})) {
    return -1;
  }
  const UniqueFd file(memfd_create("picture", MFD_CLOEXEC));
  if (write(file.Get(), data, size) != static_cast<ssize_t>(size)) {
    return -1;
  }
  const std::atomic<bool> cancelled{false};
  Source source(file.Get(), kLimits, cancelled);
  Result<std::unique_ptr<Decoder>> decoder = OpenPicture(source);
  if (!decoder) {
    return 0;
  }
  std::vector<uint32_t> pixels(static_cast<size_t>(kWindow.width * kWindow.height));
  const ImageView window{pixels.data(), kWindow.width, kWindow.height, kWindow.width};
  const int frames = std::min((*decoder)->GetInfo().frames + 1, kMostFrames);
  for (int i = 0; i < frames; ++i) {
    if (!RenderFrame(**decoder, ChooseView(size), window)) {
      break;
    }
  }
  (*decoder)->GetExifThumbnail();
  return 0;
}
