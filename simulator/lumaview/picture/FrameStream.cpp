// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/picture/FrameStream.h"

#include <atomic>
#include <utility>

#include "simulator/base/Log.h"
#include "simulator/lumaview/cage/Cage.h"

namespace sim::lumaview {
namespace {

void LogLoss() {
  static std::atomic<bool> logged{false};
  if (!logged.exchange(true)) {
    Log(LogLevel::kWarning, "lumaview", "pictures are decoded in this process: the decoders' processes were ended");
  }
}

}  // namespace

Result<std::unique_ptr<FrameStream>> FrameStream::Open(PictureFilePtr file, CancelFlag cancelled) {
  Cage* const cage = GetCage();
  if (cage != nullptr && cage->IsUp()) {
    auto stream = OpenCagedStream(*cage, file, cancelled);
    if (stream || cage->IsUp()) {
      return stream;
    }
    LogLoss();
  }
  return OpenLocalStream(std::move(file), std::move(cancelled));
}

}  // namespace sim::lumaview
