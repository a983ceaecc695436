// SPDX-License-Identifier: Apache-2.0
#include <new>
#include <string>
#include <system_error>
#include <utility>

#include "simulator/lumaview/image/Preview.h"
#include "simulator/lumaview/picture/FrameStream.h"

namespace sim::lumaview {
namespace {

class LocalStream : public FrameStream {
 public:
  LocalStream(PictureFilePtr file, CancelFlag cancelled)
      : FrameStream(std::move(file), std::move(cancelled)),
        m_source(GetFile()->GetFd(), GetLimits(), GetCancellation().GetFlag()) {}

  Status Open() {
    auto decoder = OpenPicture(m_source);
    if (!decoder) {
      return decoder.error();
    }
    m_decoder = std::move(*decoder);
    return Ok();
  }

  const PictureInfo& GetInfo() const override { return m_decoder->GetInfo(); }

  Result<FramePtr> RenderNext(const View& view, Size size) override {
    return Fill(size, [&](ImageView target) { return RenderFrame(*m_decoder, view, target); });
  }

  Result<FramePtr> RenderPreview(Size size) override {
    return Fill(size, [&](ImageView target) { return lumaview::RenderPreview(*m_decoder, GetLimits(), target); });
  }

  int GetFrameMilliseconds() const override { return m_decoder->GetFrameMilliseconds(); }

 private:
  template <typename Draw>
  Result<FramePtr> Fill(Size size, Draw draw) {
    auto frame = Frame::Create(size);
    if (!frame) {
      return frame.error();
    }
    try {
      m_source.RestartClock();
      SIM_TRY(draw((*frame)->GetPixels()));
    } catch (const std::bad_alloc&) {
      return Error{kOutOfMemory, "no memory to decode the picture"};
    } catch (const std::system_error& problem) {
      return Error{kOutOfMemory, std::string("no thread to decode the picture: ") + problem.what()};
    }
    return FramePtr(std::move(*frame));
  }

  Source m_source;
  std::unique_ptr<Decoder> m_decoder;
};

}  // namespace

Result<std::unique_ptr<FrameStream>> OpenLocalStream(PictureFilePtr file, CancelFlag cancelled) {
  try {
    auto stream = std::make_unique<LocalStream>(std::move(file), std::move(cancelled));
    SIM_TRY(stream->Open());
    return std::unique_ptr<FrameStream>(std::move(stream));
  } catch (const std::bad_alloc&) {
    return Error{kOutOfMemory, "no memory to read the header"};
  }
}

}  // namespace sim::lumaview
