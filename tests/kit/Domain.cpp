// SPDX-License-Identifier: Apache-2.0
#include "tests/kit/Domain.h"

#include <algorithm>

#include "tests/kit/Mutexes.h"
#include "tests/kit/Names.h"
#include "tests/kit/Workers.h"
#include "tests/kit/World.h"

namespace kit {
namespace {

template <typename Object>
void Delete(std::vector<std::unique_ptr<Object>>& objects, Object& object) {
  const auto found =
      std::find_if(objects.begin(), objects.end(), [&object](const auto& o) { return o.get() == &object; });
  ASSERT_NE(found, objects.end()) << "not the fixture's";
  const std::unique_ptr<Object> last = std::move(*found);
  objects.erase(found);
}

}  // namespace

void ResetProcessWideState() {
  olm::CPictureAdapter::pDisplay = nullptr;
  olm::CPictureAdapter::window_id = olm::kNoWindow;
  olm::CPictureAdapter::displayNum = 0;
  olm::CPictureAdapter::winNum = 0;
  olm::CPictureAdapter::lumaviewInitFlag = 0;
  olm::m_pEngine = nullptr;
  olm::s_initPlayerCount = 0;
  olm::s_playCount = 0;
}

bool IsZero(const char* field, size_t capacity) {
  return std::all_of(field, field + capacity, [](char byte) { return byte == 0; });
}

void EngineTest::SetUp() {
  ThisIsMainThread();
  ForgetAdapters();
  ForgetMutexes();
  ResetWorld();
  ResetProcessWideState();
  OnEvent(nullptr);
  OnEntry(nullptr);
  SetRecording(true);
  m_violationsBefore = Violations();
  Begin();
}

void EngineTest::TearDown() {
  m_engines.clear();
  m_adapters.clear();
  ASSERT_TRUE(AwaitWorkers()) << "a worker does not return";
  if (!m_violationsExpected) {
    EXPECT_EQ(Violations(), m_violationsBefore) << "see the lines \"violation: ...\"";
  }
  EXPECT_EQ(Alive(Kind::kDisplay), 0U) << "an X connection is still open";
  EXPECT_EQ(Alive(Kind::kBlock), 0U) << "a block of memory was not freed";
}

olm::CPictureAdapter& EngineTest::MakeAdapter(olm::CEmpEnginePicture* engine) {
  return *m_adapters.emplace_back(std::make_unique<olm::CPictureAdapter>(engine));
}

olm::CEmpEnginePicture& EngineTest::MakeEngine() {
  return *m_engines.emplace_back(std::make_unique<olm::CEmpEnginePicture>());
}

void EngineTest::DeleteAdapter(olm::CPictureAdapter& adapter) {
  Delete(m_adapters, adapter);
}

void EngineTest::DeleteEngine(olm::CEmpEnginePicture& engine) {
  Delete(m_engines, engine);
}

}  // namespace kit
