// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/cage/CagedDecoder.h"

#include <poll.h>
#include <sys/wait.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <string>

namespace sim::lumaview {
namespace {

using cage::Message;
using cage::Received;
using cage::Verb;

/// A process that keeps the limit says so itself, which tells more; for that it has this much longer.
constexpr int64_t kGraceMilliseconds = 50;
/// Inside this file: a channel that ends without a last word has lost its nursery, and the picture is not to blame.
constexpr int kDecodersLost = -100;
/// Three bytes of every pixel as two of coefficients each, and some for borders of blocks.
constexpr uint64_t kScratchBytesPerPixel = 7;

int64_t NowMilliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

Error Killed(int signal) {
  if (signal == SIGKILL) {
    return {kOutOfMemory, "the decoder was killed, for lack of memory perhaps"};
  }
  if (signal == SIGXCPU) {
    return {kOverLimit, "the decoder was killed: it took more time than it has"};
  }
  std::string name = strsignal(signal);
  name[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(name[0])));
  return {kDamaged, "the decoder was killed: " + name};
}

Error Ended(int status) {
  return WIFSIGNALED(status) ? Killed(WTERMSIG(status)) : Error{kDamaged, "the decoder ended without a result"};
}

}  // namespace

Result<std::unique_ptr<CagedDecoder>> CagedDecoder::Open(Cage& cage, int file, uint64_t bytes,
                                                         const Cancellation& cancelled) {
  // A second time for a nursery that was killed: there is a new one.
  for (int left = 1; left >= 0; --left) {
    auto channel = cage.Take(file);
    if (!channel) {
      return channel.error();
    }
    std::unique_ptr<CagedDecoder> decoder(new CagedDecoder(cage, std::move(*channel), cancelled));
    const Status opened = decoder->ReadHeader(file, bytes);
    if (opened) {
      return decoder;
    }
    if (opened.error().code != kDecodersLost) {
      return opened.error();
    }
  }
  return Error{kDamaged, "the decoders are killed again and again"};
}

Status CagedDecoder::ReadHeader(int file, uint64_t bytes) {
  const auto header = Ask({.verb = Verb::kOpen, .bytes = bytes}, file, Verb::kHeader);
  if (!header) {
    return header.error();
  }
  const auto info = header->GetInfo(GetLimits());
  if (!info) {
    return info.error();
  }
  m_info = *info;
  m_cage.NoteBars(header->GetBars());
  return Ok();
}

Status CagedDecoder::Render(const View& view, Size size, int memory) {
  return Draw(Verb::kRender, view, size, memory);
}

Status CagedDecoder::RenderPreview(Size size, int memory) {
  return Draw(Verb::kPreview, {}, size, memory);
}

Status CagedDecoder::Draw(Verb verb, const View& view, Size size, int memory) {
  Message request{.verb = verb};
  request.SetView(view, size);
  const auto drawn = Ask(request, memory, Verb::kDrawn);
  if (!drawn) {
    const bool lost = drawn.error().code == kDecodersLost;
    return Error{lost ? kDamaged : drawn.error().code, drawn.error().reason};
  }
  m_milliseconds = std::max(drawn->numbers[0], 0);
  return Ok();
}

/// An error of the picture leaves the process as it is; without an answer it is given up, which ends it.
Result<Message> CagedDecoder::Ask(const Message& request, int attached, Verb expected) {
  if (!m_channel) {
    return Error{kDamaged, "the decoder has ended"};
  }
  // A send that fails finds the reason waiting.
  cage::Send(m_channel.Get(), request, attached);
  auto answer = AwaitAnswer(expected);
  if (!answer) {
    m_channel.Reset();
    m_cage.Warm();
    return answer;
  }
  SIM_TRY(answer->GetStatus());
  return answer;
}

Result<Message> CagedDecoder::AwaitAnswer(Verb expected) {
  const int64_t deadline = NowMilliseconds() + static_cast<int64_t>(GetLimits().seconds) * 1000 + kGraceMilliseconds;
  while (true) {
    SIM_TRY(AwaitPacket(deadline));
    Message answer;
    const Received received = cage::Receive(m_channel.Get(), answer);
    if (received == Received::kClosed) {
      return Error{kDecodersLost, "the decoder was killed with all the others"};
    }
    if (received == Received::kMessage && answer.verb == expected) {
      return answer;
    }
    if (received == Received::kMessage && answer.verb == Verb::kEnded) {
      return Ended(answer.numbers[0]);
    }
    if (received != Received::kMessage || answer.verb != Verb::kWantScratch || m_has_scratch) {
      return Error{kDamaged, "the decoder talks nonsense"};
    }
    GiveScratch(answer.bytes);
  }
}

Status CagedDecoder::AwaitPacket(int64_t deadline_ms) const {
  pollfd sources[] = {{m_channel.Get(), POLLIN, 0}, {m_cancelled.GetFd(), POLLIN, 0}};
  while (true) {
    const int64_t left = deadline_ms - NowMilliseconds();
    if (m_cancelled.IsCancelled()) {
      return Error{kCancelled, "the picture is no longer wanted"};
    }
    if (left <= 0) {
      return Error{kOverLimit, "decoding took longer than " + std::to_string(GetLimits().seconds) + " s"};
    }
    if (poll(sources, 2, static_cast<int>(left)) > 0 && sources[0].revents != 0) {
      return Ok();
    }
  }
}

void CagedDecoder::GiveScratch(uint64_t bytes) {
  m_has_scratch = true;
  Message answer{.verb = Verb::kScratch};
  if (bytes > GetLimits().pixels * kScratchBytesPerPixel) {
    answer.SetStatus(Error{kOverLimit, "the decoder wants too much room"});
    cage::Send(m_channel.Get(), answer);
    return;
  }
  const auto file = OpenScratchFile(bytes);
  answer.SetStatus(file ? Ok() : Status(file.error()));
  cage::Send(m_channel.Get(), answer, file ? file->Get() : -1);
}

}  // namespace sim::lumaview
