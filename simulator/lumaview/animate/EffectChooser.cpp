// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/animate/EffectChooser.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace sim::lumaview {

int EffectChooser::Choose() {
  const std::lock_guard lock(m_mutex);
  if (m_dealt == m_deck.size()) {
    Shuffle();
  }
  return m_deck[m_dealt++];
}

void EffectChooser::Shuffle() {
  const int last = m_deck.back();
  std::iota(m_deck.begin(), m_deck.end(), 0);
  std::shuffle(m_deck.begin(), m_deck.end(), m_random);
  if (m_deck.front() == last) {
    std::swap(m_deck.front(), m_deck.back());
  }
  m_dealt = 0;
}

}  // namespace sim::lumaview
