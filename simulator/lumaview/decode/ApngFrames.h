// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_APNGFRAMES_H
#define SIMULATOR_LUMAVIEW_DECODE_APNGFRAMES_H

#include <vector>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {

/// One frame of an animated PNG: its control chunk, and where its data stands.
struct ApngFrame {
  enum class Disposal : uint8_t { kKeep = 0, kClear = 1, kPrevious = 2 };

  Rect area;
  int delay_ms = 0;
  Disposal disposal = Disposal::kKeep;
  bool blend = false;  ///< over what is there, instead of in its place

  struct Data {
    uint64_t position = 0;  ///< of the compressed bytes
    uint32_t length = 0;
  };
  std::vector<Data> data;
};

struct Apng {
  int loops = 0;                  ///< 0 = for ever
  std::vector<uint8_t> header;    ///< the 13 bytes of IHDR
  std::vector<uint8_t> shared;    ///< whole chunks that every frame needs: palette, transparency, profile
  std::vector<ApngFrame> frames;  ///< empty = not animated
};

/// Lists the frames of an animated PNG; an animation whose chunks make no sense is none. Errors: kOverLimit,
/// kCancelled.
Result<Apng> ReadApng(Source& source);

/// A PNG stream of one frame alone, made while it is read.
class ApngFrameStream {
 public:
  /// All three outlive the stream.
  ApngFrameStream(Source& source, const Apng& apng, const ApngFrame& frame);
  size_t Read(std::span<uint8_t> to);

 private:
  void AppendChunk(const char* name, std::span<const uint8_t> data);
  bool FillNext();

  Source& m_source;
  const ApngFrame& m_frame;
  size_t m_next_data = 0;
  bool m_is_ended = false;
  std::vector<uint8_t> m_ready;
  size_t m_taken = 0;
};

}  // namespace sim::lumaview

#endif
