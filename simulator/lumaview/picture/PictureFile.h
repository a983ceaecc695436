// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_PICTURE_PICTUREFILE_H
#define SIMULATOR_LUMAVIEW_PICTURE_PICTUREFILE_H

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"

namespace sim::lumaview {

/// What tells one state of a file from another.
struct FileIdentity {
  std::string path;
  uint64_t device = 0;
  uint64_t inode = 0;
  uint64_t bytes = 0;
  int64_t modified_ns = 0;
  bool operator==(const FileIdentity&) const = default;
};

/// An open regular file. It stays readable when its name goes away. Thread-safe: readers use positions of their own.
class PictureFile {
 public:
  /// Never blocks on what is not a regular file: pipes, devices, folders and sockets are refused at once.
  /// Errors: kCannotOpen.
  static Result<std::shared_ptr<const PictureFile>> Open(const std::string& path);

  int GetFd() const { return m_fd.Get(); }
  const std::string& GetPath() const { return m_identity.path; }
  /// As it was when the file was opened.
  const FileIdentity& GetIdentity() const { return m_identity; }

 private:
  PictureFile(UniqueFd fd, FileIdentity identity) : m_fd(std::move(fd)), m_identity(std::move(identity)) {}

  const UniqueFd m_fd;
  const FileIdentity m_identity;
};
using PictureFilePtr = std::shared_ptr<const PictureFile>;

}  // namespace sim::lumaview

#endif
