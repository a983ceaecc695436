// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {
namespace {

int64_t NowNanoseconds() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

uint64_t SizeOfRegularFile(int fd) {
  struct stat status {};
  return fstat(fd, &status) == 0 && S_ISREG(status.st_mode) ? static_cast<uint64_t>(status.st_size) : 0;
}

}  // namespace

Result<UniqueFd> OpenScratchFile(uint64_t bytes) {
  const char* folder = std::getenv("TMPDIR");
  UniqueFd file(open(folder != nullptr && *folder != '\0' ? folder : "/var/tmp", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  if (!file || posix_fallocate(file.Get(), 0, static_cast<off_t>(bytes)) != 0) {
    return Error{kOutOfMemory, "no room for " + std::to_string(bytes) + " bytes in TMPDIR"};
  }
  return file;
}

Source::Source(int fd, const Limits& limits, const std::atomic<bool>& cancelled)
    : Source(fd, SizeOfRegularFile(fd), limits, cancelled) {}

Source::Source(int fd, uint64_t size, const Limits& limits, const std::atomic<bool>& cancelled)
    : m_fd(fd), m_limits(limits), m_cancelled(cancelled), m_size(size) {
  RestartClock();
}

Source::Source(std::span<const uint8_t> bytes, const Limits& limits, const std::atomic<bool>& cancelled)
    : m_fd(-1), m_bytes(bytes), m_limits(limits), m_cancelled(cancelled), m_size(bytes.size()) {
  RestartClock();
}

void Source::RestartClock() {
  m_deadline_ns = NowNanoseconds() + static_cast<int64_t>(m_limits.seconds) * 1'000'000'000;
}

size_t Source::Read(std::span<uint8_t> buffer) {
  if (m_fd < 0) {
    const size_t bytes = static_cast<size_t>(std::min<uint64_t>(buffer.size(), m_size - std::min(m_position, m_size)));
    std::copy_n(m_bytes.begin() + static_cast<ptrdiff_t>(std::min(m_position, m_size)), bytes, buffer.begin());
    m_position += bytes;
    return bytes;
  }
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
  if (m_size > std::min<uint64_t>(m_limits.whole_file_bytes, PTRDIFF_MAX)) {
    return Error{kOverLimit, "the file has " + std::to_string(m_size) + " bytes, the limit for this format is " +
                                 std::to_string(m_limits.whole_file_bytes)};
  }
  std::vector<uint8_t> bytes(static_cast<size_t>(m_size));
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
  // Whatever the limits say, the bytes of all pixels must have a number on this machine.
  constexpr uint64_t kMostBytesOfPixel = 8;
  if (width * height > std::min<uint64_t>(limits.whole_pixels, PTRDIFF_MAX / kMostBytesOfPixel)) {
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
