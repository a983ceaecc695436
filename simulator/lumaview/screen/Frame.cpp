// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/screen/Frame.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {
namespace {

Error OutOfMemory(size_t bytes, int error) {
  return {kOutOfMemory, "no memory for a frame of " + std::to_string(bytes) + " bytes: " + std::strerror(error)};
}

/// The highest number where a size_t has too few bits for the right one.
size_t BytesOf(Size size) {
  const uint64_t bytes = static_cast<uint64_t>(size.width) * static_cast<uint64_t>(size.height) * sizeof(uint32_t);
  return static_cast<size_t>(std::min<uint64_t>(bytes, SIZE_MAX));
}

/// Whether a file that nobody may write can still be mapped the way X servers do it, shared and for reading: kernels
/// before 6.7 refuse that.
bool SealedFilesCanBeShared() {
  static const bool can = [] {
    constexpr size_t kBytes = 4096;
    const UniqueFd fd(memfd_create("lumaview-try", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (ftruncate(fd.Get(), kBytes) != 0 || fcntl(fd.Get(), F_ADD_SEALS, F_SEAL_WRITE) != 0) {
      return false;
    }
    void* data = mmap(nullptr, kBytes, PROT_READ, MAP_SHARED, fd.Get(), 0);
    return data != MAP_FAILED && munmap(data, kBytes) == 0;
  }();
  return can;
}

/// Takes all memory that a file may have: who met a hole later, where there is no memory left, would be killed.
Status TakeMemory(const UniqueFd& file, size_t bytes) {
  const int error = posix_fallocate(file.Get(), 0, static_cast<off_t>(bytes));
  return error == 0 ? Ok() : Status(OutOfMemory(bytes, error));
}

/// Reads through the file and not through a mapping: a page that is missing is an error then and no signal.
Status ReadWhole(const UniqueFd& file, uint8_t* to, size_t bytes) {
  for (size_t done = 0; done < bytes;) {
    const ssize_t got = pread(file.Get(), to + done, bytes - done, static_cast<off_t>(done));
    if (got <= 0 && (got == 0 || errno != EINTR)) {
      return OutOfMemory(bytes, got == 0 ? ENODATA : errno);
    }
    done += static_cast<size_t>(std::max<ssize_t>(got, 0));
  }
  return Ok();
}

}  // namespace

Result<UniqueFd> SharedMemory::CreateFile(size_t bytes) {
  if (bytes > PTRDIFF_MAX) {
    return OutOfMemory(bytes, ENOMEM);  // no mapping can be that long, so no file is made
  }
  UniqueFd fd(memfd_create("lumaview-frame", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!fd) {
    return OutOfMemory(bytes, errno);
  }
  if (ftruncate(fd.Get(), static_cast<off_t>(bytes)) != 0) {
    return OutOfMemory(bytes, errno);
  }
  fcntl(fd.Get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW);
  return fd;
}

Result<std::shared_ptr<SharedMemory>> SharedMemory::Create(size_t bytes) {
  auto fd = CreateFile(bytes);
  if (!fd) {
    return fd.error();
  }
  SIM_TRY(TakeMemory(*fd, bytes));
  void* data = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, fd->Get(), 0);
  if (data == MAP_FAILED) {
    return OutOfMemory(bytes, errno);
  }
  return std::shared_ptr<SharedMemory>(new SharedMemory(std::move(*fd), static_cast<uint8_t*>(data), bytes));
}

Result<std::shared_ptr<SharedMemory>> SharedMemory::Freeze(UniqueFd file, size_t bytes) {
  // Before 6.7 a mapping that is there can go on writing; it is its owner's own picture that it spoils.
  const int seal = SealedFilesCanBeShared() ? F_SEAL_WRITE : F_SEAL_FUTURE_WRITE;
  if (fcntl(file.Get(), F_ADD_SEALS, seal | F_SEAL_SEAL) != 0 && errno == EBUSY) {
    return Copy(file, bytes);
  }
  SIM_TRY(TakeMemory(file, bytes));  // now that nobody can make holes
  void* data = mmap(nullptr, bytes, PROT_READ, MAP_SHARED, file.Get(), 0);
  if (data == MAP_FAILED) {
    return OutOfMemory(bytes, errno);
  }
  return std::shared_ptr<SharedMemory>(new SharedMemory(std::move(file), static_cast<uint8_t*>(data), bytes));
}

Result<std::shared_ptr<SharedMemory>> SharedMemory::Copy(const UniqueFd& file, size_t bytes) {
  auto copy = Create(bytes);
  if (copy) {
    SIM_TRY(ReadWhole(file, (*copy)->GetData(), bytes));
  }
  return copy;
}

SharedMemory::~SharedMemory() {
  munmap(m_data, m_size);
}

Result<std::shared_ptr<Frame>> Frame::Create(Size size) {
  auto memory = SharedMemory::Create(BytesOf(size));
  if (!memory) {
    return memory.error();
  }
  return std::shared_ptr<Frame>(new Frame(size, std::move(*memory)));
}

Result<UniqueFd> Frame::CreateFile(Size size) {
  return SharedMemory::CreateFile(BytesOf(size));
}

Result<FramePtr> Frame::Freeze(UniqueFd file, Size size) {
  auto memory = SharedMemory::Freeze(std::move(file), BytesOf(size));
  if (!memory) {
    return memory.error();
  }
  return FramePtr(new Frame(size, std::move(*memory)));
}

Result<FramePtr> CreateBlackFrame(Size size) {
  auto frame = Frame::Create(size);
  if (!frame) {
    return frame.error();
  }
  const ImageView pixels = (*frame)->GetPixels();
  std::fill_n(pixels.pixels, static_cast<size_t>(size.width) * static_cast<size_t>(size.height), 0xFF000000u);
  return FramePtr(std::move(*frame));
}

Result<FramePtr> CreateStretchedFrame(const Frame& source, Size size) {
  auto frame = Frame::Create(size);
  if (!frame) {
    return frame.error();
  }
  const ConstImageView from = source.GetPixels();
  const ImageView to = (*frame)->GetPixels();
  std::vector<int> columns(static_cast<size_t>(size.width));
  for (int x = 0; x < size.width; ++x) {
    columns[static_cast<size_t>(x)] = static_cast<int>(static_cast<int64_t>(x) * from.width / size.width);
  }
  for (int y = 0; y < size.height; ++y) {
    const uint32_t* row = from.Row(static_cast<int>(static_cast<int64_t>(y) * from.height / size.height));
    std::transform(columns.begin(), columns.end(), to.Row(y), [row](int column) { return row[column]; });
  }
  return FramePtr(std::move(*frame));
}

std::shared_ptr<Frame> FramePool::Take(Size size) {
  std::erase_if(m_frames, [size](const auto& frame) { return frame->GetSize() != size; });
  for (const auto& frame : m_frames) {
    if (frame.use_count() == 1) {
      return frame;
    }
  }
  if (m_frames.size() >= m_capacity) {
    return nullptr;
  }
  auto made = Frame::Create(size);
  if (!made) {
    return nullptr;
  }
  return m_frames.emplace_back(std::move(*made));
}

}  // namespace sim::lumaview
