// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_IMAGE_ROWPIPE_H
#define SIMULATOR_LUMAVIEW_IMAGE_ROWPIPE_H

#include <array>
#include <optional>
#include <thread>
#include <vector>

#include "simulator/lumaview/decode/Decoder.h"
#include "simulator/lumaview/decode/Handover.h"

namespace sim::lumaview {

/// Hands a frame's rows over to `next` on a thread of its own, so that scaling runs beside decoding. Small frames, and
/// all frames where decoding has every core, are passed on at once.
class RowPipe : public RowSink {
 public:
  explicit RowPipe(RowSink& next) : m_next(next) {}
  ~RowPipe() override;
  RowPipe(const RowPipe&) = delete;
  RowPipe& operator=(const RowPipe&) = delete;

  Status Begin(const FrameFormat& format) override;
  Status Row(int y, const uint8_t* row) override;
  std::span<uint8_t> GetRoom() override;

  /// Waits until `next` has had all rows; its first error. To be called once, after the last row.
  Status Finish();

 private:
  static constexpr size_t kBatches = 16;
  static constexpr size_t kBatchBytes = 64 * 1024;  ///< stays in the cache from one core to the other
  static constexpr int64_t kWorthwhilePixels = 500'000;

  struct Batch {
    std::vector<uint8_t> bytes;
    int first_row = 0;
    int rows = 0;
  };

  void StartThread(const FrameFormat& format);
  void Run();
  void GiveBatch();
  void Stop();

  RowSink& m_next;
  size_t m_row_bytes = 0;
  int m_batch_rows = 1;
  std::array<Batch, kBatches> m_batches;
  size_t m_filling = 0;  ///< of `m_batches`, by the decoding thread
  Handover m_handover{kBatches};
  std::optional<Error> m_error;  ///< of the second thread, until it is joined
  std::thread m_thread;
};

}  // namespace sim::lumaview

#endif
