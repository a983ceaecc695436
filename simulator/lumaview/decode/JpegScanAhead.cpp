// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/JpegScanAhead.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace sim::lumaview {

std::unique_ptr<JpegScanAhead> JpegScanAhead::Start(const jpeg_decompress_struct& header, Source& source,
                                                    uint64_t position) {
  auto scan = JpegScan::Create(header, source, position);
  if (scan == nullptr) {
    return nullptr;
  }
  std::unique_ptr<JpegScanAhead> ahead(new JpegScanAhead(std::move(scan)));
  ahead->MakeRoom(header);
  return ahead->StartThread() ? std::move(ahead) : nullptr;
}

JpegScanAhead::~JpegScanAhead() {
  if (m_thread.joinable()) {
    m_handover->Refuse();
    m_thread.join();
  }
}

void JpegScanAhead::MakeRoom(const jpeg_decompress_struct& header) {
  const auto mcu_width = static_cast<JDIMENSION>(header.max_h_samp_factor * DCTSIZE);
  const size_t mcus = header.image_width / mcu_width + 1;
  size_t slot_bytes = 0;
  for (int i = 0; i < header.num_components; ++i) {
    const jpeg_component_info& info = header.comp_info[i];
    slot_bytes += mcus * static_cast<size_t>(info.h_samp_factor * info.v_samp_factor) * sizeof(JBLOCK);
  }
  m_rows = header.total_iMCU_rows;
  m_slots = std::clamp(kBytesAhead / slot_bytes, kLeastSlots, kMostSlots);
  m_handover.emplace(static_cast<uint32_t>(m_slots));
  for (int i = 0; i < header.num_components; ++i) {
    const jpeg_component_info& info = header.comp_info[i];
    const size_t row_values = mcus * static_cast<size_t>(info.h_samp_factor) * DCTSIZE2;
    Component& component = m_components.emplace_back();
    component.rows = static_cast<JDIMENSION>(info.v_samp_factor);
    const size_t rows = m_slots * component.rows;
    component.memory.resize((rows + 1) * row_values);
    for (size_t row = 0; row < rows; ++row) {
      component.list.push_back(reinterpret_cast<JBLOCKROW>(&component.memory[row * row_values]));
    }
    component.unread.assign(component.rows, reinterpret_cast<JBLOCKROW>(&component.memory[rows * row_values]));
  }
}

bool JpegScanAhead::StartThread() {
  try {
    m_thread = std::thread(&JpegScanAhead::Run, this);
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

void JpegScanAhead::Run() {
  for (JDIMENSION row = 0; row < m_rows && m_handover->AwaitRoom(); ++row) {
    JpegScan::Rows rows{};
    for (size_t i = 0; i < m_components.size(); ++i) {
      rows[i] = &m_components[i].list[row % m_slots * m_components[i].rows];
    }
    if (!m_scan->ReadRow(rows)) {
      break;
    }
    m_handover->Give();
  }
  m_handover->End();
}

JBLOCKARRAY JpegScanAhead::Take(size_t component, JDIMENSION first) {
  Component& wanted = m_components[component];
  const JDIMENSION row = first / wanted.rows;
  return m_handover->Take(row) ? &wanted.list[row % m_slots * wanted.rows] : nullptr;
}

}  // namespace sim::lumaview
