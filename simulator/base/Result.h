// SPDX-License-Identifier: Apache-2.0
/// What a fallible operation of the simulator returns: a value, or an error with a reason that a person understands.
#ifndef SIMULATOR_BASE_RESULT_H
#define SIMULATOR_BASE_RESULT_H

#include <cassert>
#include <string>
#include <utility>
#include <variant>

namespace sim {

struct Error {
  int code = -1;       ///< the library's own number, never 0
  std::string reason;  ///< one sentence without a full stop: what failed and, where it helps, what to do
};

template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : m_state(std::in_place_index<0>, std::move(value)) {}
  Result(Error error) : m_state(std::in_place_index<1>, std::move(error)) {}

  explicit operator bool() const { return m_state.index() == 0; }

  /// The caller has tested for success.
  T& operator*() { return assert(*this), *std::get_if<0>(&m_state); }
  const T& operator*() const { return assert(*this), *std::get_if<0>(&m_state); }
  T* operator->() { return &**this; }
  const T* operator->() const { return &**this; }

  /// The caller has tested for failure.
  const Error& error() const { return assert(!*this), *std::get_if<1>(&m_state); }

 private:
  std::variant<T, Error> m_state;
};

struct Nothing {};
using Status = Result<Nothing>;
inline Status Ok() {
  return Nothing{};
}

}  // namespace sim

/// Leaves the function with the error of `expression`, a Status.
#define SIM_TRY(expression)                            \
  do {                                                 \
    if (auto sim_status = (expression); !sim_status) { \
      return sim_status.error();                       \
    }                                                  \
  } while (0)

#endif
