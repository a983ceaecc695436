// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_PICTURE_FRAMESTREAM_H
#define SIMULATOR_LUMAVIEW_PICTURE_FRAMESTREAM_H

#include <atomic>
#include <memory>

#include "simulator/base/Result.h"
#include "simulator/lumaview/decode/Decoder.h"
#include "simulator/lumaview/image/Render.h"
#include "simulator/lumaview/picture/PictureFile.h"
#include "simulator/lumaview/screen/Frame.h"

namespace sim::lumaview {

/// Set to true once nobody wants the result any more; decoders look at it every few rows.
using CancelFlag = std::shared_ptr<std::atomic<bool>>;

/// One open decode: the header, then a frame a call, the first one again after the last. One thread at a time.
class FrameStream {
 public:
  /// Finds the format and reads the header. Errors: those of `OpenPicture`.
  static Result<std::unique_ptr<FrameStream>> Open(PictureFilePtr file, CancelFlag cancelled);

  const PictureInfo& GetInfo() const { return m_decoder->GetInfo(); }
  const PictureFilePtr& GetFile() const { return m_file; }
  /// The next frame as `view` shows it in a window of `size`. Errors: those of `RenderFrame`, kOutOfMemory.
  Result<FramePtr> RenderNext(const View& view, Size size);
  /// Of the frame rendered last: how long it is shown; 0 for a still picture.
  int GetFrameMilliseconds() const { return m_decoder->GetFrameMilliseconds(); }
  Decoder& GetDecoder() { return *m_decoder; }
  /// Ends a `RenderNext` that runs. Thread-safe.
  void Cancel() { m_cancelled->store(true, std::memory_order_relaxed); }

 private:
  FrameStream(PictureFilePtr file, CancelFlag cancelled);

  const PictureFilePtr m_file;
  const CancelFlag m_cancelled;
  Source m_source;
  std::unique_ptr<Decoder> m_decoder;
};

}  // namespace sim::lumaview

#endif
