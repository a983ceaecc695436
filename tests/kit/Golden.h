// SPDX-License-Identifier: Apache-2.0
/// Expected sequences: one file per operation, one section per path.
#ifndef TESTS_KIT_GOLDEN_H
#define TESTS_KIT_GOLDEN_H

#include <string>
#include <vector>

namespace kit {

/// Compares the main track since Begin with section `path` of golden/`operation`.txt and fails the test with a diff
/// where they differ. With UPDATE_GOLDEN=1 in the environment the section is written instead.
void ExpectGolden(const std::string& operation, const std::string& path);

/// The same for what workers did, section "`path` [worker]", once every worker has returned.
void ExpectWorkerGolden(const std::string& operation, const std::string& path);

/// Lines of a section with its "@ SECTION" and "@ OPERATION: SECTION" lines replaced by those sections; a single line
/// that says so when a section is missing. `folder`: where the files are.
std::vector<std::string> ReadSection(const std::string& folder, const std::string& operation, const std::string& path);

/// `text` of a golden file with the section replaced, or added at its end.
std::string WithSection(const std::string& text, const std::string& path, const std::vector<std::string>& lines);

/// Line by line: "  " both, "- " only expected, "+ " only happened. Long stretches of equal lines are shortened.
std::string Diff(const std::vector<std::string>& expected, const std::vector<std::string>& happened);

}  // namespace kit

#endif
