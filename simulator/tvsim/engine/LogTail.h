// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_ENGINE_LOGTAIL_H
#define SIMULATOR_TVSIM_ENGINE_LOGTAIL_H

#include <cstddef>
#include <string>
#include <vector>

namespace sim::tvsim {

/// The last lines of a log, at most `count` of them, without colours. Empty when there is no such file.
/// Only the file's end is read, so long lines before it may be missing.
std::vector<std::string> LastLines(const std::string& file, size_t count);

/// Whether a line of the log, without its colours, contains `text`.
bool HasLineWith(const std::string& file, const std::string& text);

/// A text without terminal sequences (ESC "[" ... letter).
std::string WithoutColours(const std::string& text);

}  // namespace sim::tvsim

#endif
