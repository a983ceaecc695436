// SPDX-License-Identifier: Apache-2.0
#include "simulator/framework/Channel.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

namespace sim::framework {
namespace {

constexpr const char* kVariable = "OLM_CHANNEL_FD";

Error SystemError(const std::string& what) {
  const int code = errno;
  return {code, what + ": " + std::strerror(code)};
}

/// -1 when `text` is not a descriptor's number.
int ReadNumber(std::string_view text) {
  int number = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? number : -1;
}

/// Takes the socket over: no program that this process starts gets it or hears of it.
Result<UniqueFd> TakeInherited(const std::string& text) {
  unsetenv(kVariable);
  const int fd = ReadNumber(text);
  if (!IsSocket(fd)) {
    return Error{EBADF, std::string(kVariable) + " is \"" + text + "\", which is not an open socket"};
  }
  fcntl(fd, F_SETFD, FD_CLOEXEC);
  return UniqueFd(fd);
}

Result<std::shared_ptr<rpc::Transport>> OpenStandardStreams(GMainContext* context) {
  UniqueFd in(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  if (!in) {
    return SystemError("cannot use standard input");
  }
  UniqueFd out(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  if (!out) {
    return SystemError("cannot use standard output");
  }
  if (dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
    return SystemError("cannot keep standard output for the protocol");
  }
  return rpc::Transport::Create(context, std::move(in), std::move(out));
}

}  // namespace

Result<std::shared_ptr<rpc::Transport>> OpenChannel(GMainContext* context) {
  const char* inherited = std::getenv(kVariable);
  if (inherited == nullptr) {
    return OpenStandardStreams(context);
  }
  auto socket = TakeInherited(inherited);
  return socket ? rpc::Transport::Create(context, std::move(*socket)) : socket.error();
}

}  // namespace sim::framework
