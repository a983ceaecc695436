// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "simulator/lumaview/decode/Decoder.h"
#include "simulator/lumaview/screen/Painter.h"
#include "simulator/lumaview/screen/Reply.h"
#include "simulator/lumaview/screen/ShmQueue.h"

namespace sim::lumaview {
namespace {

/// The server maps the frames themselves; nothing is copied here unless the window's pixels are of another kind.
class MemfdPainter : public Painter {
 public:
  explicit MemfdPainter(const PaintTarget& target) : m_target(target), m_queue(target) {}

  /// Tries once, with an answer, whether descriptors reach the server at all.
  Status Try() {
    auto memory = SharedMemory::Create(4096);
    if (!memory) {
      return memory.error();
    }
    const int passed = fcntl((*memory)->GetFd(), F_DUPFD_CLOEXEC, 0);
    const xcb_shm_seg_t segment = xcb_generate_id(m_target.connection);
    SIM_TRY(AwaitDone(m_target.connection, xcb_shm_attach_fd_checked(m_target.connection, segment, passed, kReadOnly),
                      "attaching memory by its descriptor"));
    xcb_shm_detach(m_target.connection, segment);
    return Ok();
  }

  bool CanPut() const override { return m_queue.GetLength() < kPutsInFlight; }

  Status Put(const FramePtr& frame, uint64_t put) override {
    Sweep();
    auto memory = m_target.format.IsNative() ? frame->GetMemory() : Convert(*frame);
    if (!memory) {
      return Error{kOutOfMemory, "no memory to convert a frame to the window's pixels"};
    }
    const xcb_shm_seg_t segment = FindOrAttach(memory);
    if (segment == XCB_NONE) {
      return Error{kDisplayFailed, std::string("a frame's descriptor cannot be passed on: ") + std::strerror(errno)};
    }
    m_queue.Put(segment, frame->GetSize(), std::move(memory), put);
    return Ok();
  }

  void HandleEvent(const xcb_generic_event_t& event) override { m_queue.HandleEvent(event); }
  uint64_t GetCompleted() const override { return m_queue.GetCompleted(); }
  const char* GetName() const override { return "memfd"; }

  void Sweep() override {
    std::erase_if(m_attached, [this](const Attached& attached) {
      if (!attached.memory.expired()) {
        return false;
      }
      xcb_shm_detach(m_target.connection, attached.segment);
      return true;
    });
  }

 private:
  static constexpr uint8_t kReadOnly = 1;

  struct Attached {
    std::weak_ptr<SharedMemory> memory;
    xcb_shm_seg_t segment;
  };

  xcb_shm_seg_t FindOrAttach(const std::shared_ptr<SharedMemory>& memory) {
    const auto known = std::find_if(m_attached.begin(), m_attached.end(),
                                    [&memory](const Attached& attached) { return attached.memory.lock() == memory; });
    if (known != m_attached.end()) {
      return known->segment;
    }
    const int passed = fcntl(memory->GetFd(), F_DUPFD_CLOEXEC, 0);
    if (passed < 0) {
      return XCB_NONE;
    }
    const xcb_shm_seg_t segment = xcb_generate_id(m_target.connection);
    xcb_shm_attach_fd(m_target.connection, segment, passed, kReadOnly);
    m_attached.push_back({memory, segment});
    return segment;
  }

  std::shared_ptr<SharedMemory> Convert(const Frame& frame) const {
    const Size size = frame.GetSize();
    auto memory = SharedMemory::Create(m_target.format.GetStride(size.width) * static_cast<size_t>(size.height));
    if (!memory) {
      return nullptr;
    }
    m_target.format.Convert(frame.GetPixels(), (*memory)->GetData());
    return std::move(*memory);
  }

  const PaintTarget m_target;
  ShmQueue m_queue;
  std::vector<Attached> m_attached;
};

}  // namespace

PainterResult CreateMemfdPainter(const PaintTarget& target) {
  constexpr unsigned int kFirstMajorWithDescriptors = 1;
  constexpr unsigned int kFirstMinorWithDescriptors = 2;
  SIM_TRY(RequireShm(target.connection, kFirstMajorWithDescriptors, kFirstMinorWithDescriptors));
  auto painter = std::make_unique<MemfdPainter>(target);
  SIM_TRY(painter->Try());
  return std::unique_ptr<Painter>(std::move(painter));
}

}  // namespace sim::lumaview
