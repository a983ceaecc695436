// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_PLAINREADER_H
#define SIMULATOR_RPC_PLAINREADER_H

#include <cstdint>
#include <string_view>

namespace sim::rpc {

/// Tells what is not plain, for `HasAny`: anything but printable ASCII, and escapes.
inline constexpr auto kIsOdd = [](auto c) { return (c < ' ') | (c > '~') | (c == '\\'); };

/// Reads JSON as nearly all of it is written, straight from its text: texts of printable ASCII without escapes, whole
/// numbers of at most 18 digits, a few levels, and no white space but blanks. What is not plain may be JSON all the
/// same; whoever meets it begins anew with the parser.
///
/// Each function takes what it reads from the front and tells whether that was there; if not, the reader is of no use
/// any more, except after `Take`. What it gives out are parts of the text that it was made of.
class PlainReader {
 public:
  /// Nothing can be taken from a text with anything but printable ASCII, or with an escape.
  explicit PlainReader(std::string_view json);

  /// The character that comes next, blanks left out; '\0' at the end.
  char Next();
  bool Take(char token);
  bool TakeText(std::string_view& text);  ///< without its quotes
  bool TakeInteger(int64_t& number);
  bool TakeBoolean(bool& value);
  bool TakeScalar(std::string_view& json);  ///< a text, a number, true, false or null, as it stands
  bool TakeValue(std::string_view& json);   ///< any value, as it stands
  bool IsAtEnd();

  /// `takeMember(name)` takes the value of that member.
  template <typename F>
  bool TakeObject(const F& takeMember) {
    const auto takeNamed = [&] {
      std::string_view name;
      return TakeText(name) && Take(':') && takeMember(name);
    };
    return Take('{') && TakeRest('}', takeNamed);
  }

  template <typename F>
  bool TakeList(const F& takeItem) {
    return Take('[') && TakeRest(']', takeItem);
  }

 private:
  template <typename F>
  bool TakeRest(char end, const F& takeOne) {
    if (Take(end)) {
      return true;
    }
    do {
      if (!takeOne()) {
        return false;
      }
    } while (Take(','));
    return Take(end);
  }

  bool TakeWord(std::string_view word);
  bool SkipValue(int levels);
  size_t CountInteger();

  std::string_view m_rest;
};

}  // namespace sim::rpc

#endif
