// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SCENARIO_SCENARIO_H
#define SIMULATOR_TVSIM_SCENARIO_SCENARIO_H

#include <chrono>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "simulator/base/Result.h"

namespace sim::tvsim {

/// One line of a scenario, split into words.
struct Step {
  size_t line = 0;  ///< its number, from 1
  std::vector<std::string> words;
};

/// Reads a scenario: a step a line; "#" at a line's start or after white space begins a comment. Words are separated by
/// white space; "double quotes" hold a word together, with \" and \\ inside; ${NAME} is the environment's value.
/// Errors: a quote that is not closed, a variable that is not set; the reason begins with the line's number.
Result<std::vector<Step>> ParseScenario(std::istream& text);

/// "250ms", "2s", "1.5s"; nothing for anything else, and for more than an hour.
std::optional<std::chrono::milliseconds> ParseDuration(const std::string& text);

/// "35dB"; nothing for anything else.
std::optional<double> ParseDecibels(const std::string& text);

}  // namespace sim::tvsim

#endif
