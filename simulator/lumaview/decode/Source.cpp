// SPDX-License-Identifier: Apache-2.0
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {
namespace {

int64_t NowNanoseconds() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

}  // namespace

Source::Source(int fd, const Limits& limits, const std::atomic<bool>& cancelled)
    : m_fd(fd), m_limits(limits), m_cancelled(cancelled) {
  struct stat status {};
  if (fstat(fd, &status) == 0 && S_ISREG(status.st_mode)) {
    m_size = static_cast<uint64_t>(status.st_size);
  }
  RestartClock();
}

void Source::RestartClock() {
  m_deadline_ns = NowNanoseconds() + static_cast<int64_t>(m_limits.seconds) * 1'000'000'000;
}

size_t Source::Read(std::span<uint8_t> buffer) {
  size_t done = 0;
  while (done < buffer.size() && m_position < m_size) {
    const ssize_t got = pread(m_fd, buffer.data() + done, buffer.size() - done, static_cast<off_t>(m_position));
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got <= 0) {
      break;
    }
    done += static_cast<size_t>(got);
    m_position += static_cast<uint64_t>(got);
  }
  return done;
}

Result<std::vector<uint8_t>> Source::ReadAll() {
  if (m_size > m_limits.whole_file_bytes) {
    return Error{kOverLimit, "the file has " + std::to_string(m_size) + " bytes, the limit for this format is " +
                                 std::to_string(m_limits.whole_file_bytes)};
  }
  std::vector<uint8_t> bytes(m_size);
  Seek(0);
  bytes.resize(Read(bytes));
  return bytes;
}

Status Source::CheckRunning() const {
  if (m_cancelled.load(std::memory_order_relaxed)) {
    return Error{kCancelled, "the picture is no longer wanted"};
  }
  if (NowNanoseconds() > m_deadline_ns) {
    return Error{kOverLimit, "decoding took longer than " + std::to_string(m_limits.seconds) + " s"};
  }
  return Ok();
}

Status CheckSize(uint64_t width, uint64_t height, const Limits& limits) {
  if (width == 0 || height == 0) {
    return Error{kDamaged, "the picture has no pixels"};
  }
  if (width > limits.side || height > limits.side || width * height > limits.pixels) {
    return Error{kOverLimit, "the picture is too large: " + std::to_string(width) + " x " + std::to_string(height) +
                                 " pixels, the limit is " + std::to_string(limits.pixels)};
  }
  return Ok();
}

Status CheckWholeSize(uint64_t width, uint64_t height, const Limits& limits) {
  SIM_TRY(CheckSize(width, height, limits));
  if (width * height > limits.whole_pixels) {
    return Error{kOverLimit, "the picture is too large to be held in memory: " + std::to_string(width) + " x " +
                                 std::to_string(height) + " pixels, the limit of this format is " +
                                 std::to_string(limits.whole_pixels)};
  }
  return Ok();
}

Status Decoder::DecodeRightView(Size, RowSink&) {
  return Error{kBadArgument, "the picture has one view only"};
}

}  // namespace sim::lumaview
