// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SERVE_TOKENS_H
#define SIMULATOR_TVSIM_SERVE_TOKENS_H

#include <optional>
#include <string>
#include <string_view>

#include "simulator/base/Result.h"
#include "simulator/tvsim/control/Rights.h"

namespace sim::tvsim {

/// The two secrets of a session's page: who has one may look on, who has the other may do everything.
struct Tokens {
  std::string control;
  std::string view;

  /// Made anew, of 128 random bits each. Errors: the kernel has none.
  static Result<Tokens> Make();

  /// What `token` allows; nothing when it is neither. Takes as long for any wrong one.
  std::optional<Rights> RightsOf(std::string_view token) const;
};

/// Where the browser finds a session.
struct PageAddress {
  std::string control;  ///< with the token in the fragment, which a browser sends to nobody
  std::string view;
};

/// Writes it into the session's folder, for its owner alone (0600). Errors: it cannot be written.
Status WritePageAddress(const std::string& folder, const PageAddress& address);

/// Errors: the session in that folder serves no page.
Result<PageAddress> ReadPageAddress(const std::string& folder);

}  // namespace sim::tvsim

#endif
