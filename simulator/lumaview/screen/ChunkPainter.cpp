// SPDX-License-Identifier: Apache-2.0
#include <poll.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <vector>

#include "simulator/lumaview/decode/Decoder.h"
#include "simulator/lumaview/screen/Painter.h"
#include "simulator/lumaview/screen/Reply.h"

namespace sim::lumaview {
namespace {

/// What one request carries. A socket that reports room takes this much without making the writer wait, so a server
/// that hangs never holds the thread in a write; requests of 256 KiB, the most that every server takes, would.
constexpr size_t kRequestBytes = 64 * 1024;

/// Sends the pixels through the connection, for servers that share no memory with this process.
class ChunkPainter : public Painter {
 public:
  explicit ChunkPainter(const PaintTarget& target) : m_target(target) {}

  bool CanPut() const override { return m_waiting == 0; }

  Status Put(const FramePtr& frame, uint64_t put) override {
    if (m_target.format.IsNative()) {
      SIM_TRY(Send(frame->GetMemory()->GetData(), frame->GetSize()));
    } else {
      const Size size = frame->GetSize();
      m_converted.resize(m_target.format.GetStride(size.width) * static_cast<size_t>(size.height));
      m_target.format.Convert(frame->GetPixels(), m_converted.data());
      SIM_TRY(Send(m_converted.data(), size));
    }
    m_waiting = put;
    // The answer to a harmless question tells that everything before it is drawn.
    m_question = xcb_get_input_focus(m_target.connection).sequence;
    return Ok();
  }

  void HandleEvent(const xcb_generic_event_t&) override {}

  void Poll() override {
    if (m_waiting == 0) {
      return;
    }
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (xcb_poll_for_reply(m_target.connection, m_question, &reply, &error) != 0) {
      std::free(reply);
      std::free(error);
      m_completed = m_waiting;
      m_waiting = 0;
    }
  }

  uint64_t GetCompleted() const override { return m_completed; }
  const char* GetName() const override { return "chunks"; }

 private:
  Status Send(const uint8_t* pixels, Size size) const {
    const size_t stride = m_target.format.GetStride(size.width);
    const int rows_each = std::max(1, static_cast<int>(kRequestBytes / stride));
    for (int y = 0; y < size.height; y += rows_each) {
      SIM_TRY(AwaitRoom());
      const int rows = std::min(rows_each, size.height - y);
      const auto bytes = static_cast<uint32_t>(stride * static_cast<size_t>(rows));
      xcb_put_image(m_target.connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_target.window, m_target.gc,
                    static_cast<uint16_t>(size.width), static_cast<uint16_t>(rows), 0, static_cast<int16_t>(y), 0,
                    m_target.depth, bytes, pixels + static_cast<size_t>(y) * stride);
    }
    return Ok();
  }

  Status AwaitRoom() const {
    pollfd connected{xcb_get_file_descriptor(m_target.connection), POLLOUT, 0};
    if (poll(&connected, 1, kServerMilliseconds) == 1) {
      return Ok();
    }
    return Error{kDisplayFailed, "the X server takes no more pixels"};
  }

  const PaintTarget m_target;
  std::vector<uint8_t> m_converted;
  unsigned int m_question = 0;
  uint64_t m_waiting = 0;  ///< the put that the question was asked for; 0 = none
  uint64_t m_completed = 0;
};

}  // namespace

PainterResult CreateChunkPainter(const PaintTarget& target) {
  return std::unique_ptr<Painter>(std::make_unique<ChunkPainter>(target));
}

}  // namespace sim::lumaview
