// SPDX-License-Identifier: Apache-2.0
// The C library has no names for these calls.
#include "simulator/lumaview/cage/PathFilter.h"

#include <linux/landlock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>

#include "simulator/base/UniqueFd.h"

namespace sim::lumaview::cage {
namespace {

/// The rights on files that a version of the interface knows: it refuses a ruleset with one that it does not.
uint64_t RightsOfVersion(long version) {
  constexpr unsigned int kRightsOfFirst = 13;
  constexpr long kNewest = 5;  // one right more in the second, the third and the fifth
  static constexpr unsigned int kMore[] = {0, 1, 2, 2, 3};
  const unsigned int rights = kRightsOfFirst + kMore[(version < kNewest ? version : kNewest) - 1];
  return (uint64_t{1} << rights) - 1;
}

}  // namespace

bool ForbidPaths() {
  const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) {
    return false;
  }
  const landlock_ruleset_attr attributes{RightsOfVersion(version)};
  const UniqueFd ruleset(
      static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes.handled_access_fs, 0)));
  return ruleset && syscall(SYS_landlock_restrict_self, ruleset.Get(), 0) == 0;
}

}  // namespace sim::lumaview::cage
