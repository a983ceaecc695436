// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/JsonBytes.h"

#include <glib.h>

namespace sim::rpc {
namespace {

// U+FDD0..U+FDDF carry a high half, U+FDE0..U+FDEF a low one. All are three bytes long, and differ in the last only.
constexpr std::string_view kFirstBytes = "\xEF\xB7";
constexpr unsigned char kHighHalf = 0x90;
constexpr unsigned char kLowHalf = 0xA0;
constexpr size_t kCharacterBytes = 3;

unsigned char ByteAt(std::string_view text, size_t position) {
  return position < text.size() ? static_cast<unsigned char>(text[position]) : 0;
}

/// Whether a noncharacter of the sixteen that begin with `first` stands at the start of `text`.
bool StartsWithHalf(std::string_view text, unsigned char first) {
  return text.starts_with(kFirstBytes) && (ByteAt(text, 2) & 0xF0) == first;
}

void AppendHalf(std::string& wrapped, unsigned char first, unsigned char half) {
  wrapped.append(kFirstBytes) += static_cast<char>(first + half);
}

/// Bytes of the character at the start of `text`; 0 when it has to be wrapped.
size_t CharacterLength(std::string_view text) {
  const gunichar character = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
  const bool foreign = character >= 0x110000;  // also the two answers for "invalid" and "cut off"
  if (foreign || StartsWithHalf(text, kHighHalf) || StartsWithHalf(text, kLowHalf)) {
    return 0;
  }
  return static_cast<size_t>(g_unichar_to_utf8(character, nullptr));
}

}  // namespace

std::string WrapForeignBytes(std::string_view text) {
  std::string wrapped;
  wrapped.reserve(text.size() + text.size() / 8);
  while (!text.empty()) {
    size_t length = ByteAt(text, 0) < 0x80 ? 1 : CharacterLength(text);
    if (length != 0) {
      wrapped.append(text.substr(0, length));
    } else {
      length = 1;
      AppendHalf(wrapped, kHighHalf, ByteAt(text, 0) >> 4);
      AppendHalf(wrapped, kLowHalf, ByteAt(text, 0) & 0xF);
    }
    text.remove_prefix(length);
  }
  return wrapped;
}

std::string UnwrapForeignBytes(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  while (!text.empty()) {
    if (StartsWithHalf(text, kHighHalf) && StartsWithHalf(text.substr(kCharacterBytes), kLowHalf)) {
      bytes += static_cast<char>((ByteAt(text, 2) & 0xF) << 4 | (ByteAt(text, kCharacterBytes + 2) & 0xF));
      text.remove_prefix(2 * kCharacterBytes);
    } else {
      bytes += text.front();
      text.remove_prefix(1);
    }
  }
  return bytes;
}

}  // namespace sim::rpc
