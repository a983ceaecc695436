// SPDX-License-Identifier: Apache-2.0
/// The fixture of the engine's tests: a fresh world, adapters and engines in it, and operations run under the journal.
#ifndef TESTS_KIT_DOMAIN_H
#define TESTS_KIT_DOMAIN_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "adapter/CPictureAdapter.h"
#include "host/CEmpEnginePicture.h"
#include "tests/kit/Journal.h"

namespace kit {

/// SetUp makes the world anew. TearDown deletes what the test left, then expects that every worker has returned and
/// that no rule of the outside was broken.
class EngineTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// Owned by the fixture.
  olm::CPictureAdapter& MakeAdapter(olm::CEmpEnginePicture* engine = nullptr);
  olm::CEmpEnginePicture& MakeEngine();
  /// The destructor runs now.
  void DeleteAdapter(olm::CPictureAdapter& adapter);
  void DeleteEngine(olm::CEmpEnginePicture& engine);
  static olm::CPictureAdapter& Adapter(olm::CEmpEnginePicture& engine) { return *engine.m_pAdapter; }

  /// A test that breaks a rule of the outside on purpose.
  void ExpectViolations() { m_violationsExpected = true; }

 private:
  std::vector<std::unique_ptr<olm::CEmpEnginePicture>> m_engines;
  std::vector<std::unique_ptr<olm::CPictureAdapter>> m_adapters;
  size_t m_violationsBefore = 0;
  bool m_violationsExpected = false;
};

inline void AppendReturn(bool value) {
  Append(value ? "return true" : "return false");
}
inline void AppendReturn(int value) {
  Append("return " + std::to_string(value));
}

/// Runs one operation; its result becomes the journal's last entry.
template <typename Operation>
auto Run(Operation operation) {
  using Result = std::invoke_result_t<Operation>;
  if constexpr (std::is_void_v<Result>) {
    operation();
  } else {
    const Result result = operation();
    if constexpr (std::is_integral_v<Result> || std::is_enum_v<Result>) AppendReturn(result);
    return result;
  }
}

/// The process-wide fields as a fresh process has them.
void ResetProcessWideState();

/// True when `field` is `capacity` zero bytes.
bool IsZero(const char* field, size_t capacity);

}  // namespace kit

#endif
