// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/JpegScanAhead.h"

#include <sched.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace sim::lumaview {
namespace {

/// The calling thread goes to another of its processors, if it has one, and may come back later.
void LeaveProcessor(int processor) {
  cpu_set_t all;
  if (sched_getaffinity(0, sizeof all, &all) != 0 || CPU_COUNT(&all) < 2) {
    return;
  }
  cpu_set_t others = all;
  CPU_CLR(static_cast<size_t>(processor), &others);
  if (sched_setaffinity(0, sizeof others, &others) == 0) {
    sched_setaffinity(0, sizeof all, &all);
  }
}

}  // namespace

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
    {
      const std::lock_guard lock(m_mutex);
      m_ending = true;
    }
    m_room.notify_one();
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
  JDIMENSION row = 0;
  while (row < m_rows && AwaitRoom()) {
    JpegScan::Rows rows{};
    for (size_t i = 0; i < m_components.size(); ++i) {
      rows[i] = &m_components[i].list[row % m_slots * m_components[i].rows];
    }
    if (!m_scan->ReadRow(rows)) {
      break;
    }
    Tell(++row, false);
    KeepApart();
  }
  Tell(row, true);
}

void JpegScanAhead::KeepApart() {
  if (const int processor = sched_getcpu(); processor == m_takers_processor) {
    LeaveProcessor(processor);
  }
}

bool JpegScanAhead::AwaitRoom() {
  std::unique_lock lock(m_mutex);
  if (m_read >= m_over + m_slots) {
    m_room.wait(lock, [this] { return m_read <= m_over + m_slots / 2 || m_ending; });
  }
  return !m_ending;
}

void JpegScanAhead::Tell(JDIMENSION read, bool ended) {
  const std::lock_guard lock(m_mutex);
  m_read = read;
  m_ended = ended;
  if (m_ended || m_read > m_over + m_slots / 2) {
    m_news.notify_one();
  }
}

JBLOCKARRAY JpegScanAhead::Take(size_t component, JDIMENSION first) {
  Component& wanted = m_components[component];
  const JDIMENSION row = first / wanted.rows;
  std::unique_lock lock(m_mutex);
  m_takers_processor = sched_getcpu();
  m_over = std::max(m_over, row);
  if (m_read <= m_over + m_slots / 2) {
    m_room.notify_one();
  }
  if (m_read <= row) {
    m_news.wait(lock, [&] { return m_read > row + m_slots / 2 || m_ended; });
  }
  return m_read > row ? &wanted.list[row % m_slots * wanted.rows] : nullptr;
}

}  // namespace sim::lumaview
