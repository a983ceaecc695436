// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/JpegScan.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace sim::lumaview {
namespace {

constexpr int kCoefficients = DCTSIZE2;
constexpr size_t kMostBlocks = 10;  // of an MCU, as the format has it

/// Where the n-th coefficient of the file belongs. A run that leads beyond the last leads to the last, as in libjpeg.
constexpr std::array<uint8_t, kCoefficients + 16> kPlaces = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13,
    6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51, 58, 59, 52, 45, 38, 31,
    39, 46, 53, 60, 61, 54, 47, 55, 62, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63, 63};

JDIMENSION DivideUp(JDIMENSION a, JDIMENSION b) {
  return a / b + (a % b != 0 ? 1 : 0);
}

bool IsOneWholeScan(const jpeg_decompress_struct& header) {
  return !header.progressive_mode && !header.arith_code && header.data_precision == 8 &&
         header.comps_in_scan == header.num_components && header.num_components <= JpegScan::kMostComponents &&
         header.Ss == 0 && header.Se == kCoefficients - 1 && header.Ah == 0 && header.Al == 0;
}

int PixelsOfBlock(const jpeg_component_info& component) {
#if JPEG_LIB_VERSION >= 70
  return component.DCT_h_scaled_size;
#else
  return component.DCT_scaled_size;
#endif
}

bool BuildTable(const JHUFF_TBL* table, HuffmanTable::Kind kind, HuffmanTable& built) {
  return table != nullptr && built.Build(table->bits, table->huffval, kind);
}

}  // namespace

std::unique_ptr<JpegScan> JpegScan::Create(const jpeg_decompress_struct& header, Source& source, uint64_t position) {
  std::unique_ptr<JpegScan> scan(new JpegScan(source, position));
  return scan->Prepare(header) ? std::move(scan) : nullptr;
}

bool JpegScan::Prepare(const jpeg_decompress_struct& header) {
  if (!IsOneWholeScan(header)) {
    return false;
  }
  for (int i = 0; i < header.comps_in_scan; ++i) {
    if (!AddComponent(header, *header.cur_comp_info[i])) {
      return false;
    }
  }
  m_mcus = DivideUp(header.image_width, static_cast<JDIMENSION>(header.max_h_samp_factor * DCTSIZE));
  m_restart_interval = header.restart_interval;
  m_until_restart = m_restart_interval;
  m_bits = BitReader(m_bytes.data());
  return m_blocks.size() <= kMostBlocks;
}

bool JpegScan::AddComponent(const jpeg_decompress_struct& header, const jpeg_component_info& component) {
  const auto dc = static_cast<size_t>(component.dc_tbl_no);
  const auto ac = static_cast<size_t>(component.ac_tbl_no);
  // A component that is alone in its scan comes block by block, whatever its factors say.
  const bool is_alone = header.comps_in_scan == 1 && component.h_samp_factor * component.v_samp_factor != 1;
  if (is_alone || dc >= kTables || ac >= kTables ||
      !BuildTable(header.dc_huff_tbl_ptrs[dc], HuffmanTable::Kind::kDc, m_dc_tables[dc]) ||
      !BuildTable(header.ac_huff_tbl_ptrs[ac], HuffmanTable::Kind::kAc, m_ac_tables[ac])) {
    return false;
  }
  const auto columns = static_cast<JDIMENSION>(component.h_samp_factor);
  for (JDIMENSION row = 0; row < static_cast<JDIMENSION>(component.v_samp_factor); ++row) {
    for (JDIMENSION column = 0; column < columns; ++column) {
      m_blocks.push_back({static_cast<size_t>(component.component_index), row, column, columns, &m_dc_tables[dc],
                          &m_ac_tables[ac], PixelsOfBlock(component) == 1});
    }
  }
  return true;
}

bool JpegScan::ReadRow(const Rows& rows) {
  for (JDIMENSION mcu = 0; mcu < m_mcus; ++mcu) {
    if (m_restart_interval != 0 && m_until_restart-- == 0 && !Restart()) {
      return false;
    }
    if (m_bits.BitsSince(m_bytes.data()) >= m_fill_at) {
      Fill();
    }
    if (!ReadMcu(rows, mcu) || GetBitsLeft() < 0) {
      return false;
    }
  }
  return true;
}

