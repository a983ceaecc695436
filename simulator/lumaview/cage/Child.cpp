// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/cage/Child.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "simulator/lumaview/cage/Bars.h"
#include "simulator/lumaview/cage/Message.h"
#include "simulator/lumaview/decode/PagesAhead.h"
#include "simulator/lumaview/image/Preview.h"

namespace sim::lumaview::cage {
namespace {

/// The engine's file of pixels, in this process for the time of one frame.
class MappedFrame {
 public:
  MappedFrame(int file, Size size)
      : m_size(size), m_bytes(static_cast<size_t>(size.width) * static_cast<size_t>(size.height) * sizeof(uint32_t)) {
    void* start = mmap(nullptr, m_bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    m_pixels = start == MAP_FAILED ? nullptr : static_cast<uint32_t*>(start);
    if (m_pixels != nullptr) {
      m_pages.emplace().Start({static_cast<std::byte*>(start), m_bytes}, PagesAhead::From::kBegin);
    }
  }
  ~MappedFrame() {
    m_pages.reset();
    if (m_pixels != nullptr) {
      munmap(m_pixels, m_bytes);
    }
  }
  MappedFrame(const MappedFrame&) = delete;
  MappedFrame& operator=(const MappedFrame&) = delete;

  explicit operator bool() const { return m_pixels != nullptr; }
  ImageView GetPixels() const { return {m_pixels, m_size.width, m_size.height, m_size.width}; }

 private:
  const Size m_size;
  const size_t m_bytes;
  uint32_t* m_pixels = nullptr;
  std::optional<PagesAhead> m_pages;  ///< ends before the memory does
};

template <typename Work>
Status WithoutExceptions(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return Error{kOutOfMemory, "no memory to decode the picture"};
  } catch (const std::system_error& problem) {
    return Error{kOutOfMemory, std::string("no thread to decode the picture: ") + problem.what()};
  }
}

/// One picture.
class Job {
 public:
  Job(UniqueFd file, uint64_t bytes)
      : m_file(std::move(file)), m_source(m_file.Get(), bytes, GetLimits(), m_never_cancelled) {
    m_source.SetScratchOpener(AskForScratch);
  }

  Message Open(uint32_t bars) {
    Message answer{.verb = Verb::kHeader};
    AllowRequest(GetLimits().seconds);
    answer.SetStatus(WithoutExceptions([this]() -> Status {
      auto decoder = OpenPicture(m_source);
      if (!decoder) {
        return decoder.error();
      }
      m_decoder = std::move(*decoder);
      return Ok();
    }));
    if (m_decoder != nullptr) {
      answer.SetInfo(m_decoder->GetInfo(), bars);
    }
    return answer;
  }

  /// Only after `Open` has told of a decoder.
  Message Draw(const Message& request, const UniqueFd& memory) {
    Message answer{.verb = Verb::kDrawn};
    AllowRequest(GetLimits().seconds);
    const MappedFrame frame(memory.Get(), request.GetSize());
    answer.SetStatus(WithoutExceptions([&]() -> Status {
      if (!frame) {
        return Error{kOutOfMemory, "no memory for the frame"};
      }
      m_source.RestartClock();
      return request.verb == Verb::kPreview ? RenderPreview(*m_decoder, GetLimits(), frame.GetPixels())
                                            : RenderFrame(*m_decoder, request.GetView(), frame.GetPixels());
    }));
    answer.numbers[0] = m_decoder->GetFrameMilliseconds();
    return answer;
  }

  bool IsOpen() const { return m_decoder != nullptr; }

 private:
  static Result<UniqueFd> AskForScratch(uint64_t bytes) {
    Message message{.verb = Verb::kWantScratch, .bytes = bytes};
    UniqueFd file;
    if (!Send(kChannelFd, message) || Receive(kChannelFd, message, &file) != Received::kMessage) {
      _exit(1);
    }
    SIM_TRY(message.GetStatus());
    return file;
  }

  const UniqueFd m_file;
  const std::atomic<bool> m_never_cancelled{false};  // it is ended instead
  Source m_source;
  std::unique_ptr<Decoder> m_decoder;
};

}  // namespace

void RunChild() {
  const uint32_t bars = CloseCage();
  std::unique_ptr<Job> job;
  Message request;
  UniqueFd attached;
  while (Receive(kChannelFd, request, &attached) == Received::kMessage) {
    if (request.verb == Verb::kOpen && job == nullptr) {
      job = std::make_unique<Job>(std::move(attached), request.bytes);
      Send(kChannelFd, job->Open(bars));
    } else if (job != nullptr && job->IsOpen()) {
      const Message answer = job->Draw(request, attached);
      attached.Reset();  // the memory is let go before the engine hears of it
      Send(kChannelFd, answer);
    }
  }
  _exit(0);
}

}  // namespace sim::lumaview::cage
