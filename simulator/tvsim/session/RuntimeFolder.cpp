// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/session/RuntimeFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace sim::tvsim {
namespace {

bool IsFolderOfOurs(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

/// The folder of all sessions of this user.
std::string Base() {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime != nullptr && *runtime == '/' && IsFolderOfOurs(runtime)) {
    return std::string(runtime) + "/tvsim";
  }
  return "/tmp/tvsim-" + std::to_string(geteuid());
}

Status MakePrivateFolder(const std::string& path) {
  if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
    return Error{errno, "cannot make " + path + ": " + std::strerror(errno)};
  }
  if (!IsFolderOfOurs(path) || chmod(path.c_str(), 0700) != 0) {
    return Error{EPERM, path + " belongs to somebody else; set XDG_RUNTIME_DIR to a folder of your own"};
  }
  return Ok();
}

bool IsGoodName(const std::string& session) {
  return !session.empty() && session.size() <= 32 &&
         std::ranges::all_of(session, [](unsigned char c) { return std::isalnum(c) != 0 || c == '-' || c == '_'; });
}

std::string LockOf(const std::string& path) {
  return path + ".lock";
}

/// Whether the file that was opened and locked has not been removed, by the session that ended, in between.
bool StillStands(const UniqueFd& file, const std::string& path) {
  struct stat opened, standing;
  return fstat(file.Get(), &opened) == 0 && stat(path.c_str(), &standing) == 0 && opened.st_ino == standing.st_ino;
}

void Empty(const std::string& path) {
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(path, ignored)) {
    std::filesystem::remove_all(entry.path(), ignored);
  }
}

}  // namespace

Result<RuntimeFolder> RuntimeFolder::Create(const std::string& session) {
  if (!IsGoodName(session)) {
    return Error{EINVAL, "'" + session + "' is no session's name: up to 32 letters, digits, '-' and '_'"};
  }
  SIM_TRY(MakePrivateFolder(Base()));
  const std::string path = Base() + "/" + session;
  if (ControlSocketIn(path).size() >= sizeof(sockaddr_un::sun_path)) {
    return Error{ENAMETOOLONG, path + " is too long for a socket; set XDG_RUNTIME_DIR to a shorter folder"};
  }
  UniqueFd lock(open(LockOf(path).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!lock) {
    return Error{errno, "cannot make " + LockOf(path) + ": " + std::strerror(errno)};
  }
  if (flock(lock.Get(), LOCK_EX | LOCK_NB) != 0 || !StillStands(lock, LockOf(path))) {
    return Error{EBUSY, "a session '" + session + "' is running; give this one another name with --session NAME"};
  }
  SIM_TRY(MakePrivateFolder(path));
  Empty(path);
  return RuntimeFolder(path, std::move(lock));
}

Result<std::string> RuntimeFolder::Find(const std::string& session) {
  const std::string path = Base() + "/" + session;
  if (!IsGoodName(session) || access(ControlSocketIn(path).c_str(), F_OK) != 0) {
    return Error{ENOENT, "no session '" + session + "' is running; `tvsim run PICTURES` starts one"};
  }
  return path;
}

void RuntimeFolder::Remove() const {
  if (!StillStands(m_lock, LockOf(m_path))) {
    return;  // removed before, and perhaps the next session's by now
  }
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
  std::filesystem::remove(LockOf(m_path), ignored);
}

std::string ControlSocketIn(const std::string& folder) {
  return folder + "/control";
}
std::string EngineLogIn(const std::string& folder) {
  return folder + "/engine.log";
}

}  // namespace sim::tvsim
