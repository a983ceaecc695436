// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/PagesAhead.h"

#include <sys/mman.h>

#include <algorithm>
#include <system_error>

namespace sim::lumaview {
namespace {

/// For less a thread costs more than the faults.
constexpr size_t kWorthAThread = 1 << 20;
/// Nothing else is mapped in the process while a part is taken, not even another thread's stack.
constexpr size_t kPart = 256 << 10;

}  // namespace

PagesAhead::~PagesAhead() {
  m_stop = true;
  if (m_thread.joinable()) {
    m_thread.join();
  }
}

void PagesAhead::Start(std::span<std::byte> memory, From from) {
  if (memory.size() < kWorthAThread) {
    return;
  }
  try {
    m_thread = std::thread([this, memory, from] { Take(memory, from); });
  } catch (const std::system_error&) {  // then the writer has the faults
  }
}

void PagesAhead::Take(std::span<std::byte> memory, From from) const {
  const size_t parts = (memory.size() + kPart - 1) / kPart;
  for (size_t taken = 0; taken < parts && !m_stop; ++taken) {
    const size_t part = from == From::kBegin ? taken : parts - 1 - taken;
    std::byte* begin = memory.data() + part * kPart;
    madvise(begin, std::min(kPart, memory.size() - part * kPart), MADV_POPULATE_WRITE);
  }
}

}  // namespace sim::lumaview
