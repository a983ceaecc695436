// SPDX-License-Identifier: Apache-2.0
// Prepares the library as the engine does: before there are threads. Part of each test of the exported calls.
#include <gtest/gtest.h>

#include "platform/lumaview.h"

namespace lumaview_test {
namespace {

class LoadedLibrary : public ::testing::Environment {
 public:
  void SetUp() override { lumaview_pre_loading(); }
};
[[maybe_unused]] const auto* const loaded_library = ::testing::AddGlobalTestEnvironment(new LoadedLibrary);

}  // namespace
}  // namespace lumaview_test
