// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_JPEGSCANAHEAD_H
#define SIMULATOR_LUMAVIEW_DECODE_JPEGSCANAHEAD_H

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "simulator/lumaview/decode/JpegScan.h"

namespace sim::lumaview {

/// Reads a scan's coefficients on a thread of its own, some rows of MCUs ahead of libjpeg, which takes them from here
/// as it would from its own memory. One thread takes.
class JpegScanAhead {
 public:
  /// As `JpegScan::Create`; nobody else reads `source` while the object is there. Null also where there is no thread.
  static std::unique_ptr<JpegScanAhead> Start(const jpeg_decompress_struct& header, Source& source, uint64_t position);
  ~JpegScanAhead();
  JpegScanAhead(const JpegScanAhead&) = delete;
  JpegScanAhead& operator=(const JpegScanAhead&) = delete;

  /// A component's rows of blocks that belong to the row of MCUs with its row `first`; waits for them. Rows of MCUs
  /// before it are over for all components. Null: something is wrong with this row of MCUs.
  JBLOCKARRAY Take(size_t component, JDIMENSION first);
  /// As many rows of blocks to write to, which nobody looks at.
  JBLOCKARRAY GetUnread(size_t component) { return m_components[component].unread.data(); }

 private:
  /// What is read ahead stays near the processors, and is no more where rows are long.
  static constexpr size_t kBytesAhead = 1 << 22;
  static constexpr size_t kLeastSlots = 2;
  static constexpr size_t kMostSlots = 32;

  /// A slot holds a row of MCUs.
  struct Component {
    JDIMENSION rows = 0;          ///< of blocks, in a slot
    std::vector<JCOEF> memory;    ///< of all slots, and one row that nobody looks at
    std::vector<JBLOCKROW> list;  ///< the rows of all slots
    std::vector<JBLOCKROW> unread;
  };

  explicit JpegScanAhead(std::unique_ptr<JpegScan> scan) : m_scan(std::move(scan)) {}
  void MakeRoom(const jpeg_decompress_struct& header);
  bool StartThread();
  void Run();
  /// For a row of MCUs more; false when nobody wants it.
  bool AwaitRoom();
  /// Rows of MCUs that are good, and whether there will be no more.
  void Tell(JDIMENSION read, bool ended);
  /// Where kernels take the machine to be busy they wake a thread on the processor of who wakes it, and two that wait
  /// for each other by turns would share it to the end while another is idle.
  void KeepApart();

  const std::unique_ptr<JpegScan> m_scan;
  std::vector<Component> m_components;
  size_t m_slots = 0;
  JDIMENSION m_rows = 0;  ///< of MCUs, in the picture

  std::atomic<int> m_takers_processor{-1};

  // Who has to wait waits for half of the room: to sleep and be woken row by row takes longer than the work.
  std::mutex m_mutex;  ///< of what follows, but for the thread
  std::condition_variable m_room;
  std::condition_variable m_news;
  JDIMENSION m_read = 0;  ///< rows of MCUs that are good
  JDIMENSION m_over = 0;  ///< rows that nobody takes again, read or not
  bool m_ended = false;   ///< no more are read
  bool m_ending = false;  ///< no more are wanted

  std::thread m_thread;
};

}  // namespace sim::lumaview

#endif
