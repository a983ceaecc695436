// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SHELL_COMPLETION_H
#define SIMULATOR_TVSIM_SHELL_COMPLETION_H

#include <string>
#include <vector>

namespace sim::tvsim {

/// The engine's commands and a scenario's statements that begin with `beginning`, by name.
std::vector<std::string> FirstWords(const std::string& beginning);

/// Makes the line editor complete the first word of a line so, and the others as paths.
void CompleteScenarioLines();

}  // namespace sim::tvsim

#endif
