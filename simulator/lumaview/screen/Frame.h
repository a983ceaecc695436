// SPDX-License-Identifier: Apache-2.0
/// Finished pixels in memory that the X server can read without a copy.
#ifndef SIMULATOR_LUMAVIEW_SCREEN_FRAME_H
#define SIMULATOR_LUMAVIEW_SCREEN_FRAME_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"
#include "simulator/lumaview/image/Image.h"

namespace sim::lumaview {

/// An anonymous file and its mapping. Its size is sealed, so that a reader in another process never meets a page that
/// is gone.
class SharedMemory {
 public:
  /// All pages are taken at once: a lack of memory is an error here (kOutOfMemory) and not a signal later.
  static Result<std::shared_ptr<SharedMemory>> Create(size_t bytes);
  /// The file alone, zeroed, for another process to write, which takes the memory while it decodes. Errors:
  /// kOutOfMemory.
  static Result<UniqueFd> CreateFile(size_t bytes);
  /// Takes over a file of `CreateFile` when it is written: from now on nobody can, and all its memory is there. Its
  /// pixels are to be read only. It is copied where that is refused: by a process that keeps it mapped for writing, and
  /// now and then (once in 15,000 frames) by the kernel, which has a page in its hands for longer than it waits itself.
  /// Errors: kOutOfMemory.
  static Result<std::shared_ptr<SharedMemory>> Freeze(UniqueFd file, size_t bytes);
  ~SharedMemory();
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;

  uint8_t* GetData() const { return m_data; }
  size_t GetSize() const { return m_size; }
  int GetFd() const { return m_fd.Get(); }

 private:
  static Result<std::shared_ptr<SharedMemory>> Copy(const UniqueFd& file, size_t bytes);
  SharedMemory(UniqueFd fd, uint8_t* data, size_t size) : m_fd(std::move(fd)), m_data(data), m_size(size) {}

  const UniqueFd m_fd;
  uint8_t* const m_data;
  const size_t m_size;
};

/// A picture of one window's size. Whoever makes it writes it through the pointer that `Create` returns; from then on
/// it is handed around as a `FramePtr` and never changes.
class Frame {
 public:
  /// `size`: both sides 1..32767, as X windows have. Content: undefined. Errors: kOutOfMemory.
  static Result<std::shared_ptr<Frame>> Create(Size size);
  /// The two halves of it, for pixels that another process writes in between: `SharedMemory::CreateFile`, `Freeze`.
  static Result<UniqueFd> CreateFile(Size size);
  static Result<std::shared_ptr<const Frame>> Freeze(UniqueFd file, Size size);

  Size GetSize() const { return m_size; }
  size_t GetBytes() const { return m_memory->GetSize(); }
  ImageView GetPixels() { return {GetFirstPixel(), m_size.width, m_size.height, m_size.width}; }
  ConstImageView GetPixels() const { return {GetFirstPixel(), m_size.width, m_size.height, m_size.width}; }
  const std::shared_ptr<SharedMemory>& GetMemory() const { return m_memory; }

 private:
  Frame(Size size, std::shared_ptr<SharedMemory> memory) : m_size(size), m_memory(std::move(memory)) {}
  uint32_t* GetFirstPixel() const { return reinterpret_cast<uint32_t*>(m_memory->GetData()); }

  const Size m_size;
  const std::shared_ptr<SharedMemory> m_memory;
};
using FramePtr = std::shared_ptr<const Frame>;

/// A black frame (0xFF000000).
Result<FramePtr> CreateBlackFrame(Size size);

/// `source` stretched to `size`, each pixel the nearest one: what a window shows in the moment between its change of
/// size and the new decode.
Result<FramePtr> CreateStretchedFrame(const Frame& source, Size size);

/// The few frames that an effect draws into in turn. One thread.
class FramePool {
 public:
  /// At most `frames` exist at a time.
  explicit FramePool(size_t frames) : m_capacity(frames) {}

  /// A frame of `size` that nobody else holds; null when all are held or memory is short.
  std::shared_ptr<Frame> Take(Size size);
  /// Lets go of all frames.
  void Clear() { m_frames.clear(); }

 private:
  const size_t m_capacity;
  std::vector<std::shared_ptr<Frame>> m_frames;
};

}  // namespace sim::lumaview

#endif
