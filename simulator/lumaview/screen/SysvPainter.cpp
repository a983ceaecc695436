// SPDX-License-Identifier: Apache-2.0
#include <sys/ipc.h>
#include <sys/shm.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "simulator/lumaview/decode/Decoder.h"
#include "simulator/lumaview/screen/Painter.h"
#include "simulator/lumaview/screen/Reply.h"
#include "simulator/lumaview/screen/ShmQueue.h"

namespace sim::lumaview {
namespace {

/// A System V segment that both sides have attached; removed as soon as the last of them lets go.
class SysvSegment {
 public:
  static Result<std::shared_ptr<SysvSegment>> Create(xcb_connection_t* connection, size_t bytes) {
    const int id = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (id < 0) {
      return Error{kOutOfMemory, std::string("no System V segment: ") + std::strerror(errno)};
    }
    void* data = shmat(id, nullptr, 0);
    const xcb_shm_seg_t segment = xcb_generate_id(connection);
    const Status attached =
        AwaitDone(connection, xcb_shm_attach_checked(connection, segment, static_cast<uint32_t>(id), 1),
                  "attaching a System V segment");
    shmctl(id, IPC_RMID, nullptr);
    if (data == AttachFailed()) {
      return Error{kOutOfMemory, "a System V segment cannot be attached"};
    }
    std::shared_ptr<SysvSegment> made(new SysvSegment(connection, segment, static_cast<uint8_t*>(data), bytes));
    if (!attached) {
      made->m_segment = XCB_NONE;
      return attached.error();
    }
    return made;
  }
  ~SysvSegment() {
    if (m_segment != XCB_NONE) {
      xcb_shm_detach(m_connection, m_segment);
    }
    shmdt(m_data);
  }
  SysvSegment(const SysvSegment&) = delete;
  SysvSegment& operator=(const SysvSegment&) = delete;

  xcb_shm_seg_t GetId() const { return m_segment; }
  uint8_t* GetData() const { return m_data; }
  size_t GetSize() const { return m_size; }

 private:
  SysvSegment(xcb_connection_t* connection, xcb_shm_seg_t segment, uint8_t* data, size_t size)
      : m_connection(connection), m_segment(segment), m_data(data), m_size(size) {}
  static void* AttachFailed() { return reinterpret_cast<void*>(intptr_t{-1}); }

  xcb_connection_t* const m_connection;
  xcb_shm_seg_t m_segment;
  uint8_t* const m_data;
  const size_t m_size;
};

/// Copies each frame into one of two segments.
class SysvPainter : public Painter {
 public:
  explicit SysvPainter(const PaintTarget& target) : m_target(target), m_queue(target) {}

  Status Try() {
    auto segment = SysvSegment::Create(m_target.connection, 4096);
    return segment ? Ok() : Status(segment.error());
  }

  bool CanPut() const override { return m_queue.GetLength() < kPutsInFlight; }

  Status Put(const FramePtr& frame, uint64_t put) override {
    const Size size = frame->GetSize();
    auto segment = TakeFree(m_target.format.GetStride(size.width) * static_cast<size_t>(size.height));
    if (!segment) {
      return segment.error();
    }
    if (m_target.format.IsNative()) {
      std::memcpy((*segment)->GetData(), frame->GetMemory()->GetData(), frame->GetBytes());
    } else {
      m_target.format.Convert(frame->GetPixels(), (*segment)->GetData());
    }
    m_queue.Put((*segment)->GetId(), size, *segment, put);
    return Ok();
  }

  void HandleEvent(const xcb_generic_event_t& event) override { m_queue.HandleEvent(event); }
  uint64_t GetCompleted() const override { return m_queue.GetCompleted(); }
  const char* GetName() const override { return "sysv"; }

 private:
  /// `CanPut` has said that one of the segments is not being read.
  Result<std::shared_ptr<SysvSegment>> TakeFree(size_t bytes) {
    for (auto& segment : m_segments) {
      if (segment && segment.use_count() == 1 && segment->GetSize() == bytes) {
        return segment;
      }
    }
    for (auto& segment : m_segments) {
      if (!segment || segment.use_count() == 1) {
        segment.reset();
        auto made = SysvSegment::Create(m_target.connection, bytes);
        if (made) {
          segment = *made;
        }
        return made;
      }
    }
    return Error{kNotReady, "both System V segments are in use"};
  }

  const PaintTarget m_target;
  std::shared_ptr<SysvSegment> m_segments[kPutsInFlight];
  ShmQueue m_queue;
};

}  // namespace

PainterResult CreateSysvPainter(const PaintTarget& target) {
  SIM_TRY(RequireShm(target.connection, 1, 0));
  auto painter = std::make_unique<SysvPainter>(target);
  SIM_TRY(painter->Try());
  return std::unique_ptr<Painter>(std::move(painter));
}

}  // namespace sim::lumaview
