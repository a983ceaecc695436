// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_BASE_TEMPORARYFOLDER_H
#define TESTS_BASE_TEMPORARYFOLDER_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace sim {

/// A folder of the test's own; gone with the object.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string path = testing::TempDir() + "sim-XXXXXX";
    m_path = mkdtemp(path.data());
  }
  ~TemporaryFolder() { std::filesystem::remove_all(m_path); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::filesystem::path operator/(const char* name) const { return m_path / name; }

 private:
  std::filesystem::path m_path;
};

inline std::string ReadFile(const std::filesystem::path& path) {
  std::stringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

inline std::vector<std::string> ReadLines(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    lines.push_back(line);
  }
  return lines;
}

}  // namespace sim

#endif
