// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/slideshow/Keys.h"

#include <glib-unix.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

namespace sim::tvsim {
namespace {

struct Binding {
  std::string_view typed;
  Key key;
};

// Cursor keys come in two forms, as the terminal was left.
constexpr Binding kBindings[] = {
    {"n", Key::kNext},        {"\r", Key::kNext},         {"\n", Key::kNext},         {"\033[C", Key::kNext},
    {"\033OC", Key::kNext},   {"\033[6~", Key::kNext},    {"p", Key::kPrevious},      {"\x7F", Key::kPrevious},
    {"\b", Key::kPrevious},   {"\033[D", Key::kPrevious}, {"\033OD", Key::kPrevious}, {"\033[5~", Key::kPrevious},
    {" ", Key::kPause},       {"r", Key::kRotate},        {"+", Key::kZoomIn},        {"\033[A", Key::kZoomIn},
    {"\033OA", Key::kZoomIn}, {"-", Key::kZoomOut},       {"\033[B", Key::kZoomOut},  {"\033OB", Key::kZoomOut},
    {"q", Key::kQuit},        {"\x04", Key::kQuit},
};

/// How many bytes the sequence takes with which `typed` begins; 0 when its end has not come.
size_t SequenceLength(std::string_view typed) {
  if (typed[0] != '\033') {
    return 1;
  }
  if (typed.size() < 2) {
    return 0;
  }
  if (typed[1] == 'O') {
    return typed.size() < 3 ? 0 : 3;
  }
  if (typed[1] != '[') {
    return 1;  // the Escape key, and then another
  }
  const auto end = std::find_if(typed.begin() + 2, typed.end(), [](char c) { return c >= 0x40 && c <= 0x7E; });
  return end == typed.end() ? 0 : static_cast<size_t>(end - typed.begin()) + 1;
}

}  // namespace

const char* KeysHelp() {
  return "Keys: n next, p previous (or the cursor keys), space pause, r rotate, + and - zoom, q quit";
}

std::optional<Key> TakeKey(std::string& typed) {
  while (!typed.empty()) {
    const size_t length = SequenceLength(typed);
    if (length == 0) {
      return std::nullopt;
    }
    const std::string sequence = typed.substr(0, length);
    typed.erase(0, length);
    const auto found = std::ranges::find(kBindings, sequence, &Binding::typed);
    if (found != std::end(kBindings)) {
      return found->key;
    }
  }
  return std::nullopt;
}

KeyboardMode::KeyboardMode() {
  termios mode{};
  if (tcgetattr(STDIN_FILENO, &mode) != 0) {
    return;
  }
  // A terminal that does not control this session has no foreground either.
  const pid_t foreground = tcgetpgrp(STDIN_FILENO);
  if (foreground >= 0 && foreground != getpgrp()) {
    return;
  }
  m_before = mode;
  mode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  mode.c_cc[VMIN] = 1;
  mode.c_cc[VTIME] = 0;
  tcsetattr(STDIN_FILENO, TCSANOW, &mode);
}

KeyboardMode::~KeyboardMode() {
  if (m_before) {
    tcsetattr(STDIN_FILENO, TCSANOW, &*m_before);
  }
}

Keys::Keys() {
  m_source = g_unix_fd_add(
      STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR),
      [](gint, GIOCondition, gpointer self) -> gboolean {
        auto* keys = static_cast<Keys*>(self);
        if (keys->Read()) {
          return G_SOURCE_CONTINUE;
        }
        keys->m_source = 0;
        return G_SOURCE_REMOVE;
      },
      this);
}

Keys::~Keys() {
  if (m_source != 0) {
    g_source_remove(m_source);
  }
}

bool Keys::Read() {
  char bytes[64];
  const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
  if (count <= 0) {
    return false;
  }
  m_typed.append(bytes, static_cast<size_t>(count));
  while (const auto key = TakeKey(m_typed)) {
    m_keys.push_back(*key);
  }
  return true;
}

bool Keys::Has(Key key) const {
  return std::ranges::find(m_keys, key) != m_keys.end();
}

std::optional<Key> Keys::Take() {
  if (m_keys.empty()) {
    return std::nullopt;
  }
  const Key key = m_keys.front();
  m_keys.pop_front();
  return key;
}

}  // namespace sim::tvsim
