// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_JPEGSCANAHEAD_H
#define SIMULATOR_LUMAVIEW_DECODE_JPEGSCANAHEAD_H

#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "simulator/lumaview/decode/Handover.h"
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

  const std::unique_ptr<JpegScan> m_scan;
  std::vector<Component> m_components;
  size_t m_slots = 0;
  JDIMENSION m_rows = 0;               ///< of MCUs, in the picture
  std::optional<Handover> m_handover;  ///< of rows of MCUs
  std::thread m_thread;
};

}  // namespace sim::lumaview

#endif
