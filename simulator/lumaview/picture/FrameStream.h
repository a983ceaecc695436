// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_PICTURE_FRAMESTREAM_H
#define SIMULATOR_LUMAVIEW_PICTURE_FRAMESTREAM_H

#include <memory>
#include <utility>

#include "simulator/base/Result.h"
#include "simulator/lumaview/decode/Cancellation.h"
#include "simulator/lumaview/image/Render.h"
#include "simulator/lumaview/picture/PictureFile.h"
#include "simulator/lumaview/screen/Frame.h"

namespace sim::lumaview {

using CancelFlag = std::shared_ptr<Cancellation>;

/// One open decode: the header, then a frame a call, the first one again after the last. One thread at a time.
class FrameStream {
 public:
  /// Finds the format and reads the header: in a process of its own where the cage is up, else in this one. Errors:
  /// those of `OpenPicture`; kDamaged when the decoder's process ended, with the reason.
  static Result<std::unique_ptr<FrameStream>> Open(PictureFilePtr file, CancelFlag cancelled);
  virtual ~FrameStream() = default;
  FrameStream(const FrameStream&) = delete;
  FrameStream& operator=(const FrameStream&) = delete;

  virtual const PictureInfo& GetInfo() const = 0;
  /// The next frame as `view` shows it in a window of `size`. Errors: those of `RenderFrame`, kOutOfMemory, and
  /// kDamaged as above.
  virtual Result<FramePtr> RenderNext(const View& view, Size size) = 0;
  /// The picture as small as `size`, of its own proportions: see Preview.h.
  virtual Result<FramePtr> RenderPreview(Size size) = 0;
  /// Of the frame rendered last: how long it is shown; 0 for a still picture.
  virtual int GetFrameMilliseconds() const = 0;

  const PictureFilePtr& GetFile() const { return m_file; }
  /// Ends a call that runs. Thread-safe.
  void Cancel() { m_cancelled->Cancel(); }

 protected:
  FrameStream(PictureFilePtr file, CancelFlag cancelled) : m_file(std::move(file)), m_cancelled(std::move(cancelled)) {}
  const Cancellation& GetCancellation() const { return *m_cancelled; }

 private:
  const PictureFilePtr m_file;
  const CancelFlag m_cancelled;
};

/// Decodes in this process.
Result<std::unique_ptr<FrameStream>> OpenLocalStream(PictureFilePtr file, CancelFlag cancelled);

class Cage;
/// Decodes in a process of `cage`, which outlives the stream.
Result<std::unique_ptr<FrameStream>> OpenCagedStream(Cage& cage, PictureFilePtr file, CancelFlag cancelled);

}  // namespace sim::lumaview

#endif
