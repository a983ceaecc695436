// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/picture/PictureFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {
namespace {

Error CannotOpen(std::string reason) {
  return {kCannotOpen, "cannot be opened: " + std::move(reason)};
}

/// Why a file of this mode is not a picture's; null for a regular file.
const char* ReasonAgainst(mode_t mode) {
  switch (mode & S_IFMT) {
    case S_IFREG:
      return nullptr;
    case S_IFDIR:
      return "it is a folder";
    case S_IFIFO:
      return "it is a pipe";
    case S_IFSOCK:
      return "it is a socket";
    default:
      return "it is a device";
  }
}

FileIdentity IdentityOf(const std::string& path, const struct stat& status) {
  constexpr int64_t kNanoseconds = 1'000'000'000;
  return {path, static_cast<uint64_t>(status.st_dev), static_cast<uint64_t>(status.st_ino),
          static_cast<uint64_t>(status.st_size),
          static_cast<int64_t>(status.st_mtim.tv_sec) * kNanoseconds + status.st_mtim.tv_nsec};
}

}  // namespace

Result<PictureFilePtr> PictureFile::Open(const std::string& path) {
  // Looked at before it is opened as well: opening alone can have an effect on a device.
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    return CannotOpen(std::strerror(errno));
  }
  if (const char* reason = ReasonAgainst(status.st_mode); reason != nullptr) {
    return CannotOpen(reason);
  }
  UniqueFd fd(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!fd || fstat(fd.Get(), &status) != 0) {
    return CannotOpen(std::strerror(errno));
  }
  if (const char* reason = ReasonAgainst(status.st_mode); reason != nullptr) {
    return CannotOpen(reason);
  }
  return PictureFilePtr(new PictureFile(std::move(fd), IdentityOf(path, status)));
}

}  // namespace sim::lumaview
