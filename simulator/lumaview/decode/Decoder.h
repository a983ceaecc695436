// SPDX-License-Identifier: Apache-2.0
/// The one interface of all picture formats: a file descriptor goes in, rows of pixels come out, top to bottom, as the
/// file stores them. Scaling, turning, colour conversion and placing belong to the pipeline that receives the rows, so
/// that a format is one file, and its memory is a few rows wherever its library allows that.
#ifndef SIMULATOR_LUMAVIEW_DECODE_DECODER_H
#define SIMULATOR_LUMAVIEW_DECODE_DECODER_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/lumaview.h"
#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"
#include "simulator/lumaview/decode/Limits.h"
#include "simulator/lumaview/image/Image.h"

namespace sim::lumaview {

/// The library's error numbers, as every `lumaview_*` call returns them.
enum ErrorCode : int {
  kBadArgument = -1,
  kNotReady = -2,
  kOutOfMemory = -3,
  kCannotOpen = -4,
  kUnknownFormat = -5,
  kDamaged = -6,
  kDisplayFailed = -7,
  kOverLimit = -8,
  kCancelled = -9,  ///< inside the library only: the picture was destroyed meanwhile
};

/// An unlinked file of `bytes` bytes in TMPDIR, all of them reserved: a page of a file on a full disk would end the
/// process that touches it. Errors: kOutOfMemory.
Result<UniqueFd> OpenScratchFile(uint64_t bytes);

/// Where a decoder reads. The descriptor is of a regular file and is never mapped: the file may shrink meanwhile.
/// One thread at a time.
class Source {
 public:
  using ScratchOpener = std::function<Result<UniqueFd>(uint64_t bytes)>;

  /// Borrows `fd`. `limits` and `cancelled` outlive the source.
  Source(int fd, const Limits& limits, const std::atomic<bool>& cancelled);
  /// As above, of a file that had `size` bytes when it was opened: for a process that may not ask.
  Source(int fd, uint64_t size, const Limits& limits, const std::atomic<bool>& cancelled);
  /// Reads borrowed bytes in memory.
  Source(std::span<const uint8_t> bytes, const Limits& limits, const std::atomic<bool>& cancelled);

  uint64_t GetSize() const { return m_size; }
  uint64_t GetPosition() const { return m_position; }
  void Seek(uint64_t position) { m_position = position; }
  /// Reads up to `buffer.size()` bytes; fewer only at the end of the file or on an error. 0 at the end.
  size_t Read(std::span<uint8_t> buffer);
  /// The whole file, for libraries that want it in one piece. Over the limit for such files: kOverLimit.
  Result<std::vector<uint8_t>> ReadAll();

  /// Room beside the memory, for what a decoder must keep and is too much for it; as `OpenScratchFile`, unless another
  /// way was set.
  Result<UniqueFd> OpenScratch(uint64_t bytes) const { return m_open_scratch(bytes); }
  void SetScratchOpener(ScratchOpener opener) { m_open_scratch = std::move(opener); }

  const Limits& GetLimits() const { return m_limits; }
  /// Gives the decode that starts now its whole time; the time runs from the construction on.
  void RestartClock();
  /// kCancelled once the picture is no longer wanted, kOverLimit once its time is up; decoders ask at least every few
  /// rows.
  Status CheckRunning() const;
  bool IsCancelled() const { return !CheckRunning(); }

