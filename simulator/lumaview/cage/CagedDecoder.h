// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_CAGE_CAGEDDECODER_H
#define SIMULATOR_LUMAVIEW_CAGE_CAGEDDECODER_H

#include <memory>
#include <utility>

#include "simulator/lumaview/cage/Cage.h"
#include "simulator/lumaview/cage/Message.h"
#include "simulator/lumaview/decode/Cancellation.h"

namespace sim::lumaview {

/// One picture that is open in a process of the cage, which ends with this object. Every call waits for the process'
/// answer, its end, the cancelling, or the limit of time, whichever comes first. One thread at a time.
class CagedDecoder {
 public:
  /// `file` is borrowed for the call; `cage` and `cancelled` outlive the decoder. Errors: as `OpenPicture`; kDamaged
  /// when the process ended or lied; kNotReady when the cage is lost.
  static Result<std::unique_ptr<CagedDecoder>> Open(Cage& cage, int file, uint64_t bytes,
                                                    const Cancellation& cancelled);

  const PictureInfo& GetInfo() const { return m_info; }
  /// Draws the next frame into the file `memory`, which has room for `size`. Errors: as `RenderFrame`, and as above.
  Status Render(const View& view, Size size, int memory);
  /// As `RenderPreview` does.
  Status RenderPreview(Size size, int memory);
  int GetFrameMilliseconds() const { return m_milliseconds; }

 private:
  CagedDecoder(Cage& cage, UniqueFd channel, const Cancellation& cancelled)
      : m_cage(cage), m_channel(std::move(channel)), m_cancelled(cancelled) {}

  Status ReadHeader(int file, uint64_t bytes);
  Result<cage::Message> Ask(const cage::Message& request, int attached, cage::Verb expected);
  Result<cage::Message> AwaitAnswer(cage::Verb expected);
  Status AwaitPacket(int64_t deadline_ms) const;
  void GiveScratch(uint64_t bytes);
  Status Draw(cage::Verb verb, const View& view, Size size, int memory);

  Cage& m_cage;
  UniqueFd m_channel;  ///< empty once the process is given up
  const Cancellation& m_cancelled;
  PictureInfo m_info;
  int m_milliseconds = 0;
  bool m_has_scratch = false;
};

}  // namespace sim::lumaview

#endif
