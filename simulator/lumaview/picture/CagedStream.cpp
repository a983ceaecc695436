// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "simulator/lumaview/cage/CagedDecoder.h"
#include "simulator/lumaview/picture/FrameStream.h"

namespace sim::lumaview {
namespace {

class CagedStream : public FrameStream {
 public:
  CagedStream(Cage& cage, PictureFilePtr file, CancelFlag cancelled)
      : FrameStream(std::move(file), std::move(cancelled)), m_cage(cage) {}
  ~CagedStream() override { m_cage.Warm(); }

  Status Open() {
    auto decoder = CagedDecoder::Open(m_cage, GetFile()->GetFd(), GetFile()->GetIdentity().bytes, GetCancellation());
    if (!decoder) {
      return decoder.error();
    }
    m_decoder = std::move(*decoder);
    return Ok();
  }

  const PictureInfo& GetInfo() const override { return m_decoder->GetInfo(); }

  Result<FramePtr> RenderNext(const View& view, Size size) override {
    return Fill(size, [&](int memory) { return m_decoder->Render(view, size, memory); });
  }

  Result<FramePtr> RenderPreview(Size size) override {
    return Fill(size, [&](int memory) { return m_decoder->RenderPreview(size, memory); });
  }

  int GetFrameMilliseconds() const override { return m_decoder->GetFrameMilliseconds(); }

 private:
  template <typename Draw>
  Result<FramePtr> Fill(Size size, Draw draw) {
    auto memory = Frame::CreateFile(size);
    if (!memory) {
      return memory.error();
    }
    SIM_TRY(draw(memory->Get()));
    m_cage.Warm();
    return Frame::Freeze(std::move(*memory), size);
  }

  Cage& m_cage;
  std::unique_ptr<CagedDecoder> m_decoder;
};

}  // namespace

Result<std::unique_ptr<FrameStream>> OpenCagedStream(Cage& cage, PictureFilePtr file, CancelFlag cancelled) {
  auto stream = std::make_unique<CagedStream>(cage, std::move(file), std::move(cancelled));
  SIM_TRY(stream->Open());
  return std::unique_ptr<FrameStream>(std::move(stream));
}

}  // namespace sim::lumaview
