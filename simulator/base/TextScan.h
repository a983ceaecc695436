// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_BASE_TEXTSCAN_H
#define SIMULATOR_BASE_TEXTSCAN_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace sim {

/// Whether `matches` holds for a character of `text`. It is asked for sixteen characters at once where there are as
/// many, and so written that it can be: `[](auto c) { return (c < ' ') | (c == '"'); }`, where `c` is an unsigned char
/// or a vector of them. The last sixteen may overlap those before them.
template <typename Matches>
bool HasAny(std::string_view text, const Matches& matches) {
  using Block __attribute__((vector_size(16))) = unsigned char;
  if (text.size() < sizeof(Block)) {
    bool found = false;
    for (const char c : text) {
      found |= static_cast<bool>(matches(static_cast<unsigned char>(c)));
    }
    return found;
  }
  const auto look = [&](size_t begin) {
    Block block;
    std::memcpy(&block, text.data() + begin, sizeof block);
    return matches(block);
  };
  const size_t last = text.size() - sizeof(Block);
  auto found = look(last);
  for (size_t begin = 0; begin < last; begin += sizeof(Block)) {
    found |= look(begin);
  }
  uint64_t halves[2];
  static_assert(sizeof halves == sizeof found);
  std::memcpy(halves, &found, sizeof found);
  return (halves[0] | halves[1]) != 0;
}

}  // namespace sim

#endif
