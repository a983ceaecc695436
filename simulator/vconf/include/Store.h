// SPDX-License-Identifier: Apache-2.0
/// The session's key-value store: texts under names, shared by all processes of the session.
///
/// It is one file in the session's folder to which records are only ever appended, so that a reader misses no value
/// however fast they follow each other, and a writer that is killed leaves no half of one.
#ifndef SIMULATOR_VCONF_INCLUDE_STORE_H
#define SIMULATOR_VCONF_INCLUDE_STORE_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/base/Result.h"

namespace sim::vconf {

class StoreFile;

/// One value that was set. The sequence numbers of a store are 1, 2, 3 ...
struct Record {
  uint64_t sequence = 0;
  std::string key;
  std::string value;
};

/// Any thread. Errors carry errno as their code.
class Store {
 public:
  static constexpr size_t kMaxKey = 1024;       ///< bytes
  static constexpr size_t kMaxValue = 1 << 16;  ///< bytes; states are words
  /// Bytes of the file; a million changes of a state. What would pass it is refused until the next session.
  static constexpr uint64_t kMaxFile = 64 << 20;

  /// The folder in VCONF_SESSION; fails when it is not set.
  static Result<std::filesystem::path> SessionFolder();

  /// Begins a session in `folder`, which exists: keeps the newest value of each key and drops the older ones. Call it
  /// before any other process opens the store.
  static Result<std::unique_ptr<Store>> Create(const std::filesystem::path& folder);

  /// Joins the session in `folder`; makes an empty store where there is none. Where the file may only be read, `Set`
  /// fails.
  static Result<std::unique_ptr<Store>> Open(const std::filesystem::path& folder);

  /// Appends a value; when it returns, every process sees it, and no one ever sees a part of it. `key` is 1 to kMaxKey
  /// bytes, `value` at most kMaxValue, neither holds a NUL. On failure nothing has changed.
  Status Set(std::string_view key, std::string_view value);

  /// The newest value of `key`; nothing when it was never set. Reads the whole store.
  Result<std::optional<std::string>> Get(std::string_view key) const;

  ~Store();

 private:
  friend class Watch;
  explicit Store(std::shared_ptr<StoreFile> file);

  const std::shared_ptr<StoreFile> m_file;
};

}  // namespace sim::vconf

#endif
