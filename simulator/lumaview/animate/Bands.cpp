// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/animate/Bands.h"

#include <system_error>

#include "simulator/base/Thread.h"

namespace sim::lumaview {
namespace {

/// One core draws any effect of this many pixels well within a frame's time (1920 x 1200).
constexpr int64_t kPixelsOfOneBand = 1920 * 1200;

}  // namespace

Bands::~Bands() {
  if (!m_thread.joinable()) {
    return;
  }
  {
    const std::lock_guard lock(m_mutex);
    m_ending = true;
  }
  m_changed.notify_all();
  m_thread.join();
}

void Bands::Run(Size size, const Draw& draw) {
  if (int64_t{size.width} * size.height > kPixelsOfOneBand && !m_thread.joinable()) {
    try {
      m_thread = StartThread("lumaview-band", [this] { Help(); });
    } catch (const std::system_error&) {
      // One core has to do.
    }
  }
  if (!m_thread.joinable()) {
    draw(0, size.height);
    return;
  }
  const int half = size.height / 2;
  {
    const std::lock_guard lock(m_mutex);
    m_draw = &draw;
    m_first = half;
    m_last = size.height;
  }
  m_changed.notify_all();
  draw(0, half);
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [this] { return m_draw == nullptr; });
}

void Bands::Help() {
  std::unique_lock lock(m_mutex);
  while (true) {
    m_changed.wait(lock, [this] { return m_ending || m_draw != nullptr; });
    if (m_ending) {
      return;
    }
    const Draw& draw = *m_draw;
    lock.unlock();
    draw(m_first, m_last);
    lock.lock();
    m_draw = nullptr;
    m_changed.notify_all();
  }
}

}  // namespace sim::lumaview
