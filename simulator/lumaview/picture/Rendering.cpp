// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/picture/Rendering.h"

#include <utility>

namespace sim::lumaview {
namespace {

Result<Rendered> RenderFirst(std::unique_ptr<FrameStream> stream, const View& view, Size size) {
  Rendered rendered;
  rendered.file = stream->GetFile();
  rendered.info = stream->GetInfo();
  rendered.view = ClampPan(UprightSize(rendered.info), view, size);
  auto frame = stream->RenderNext(rendered.view, size);
  if (!frame) {
    return frame.error();
  }
  rendered.frame = std::move(*frame);
  if (rendered.info.frames > 1) {
    rendered.milliseconds = stream->GetFrameMilliseconds();
    rendered.stream = std::move(stream);
  }
  return rendered;
}

}  // namespace

std::shared_ptr<Rendering> Rendering::Start(WorkerPool& pool, PictureFilePtr file, const View& view, Size size,
                                            OnHeader on_header, OnFrame on_frame) {
  std::shared_ptr<Rendering> rendering(new Rendering);
  pool.Post([cancelled = rendering->m_cancelled, file = std::move(file), view, size, on_header = std::move(on_header),
             on_frame = std::move(on_frame)]() {
    auto stream = cancelled->IsCancelled()
                      ? Result<std::unique_ptr<FrameStream>>(Error{kCancelled, "the picture is no longer wanted"})
                      : FrameStream::Open(file, cancelled);
    if (!stream) {
      on_header(stream.error());
      on_frame(stream.error());
      return;
    }
    on_header((*stream)->GetInfo());
    on_frame(RenderFirst(std::move(*stream), view, size));
  });
  return rendering;
}

Result<PictureInfo> ReadHeader(const PictureFilePtr& file) {
  const auto stream = FrameStream::Open(file, std::make_shared<Cancellation>());
  if (!stream) {
    return stream.error();
  }
  return (*stream)->GetInfo();
}

}  // namespace sim::lumaview