 private:
  const int m_fd;  ///< -1: `m_bytes` is read
  const std::span<const uint8_t> m_bytes;
  const Limits& m_limits;
  const std::atomic<bool>& m_cancelled;
  ScratchOpener m_open_scratch = OpenScratchFile;
  uint64_t m_size = 0;
  uint64_t m_position = 0;
  int64_t m_deadline_ns = 0;  ///< CLOCK_MONOTONIC, from the limit for one decode
};

/// How the four bytes (or one) of a stored pixel are to be read.
enum class PixelLayout : uint8_t {
  kBgrx,  ///< 4 bytes B, G, R, unused
  kBgra,  ///< 4 bytes B, G, R, alpha not multiplied in
  kGray,  ///< 1 byte
  kCmyk,  ///< 4 bytes C, M, Y, K; 0 = no ink
};
constexpr int BytesPerPixel(PixelLayout layout) {
  return layout == PixelLayout::kGray ? 1 : 4;
}

/// How stored rows become an upright picture: EXIF's numbers 1..8, 1 = as stored.
using Orientation = uint8_t;

/// What is known once the header was read.
struct PictureInfo {
  picture_type_e type = LUMAVIEW_TYPE_UNKNOWN;
  Size stored;                  ///< pixels as stored, 1..Limits::side
  Orientation orientation = 1;  ///< what remains to be done; decoders whose library turns the picture say 1
  int frames = 1;               ///< at least 1
  int loops = 1;                ///< how often the animation plays; 0 = for ever
  bool stereo = false;          ///< two views, as the format says
};

/// What is fixed for the rows that follow.
struct FrameFormat {
  Size size;  ///< of the rows delivered: the stored size, or smaller where the decoder scaled
  PixelLayout layout = PixelLayout::kBgrx;
  std::span<const uint8_t> icc;  ///< embedded profile, valid during the decode; empty = sRGB
  unsigned int threads = 1;      ///< that decode at the same time
};

/// Receives one frame. All calls come on the decoding thread.
class RowSink {
 public:
  virtual ~RowSink() = default;
  /// Once, before the first row. An error ends the decode and is what `Decode` returns.
  virtual Status Begin(const FrameFormat& format) = 0;
  /// Row `y` counted from 0, each exactly once and in order; `row` is valid during the call.
  virtual Status Row(int y, const uint8_t* row) = 0;
  /// Room for the next rows as they lie in memory, one behind the other; empty where there is none. A decoder that
  /// writes them there saves a copy; it still calls `Row` for each, with its place. Valid until the next call.
  virtual std::span<uint8_t> GetRoom() { return {}; }
};

/// One open picture.
class Decoder {
 public:
  virtual ~Decoder() = default;

  virtual const PictureInfo& GetInfo() const = 0;

  /// Delivers the next frame (the first one at first; after the last the first again).
  /// `ideal`: stored-orientation size that the caller will scale down to; a decoder that can scale while it decodes
  /// delivers the smallest size it has that is not below it in either direction; others ignore it.
  /// A damaged rest of a file: rows that are missing are an error (kDamaged), also when some were delivered.
  virtual Status Decode(Size ideal, RowSink& sink) = 0;

  /// The right view of a picture whose info says `stereo`; `Decode` delivers the left one. Otherwise kBadArgument.
  virtual Status DecodeRightView(Size ideal, RowSink& sink);

  /// How long the frame delivered last is to be shown; 0 for a still picture.
  virtual int GetFrameMilliseconds() const { return 0; }

  /// The picture that EXIF carries as its preview, a JPEG; empty = none.
  virtual std::vector<uint8_t> GetExifThumbnail() const { return {}; }
};

/// kDamaged for a picture without pixels, kOverLimit for one above the limits of every format.
Status CheckSize(uint64_t width, uint64_t height, const Limits& limits);
/// As `CheckSize`, also against the limit of the formats that hold the whole picture in memory.
Status CheckWholeSize(uint64_t width, uint64_t height, const Limits& limits);

/// Three answers, not two: kUnknownFormat = not mine, ask the next; any other error = mine and broken; a decoder.
using DecoderFactory = Result<std::unique_ptr<Decoder>> (*)(Source& source);

/// Finds the format by content, never by name, and reads the header. `source` outlives the decoder.
/// Errors: kUnknownFormat, kDamaged, kOverLimit, kOutOfMemory, kCancelled.
Result<std::unique_ptr<Decoder>> OpenPicture(Source& source);

}  // namespace sim::lumaview

#endif
