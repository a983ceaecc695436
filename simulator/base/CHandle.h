// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_BASE_CHANDLE_H
#define SIMULATOR_BASE_CHANDLE_H

#include <cstdlib>
#include <memory>

namespace sim {

template <auto Free>
struct CFree {
  template <typename T>
  void operator()(T* handle) const {
    Free(handle);
  }
};

/// A C library's object with the function that frees it: `CHandle<GKeyFile, g_key_file_free> file(...)`.
template <typename T, auto Free>
using CHandle = std::unique_ptr<T, CFree<Free>>;

/// What a C library hands out for `free`, an xcb reply for example.
template <typename T>
using MallocPtr = CHandle<T, std::free>;

}  // namespace sim

#endif