bool JpegScan::ReadMcu(const Rows& rows, JDIMENSION mcu) {
  for (const Block& block : m_blocks) {
    JCOEF* coefficients = rows[block.component][block.row][mcu * block.columns + block.column];
    if (!(block.is_flat ? ReadBlock<true>(block, coefficients) : ReadBlock<false>(block, coefficients))) {
      return false;
    }
  }
  return true;
}

template <bool kIsFlat>
bool JpegScan::ReadBlock(const Block& block, JCOEF* coefficients) {
  constexpr int kMostBitsAtOnce = 31;
  BitReader bits = m_bits;  // in the processor's registers meanwhile
  bits.Refill();
  const HuffmanTable::Coefficient difference = block.dc->Read(bits);
  int& mean = m_means[block.component];
  mean += difference.value;
  if (difference.run == HuffmanTable::kNoCode || mean != static_cast<JCOEF>(mean)) {
    return false;
  }
  if (!kIsFlat) {
    std::memset(coefficients, 0, sizeof(JBLOCK));
  }
  coefficients[0] = static_cast<JCOEF>(mean);
  for (size_t at = 1; at < kCoefficients; ++at) {
    if (bits.GetCount() < kMostBitsAtOnce) {
      bits.Refill();
    }
    const HuffmanTable::Coefficient next = block.ac->Read(bits);
    if (next.run >= HuffmanTable::kEnd) {
      if (next.run == HuffmanTable::kNoCode) {
        return false;
      }
      break;
    }
    at += static_cast<size_t>(next.run);
    if (!kIsFlat) {
      coefficients[kPlaces[at]] = static_cast<JCOEF>(next.value);
    }
  }
  m_bits = bits;
  return true;
}

/// To be called where an interval ends, which must be where its data do.
bool JpegScan::Restart() {
  Fill();
  if (m_marker != JPEG_RST0 + m_next_restart || GetBitsLeft() >= 8) {
    return false;
  }
  m_next_restart = (m_next_restart + 1) % 8;
  m_until_restart = m_restart_interval - 1;
  m_means = {};
  m_marker = -1;
  m_end = 0;
  m_bits = BitReader(m_bytes.data());
  m_fill_at = 0;
  return true;
}

/// Negative when bits were taken that the scan does not have.
int64_t JpegScan::GetBitsLeft() const {
  return static_cast<int64_t>(m_end) * 8 - m_bits.BitsSince(m_bytes.data());
}

/// Brings what is left to the front and more behind it, so that there is a whole MCU or the data's end.
void JpegScan::Fill() {
  const auto taken = static_cast<size_t>(m_end == 0 ? 0 : m_bits.BitsSince(m_bytes.data()));
  std::memmove(m_bytes.data(), m_bytes.data() + taken / 8, m_end - taken / 8);
  m_end -= taken / 8;
  while (m_marker < 0 && m_end < kMcuBytes) {
    FillFromRaw();
  }
  std::memset(m_bytes.data() + m_end, 0, kMcuBytes + BitReader::kAhead);
  m_fill_at = m_marker < 0 ? static_cast<int64_t>(m_end - kMcuBytes) * 8 + 1 : std::numeric_limits<int64_t>::max();
  m_bits = BitReader(m_bytes.data());
  m_bits.Refill();
  m_bits.Drop(static_cast<int>(taken % 8));
}

/// Takes what the file has up to a marker or the buffer's end; a zero behind 0xFF only says that it is no marker.
void JpegScan::FillFromRaw() {
  if (m_raw_begin == m_raw_end) {
    m_source.Seek(m_position);
    m_raw_begin = 0;
    m_raw_end = m_source.Read(m_raw);
    m_position += m_raw_end;
    m_marker = m_raw_end == 0 ? 0 : -1;
  }
  while (m_raw_begin < m_raw_end && m_marker < 0) {
    const uint8_t* from = &m_raw[m_raw_begin];
    if (m_after_ff) {
      m_after_ff = false;
      ++m_raw_begin;
      if (*from == 0) {
        m_bytes[m_end++] = 0xFF;
      } else {
        m_marker = *from;
      }
      continue;
    }
    const size_t most = m_raw_end - m_raw_begin;
    const void* ff = std::memchr(from, 0xFF, most);
    const size_t bytes = ff != nullptr ? static_cast<size_t>(static_cast<const uint8_t*>(ff) - from) : most;
    std::memcpy(m_bytes.data() + m_end, from, bytes);
    m_end += bytes;
    m_after_ff = ff != nullptr;
    m_raw_begin += bytes + (m_after_ff ? 1 : 0);
  }
}

}  // namespace sim::lumaview
