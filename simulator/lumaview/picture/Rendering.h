// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_PICTURE_RENDERING_H
#define SIMULATOR_LUMAVIEW_PICTURE_RENDERING_H

#include <functional>
#include <memory>

#include "simulator/base/Result.h"
#include "simulator/lumaview/picture/FrameStream.h"
#include "simulator/lumaview/picture/WorkerPool.h"

namespace sim::lumaview {

/// A picture made ready for one window size, and what is needed to make it again for another.
struct Rendered {
  PictureFilePtr file;
  PictureInfo info;
  View view;  ///< pan limited to what the window allows
  FramePtr frame;
  std::shared_ptr<FrameStream> stream;  ///< the frames to come; null for a still picture
  int milliseconds = 0;                 ///< how long `frame` is shown; 0 for a still picture
};

/// A picture's way from its file to a frame, on a thread of the pool.
class Rendering {
 public:
  using OnHeader = std::function<void(const Result<PictureInfo>&)>;
  using OnFrame = std::function<void(Result<Rendered>)>;

  /// Both are called on the pool's thread with no lock held, each once, the header first; after a bad header
  /// `on_frame` has the same error. Also after `Cancel`, then mostly with kCancelled.
  static std::shared_ptr<Rendering> Start(WorkerPool& pool, PictureFilePtr file, const View& view, Size size,
                                          OnHeader on_header, OnFrame on_frame);

  /// Ends the decode: at once in a process of its own, else at its next few rows. Thread-safe.
  void Cancel() { m_cancelled->Cancel(); }

 private:
  Rendering() : m_cancelled(std::make_shared<Cancellation>()) {}

  const CancelFlag m_cancelled;
};

/// Reads the header on the calling thread.
Result<PictureInfo> ReadHeader(const PictureFilePtr& file);

}  // namespace sim::lumaview

#endif
