// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_JPEGSCAN_H
#define SIMULATOR_LUMAVIEW_DECODE_JPEGSCAN_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
// jpeglib.h needs FILE and size_t before it.
#include <jpeglib.h>

#include <memory>
#include <vector>

#include "simulator/lumaview/decode/BitReader.h"
#include "simulator/lumaview/decode/Decoder.h"
#include "simulator/lumaview/decode/HuffmanTable.h"

namespace sim::lumaview {

/// The coefficients of a baseline JPEG's one scan, read from its bits: the part of decoding that takes longest, without
/// the rest, which libjpeg does beside it. Only files without a fault are read to the end: what to make of a damaged
/// one is libjpeg's business.
class JpegScan {
 public:
  static constexpr int kMostComponents = 4;
  /// Where a row of MCUs goes: by component, as many rows of blocks as it has in an MCU.
  using Rows = std::array<JBLOCKARRAY, kMostComponents>;

  /// `header` is that of the file, read up to its first scan, whose bits begin at `position` of `source`; its scale is
  /// chosen. Borrows `source`, and no more than where it reads is touched. Null: this scan is of another kind.
  static std::unique_ptr<JpegScan> Create(const jpeg_decompress_struct& header, Source& source, uint64_t position);

  /// The next row of MCUs. False: there is something in it that a file without a fault does not have.
  bool ReadRow(const Rows& rows);

 private:
  /// A block of an MCU.
  struct Block {
    size_t component;
    JDIMENSION row;     ///< among those of the component
    JDIMENSION column;  ///< likewise
    JDIMENSION columns;
    const HuffmanTable* dc;
    const HuffmanTable* ac;
    bool is_flat;  ///< drawn as one pixel, so only its mean is kept
  };

  static constexpr size_t kTables = NUM_HUFF_TBLS;
  /// An MCU has at most ten blocks of 64 coefficients of 31 bits.
  static constexpr size_t kMcuBytes = 10 * 64 * 31 / 8;
  static constexpr size_t kRawBytes = 64 * 1024;

  JpegScan(Source& source, uint64_t position) : m_source(source), m_position(position) {}
  bool Prepare(const jpeg_decompress_struct& header);
  bool AddComponent(const jpeg_decompress_struct& header, const jpeg_component_info& component);
  bool ReadMcu(const Rows& rows, JDIMENSION mcu);
  template <bool kIsFlat>
  bool ReadBlock(const Block& block, JCOEF* coefficients);
  bool Restart();
  void Fill();
  void FillFromRaw();
  int64_t GetBitsLeft() const;

  Source& m_source;
  uint64_t m_position;
  std::vector<Block> m_blocks;
  JDIMENSION m_mcus = 0;  ///< in a row
  std::array<HuffmanTable, kTables> m_dc_tables;
  std::array<HuffmanTable, kTables> m_ac_tables;
  std::array<int, kMostComponents> m_means{};  ///< of each component's last block
  unsigned int m_restart_interval = 0;         ///< in MCUs; 0: none
  unsigned int m_until_restart = 0;
  int m_next_restart = 0;

  std::array<uint8_t, kRawBytes> m_raw;  ///< as the file has it
  size_t m_raw_begin = 0;
  size_t m_raw_end = 0;
  bool m_after_ff = false;
  int m_marker = -1;  ///< that ends `m_bytes`; -1: they go on; 0: the file's end
  std::array<uint8_t, kMcuBytes + kRawBytes + kMcuBytes + BitReader::kAhead> m_bytes;  ///< the bits, then zeros
  size_t m_end = 0;                                                                    ///< of those in `m_bytes`
  int64_t m_fill_at = 0;  ///< bits of `m_bytes`; from there on an MCU may not fit
  BitReader m_bits;
};

}  // namespace sim::lumaview

#endif
