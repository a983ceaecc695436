// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/process/Namespaces.h"

#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "simulator/base/UniqueFd.h"

namespace sim::tvsim {
namespace {

constexpr const char* kSocketFolder = "/tmp/.X11-unix";
constexpr const char* kKeymapFolder = "/var/lib/xkb";

Error Failed(const std::string& what) {
  return Error{errno, what + ": " + std::strerror(errno)};
}

Status WriteText(const char* path, const std::string& text) {
  const UniqueFd file(open(path, O_WRONLY | O_CLOEXEC));
  if (!file || write(file.Get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    return Failed(path);
  }
  return Ok();
}

Status BecomeRootOfUserNamespace(uid_t user, gid_t group) {
  SIM_TRY(WriteText("/proc/self/setgroups", "deny"));
  SIM_TRY(WriteText("/proc/self/uid_map", "0 " + std::to_string(user) + " 1"));
  return WriteText("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
}

Status MountOwn(const char* type, const char* folder, const char* options) {
  return mount(type, folder, type, MS_NOSUID | MS_NODEV, options) == 0 ? Ok()
                                                                       : Status(Failed(std::string("mount ") + folder));
}

bool IsFolder(const char* path) {
  struct stat status;
  return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

void RaiseLoopback() {
  const UniqueFd any(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  ifreq request{};
  std::strcpy(request.ifr_name, "lo");
  request.ifr_flags = IFF_UP;
  // Only a server in here would need it; its own error says enough.
  (void)ioctl(any.Get(), SIOCSIFFLAGS, &request);
}

/// Runs `step` in a child and waits for it.
template <typename Step>
bool SucceedsInChild(Step step) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(step() ? 0 : 1);
  }
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

bool NamespacesAllowed() {
  return SucceedsInChild(
      [] { return bool(LeaveNamespaces()) && SucceedsInChild([] { return bool(FurnishNamespaces()); }); });
}

Status LeaveNamespaces() {
  constexpr int kPrivate = CLONE_NEWNS | CLONE_NEWNET | CLONE_NEWPID;
  mkdir(kSocketFolder, 01777);  // there must be a folder to mount over
  chmod(kSocketFolder, 01777);  // mkdir leaves out what the umask forbids; another owner's folder is right already
  const uid_t user = geteuid();
  const gid_t group = getegid();
  if (user == 0 && unshare(kPrivate) == 0) {
    return Ok();
  }
  if (unshare(kPrivate | CLONE_NEWUSER) != 0) {
    return Failed("no namespaces of its own");
  }
  return BecomeRootOfUserNamespace(user, group);
}

Status FurnishNamespaces() {
  if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
    return Failed("mounts of its own");
  }
  SIM_TRY(MountOwn("proc", "/proc", nullptr));
  SIM_TRY(MountOwn("tmpfs", kSocketFolder, "mode=1777"));
  if (IsFolder(kKeymapFolder)) {
    // Servers that start together would write one compiled keymap over the other's.
    SIM_TRY(MountOwn("tmpfs", kKeymapFolder, "mode=0755"));
  }
  RaiseLoopback();
  return Ok();
}

}  // namespace sim::tvsim
