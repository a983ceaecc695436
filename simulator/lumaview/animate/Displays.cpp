// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/animate/Displays.h"

#include <cstdio>
#include <string>
#include <utility>

#include "simulator/base/Log.h"

namespace sim::lumaview {
namespace {

std::string Hex(unsigned long window) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%lx", window);
  return text;
}

/// X identifiers have 29 bits; "no window" has them all set, and more.
constexpr unsigned long kHighestWindow = 0x1FFFFFFF;

}  // namespace

Displays::~Displays() {
  for (const auto& [window, presenter] : m_presenters) {
    presenter->Close();
  }
}

Status Displays::Init(unsigned long window) {
  if (window == 0 || window > kHighestWindow) {
    return Error{kBadArgument, Hex(window) + " is not a window"};
  }
  const std::lock_guard changing(m_changing);
  if (Find(window)) {
    return Ok();
  }
  auto presenter =
      Presenter::Open(static_cast<xcb_window_t>(window), {m_pool, m_clock, [this](Size size) { StoreLastSize(size); }});
  if (!presenter) {
    return Error{presenter.error().code, "no display on window " + Hex(window) + ": " + presenter.error().reason};
  }
  std::shared_ptr<Presenter> gone = std::move(*presenter);
  {
    const std::lock_guard lock(m_mutex);
    std::swap(m_presenters[window], gone);
  }
  return Ok();
}

Status Displays::Destroy(unsigned long window) {
  const std::lock_guard changing(m_changing);
  std::shared_ptr<Presenter> presenter;
  {
    const std::lock_guard lock(m_mutex);
    const auto found = m_presenters.find(window);
    if (found == m_presenters.end()) {
      return Error{kBadArgument, "there is no display on window " + Hex(window)};
    }
    presenter = std::move(found->second);
    m_presenters.erase(found);
  }
  presenter->Close();
  return Ok();
}

std::shared_ptr<Presenter> Displays::Find(unsigned long window) const {
  const std::lock_guard lock(m_mutex);
  const auto found = m_presenters.find(window);
  return found == m_presenters.end() || found->second->IsGone() ? nullptr : found->second;
}

Size Displays::GetLastSize() const {
  const std::lock_guard lock(m_mutex);
  return m_last_size;
}

void Displays::StoreLastSize(Size size) {
  const std::lock_guard lock(m_mutex);
  m_last_size = size;
}

}  // namespace sim::lumaview
