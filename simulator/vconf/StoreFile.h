// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_VCONF_STOREFILE_H
#define SIMULATOR_VCONF_STOREFILE_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"
#include "simulator/vconf/include/Store.h"

namespace sim::vconf {

/// How much of the file counts. Everything behind `length` is what a writer did not finish.
struct Committed {
  uint64_t length = 0;    ///< bytes from the start of the file
  uint64_t sequence = 0;  ///< of the newest record
};

/// The file of a store: a header that says how much of it counts, then the records. Any thread.
class StoreFile {
 public:
  /// Opens the file at `path`; makes one without records where there is none.
  static Result<std::shared_ptr<StoreFile>> Open(const std::filesystem::path& path);

  /// Puts `records` in the place of the file at `path`, numbered from 1.
  static Status Replace(const std::filesystem::path& path, const std::vector<Record>& records);

  Status Append(std::string_view key, std::string_view value);

  /// Never behind what has been appended by a call that returned.
  Result<Committed> ReadCommitted() const;

  const std::filesystem::path& Path() const { return m_path; }

 private:
  friend class RecordReader;
  StoreFile(std::filesystem::path path, UniqueFd fd) : m_path(std::move(path)), m_fd(std::move(fd)) {}

  Status AppendLocked(std::string_view key, std::string_view value);

  const std::filesystem::path m_path;
  const UniqueFd m_fd;
  std::mutex m_mutex;  ///< the lock on the file keeps processes apart, this one the threads of one
};

/// Reads the records of a file in their order. One thread at a time.
class RecordReader {
 public:
  /// Begins with the first record, or behind those that are committed.
  explicit RecordReader(std::shared_ptr<const StoreFile> file);
  RecordReader(std::shared_ptr<const StoreFile> file, const Committed& behind);

  /// The next record; nothing while there is none.
  Result<std::optional<Record>> Next();

 private:
  Result<Record> ReadRecord();

  const std::shared_ptr<const StoreFile> m_file;
  uint64_t m_position;
  uint64_t m_committed;  ///< length when it was last looked at
};

}  // namespace sim::vconf

#endif
