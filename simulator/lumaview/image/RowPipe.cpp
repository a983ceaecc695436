// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/image/RowPipe.h"

#include <algorithm>
#include <cstring>

namespace sim::lumaview {

RowPipe::~RowPipe() {
  Stop();
}

Status RowPipe::Begin(const FrameFormat& format) {
  SIM_TRY(m_next.Begin(format));
  const int64_t pixels = int64_t{format.size.width} * format.size.height;
  if (pixels >= kWorthwhilePixels && std::thread::hardware_concurrency() > format.threads) {
    StartThread(format);
  }
  return Ok();
}

void RowPipe::StartThread(const FrameFormat& format) {
  m_row_bytes = static_cast<size_t>(format.size.width) * static_cast<size_t>(BytesPerPixel(format.layout));
  m_batch_rows = static_cast<int>(std::max<size_t>(kBatchBytes / m_row_bytes, 1));
  for (Batch& batch : m_batches) {
    batch.bytes.resize(m_row_bytes * static_cast<size_t>(m_batch_rows));
  }
  m_thread = std::thread(&RowPipe::Run, this);
}

Status RowPipe::Row(int y, const uint8_t* row) {
  if (!m_thread.joinable()) {
    return m_next.Row(y, row);
  }
  Batch& batch = m_batches[m_filling];
  if (batch.rows == 0) {
    batch.first_row = y;
  }
  uint8_t* place = &batch.bytes[static_cast<size_t>(batch.rows) * m_row_bytes];
  if (row != place) {
    std::memcpy(place, row, m_row_bytes);
  }
  if (++batch.rows == m_batch_rows) {
    GiveBatch();
  }
  return Ok();
}

std::span<uint8_t> RowPipe::GetRoom() {
  if (!m_thread.joinable()) {
    return {};
  }
  Batch& batch = m_batches[m_filling];
  return std::span(batch.bytes).subspan(static_cast<size_t>(batch.rows) * m_row_bytes);
}

/// The second thread gets the batch, and the next one is emptied.
void RowPipe::GiveBatch() {
  m_handover.Give();
  m_handover.AwaitRoom();
  m_filling = (m_filling + 1) % kBatches;
  m_batches[m_filling].rows = 0;
}

Status RowPipe::Finish() {
  Stop();
  return m_error ? Status(*m_error) : Ok();
}

void RowPipe::Stop() {
  if (!m_thread.joinable()) {
    return;
  }
  if (m_batches[m_filling].rows > 0) {
    m_handover.Give();
  }
  m_handover.End();
  m_thread.join();
}

void RowPipe::Run() {
  for (uint32_t at = 0; m_handover.Take(at); ++at) {
    const Batch& batch = m_batches[at % kBatches];
    for (int i = 0; i < batch.rows && !m_error; ++i) {
      if (const Status status = m_next.Row(batch.first_row + i, &batch.bytes[static_cast<size_t>(i) * m_row_bytes]);
          !status) {
        m_error = status.error();
      }
    }
  }
}

}  // namespace sim::lumaview
