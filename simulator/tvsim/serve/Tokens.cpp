// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/serve/Tokens.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "simulator/base/UniqueFd.h"

namespace sim::tvsim {
namespace {

constexpr size_t kRandomBytes = 16;

std::string FileIn(const std::string& folder) {
  return folder + "/page";
}

Result<std::string> MakeToken() {
  std::array<unsigned char, kRandomBytes> bytes{};
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    return Error{errno, std::string("no random bytes for a token: ") + std::strerror(errno)};
  }
  constexpr const char* kDigits = "0123456789abcdef";
  std::string token;
  for (const unsigned char byte : bytes) {
    (token += kDigits[byte >> 4]) += kDigits[byte & 15];
  }
  return token;
}

/// The time it takes tells nothing about where the two differ.
bool IsSame(std::string_view given, std::string_view secret) {
  unsigned difference = given.size() == secret.size() ? 0 : 1;
  for (size_t i = 0; i < secret.size(); ++i) {
    difference |= static_cast<unsigned>((i < given.size() ? given[i] : 0) ^ secret[i]);
  }
  return difference == 0;
}

}  // namespace

Result<Tokens> Tokens::Make() {
  Result<std::string> control = MakeToken(), view = MakeToken();
  if (!control || !view) {
    return control ? view.error() : control.error();
  }
  return Tokens{std::move(*control), std::move(*view)};
}

std::optional<Rights> Tokens::RightsOf(std::string_view token) const {
  const bool controls = IsSame(token, control), views = IsSame(token, view);
  if (controls) {
    return Rights::kControl;
  }
  return views ? std::optional(Rights::kView) : std::nullopt;
}

Status WritePageAddress(const std::string& folder, const PageAddress& address) {
  const std::string path = FileIn(folder), text = address.control + "\n" + address.view + "\n";
  const UniqueFd file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file || write(file.Get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    return Error{errno, "cannot write " + path + ": " + std::strerror(errno)};
  }
  return Ok();
}

Result<PageAddress> ReadPageAddress(const std::string& folder) {
  std::ifstream file(FileIn(folder));
  PageAddress address;
  if (!std::getline(file, address.control) || !std::getline(file, address.view)) {
    return Error{ENOENT, "the session serves no page; `tvsim serve` starts one that does"};
  }
  return address;
}

}  // namespace sim::tvsim
