// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SLIDESHOW_KEYS_H
#define SIMULATOR_TVSIM_SLIDESHOW_KEYS_H

#include <termios.h>

#include <deque>
#include <optional>
#include <string>

namespace sim::tvsim {

/// What a key on the terminal asks a slide show for.
enum class Key { kNext, kPrevious, kPause, kRotate, kZoomIn, kZoomOut, kQuit };

/// The keys for people, in one line.
const char* KeysHelp();

/// Takes the first key that means something from the bytes that a terminal has sent, and what stands before it with it.
/// Nothing when there is none, or when it has not come completely.
std::optional<Key> TakeKey(std::string& typed);

/// While it lives, standard input gives each key at once and shows none. Does nothing where standard input is no
/// terminal, or where this process runs in its background and must leave it to others.
class KeyboardMode {
 public:
  KeyboardMode();
  ~KeyboardMode();
  KeyboardMode(const KeyboardMode&) = delete;
  KeyboardMode& operator=(const KeyboardMode&) = delete;

  bool IsOn() const { return m_before.has_value(); }

 private:
  std::optional<termios> m_before;
};

/// The keys that come on standard input. On the default main context.
class Keys {
 public:
  Keys();
  ~Keys();
  Keys(const Keys&) = delete;
  Keys& operator=(const Keys&) = delete;

  bool IsEmpty() const { return m_keys.empty(); }
  /// Whether it waits to be taken, wherever among the others.
  bool Has(Key key) const;
  std::optional<Key> Take();

 private:
  /// False at the end of input.
  bool Read();

  std::string m_typed;  ///< the beginning of a key
  std::deque<Key> m_keys;
  unsigned int m_source = 0;
};

}  // namespace sim::tvsim

#endif
