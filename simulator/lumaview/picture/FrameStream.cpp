// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/picture/FrameStream.h"

#include <new>
#include <utility>

namespace sim::lumaview {

FrameStream::FrameStream(PictureFilePtr file, CancelFlag cancelled)
    : m_file(std::move(file)),
      m_cancelled(std::move(cancelled)),
      m_source(m_file->GetFd(), GetLimits(), *m_cancelled) {}

Result<std::unique_ptr<FrameStream>> FrameStream::Open(PictureFilePtr file, CancelFlag cancelled) {
  try {
    std::unique_ptr<FrameStream> stream(new FrameStream(std::move(file), std::move(cancelled)));
    auto decoder = OpenPicture(stream->m_source);
    if (!decoder) {
      return decoder.error();
    }
    stream->m_decoder = std::move(*decoder);
    return stream;
  } catch (const std::bad_alloc&) {
    return Error{kOutOfMemory, "no memory to read the header"};
  }
}

Result<FramePtr> FrameStream::RenderNext(const View& view, Size size) {
  auto frame = Frame::Create(size);
  if (!frame) {
    return frame.error();
  }
  try {
    m_source.RestartClock();
    SIM_TRY(RenderFrame(*m_decoder, view, (*frame)->GetPixels()));
  } catch (const std::bad_alloc&) {
    return Error{kOutOfMemory, "no memory to decode the picture"};
  }
  return FramePtr(std::move(*frame));
}

}  // namespace sim::lumaview
