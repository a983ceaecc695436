// SPDX-License-Identifier: Apache-2.0
/// The application object, the process's entry, and what an allocator that has nothing left makes of both.
#include "host/CEmpAppPicturePlayer.h"

#include <cstdlib>
#include <new>
#include <string>

#include "tests/kit/Kit.h"

// The entry under a name of its own; what it includes is included above and guarded.
#define main PicturePlayerMain
#include "host/main.cpp"
#undef main

// operator new of the whole program, so that one allocation can be refused and another be found again.
extern "C" void* __real_malloc(size_t size);
extern "C" void __real_free(void* block);

namespace {

enum class Refusal { kNone, kNull, kThrow };

struct Allocator {
  size_t size = 0;  ///< of the allocation that is meant
  Refusal refusal = Refusal::kNone;
  void* last = nullptr;  ///< of that size
};

thread_local Allocator t_allocator;

void* Allocate(size_t size) {
  Allocator& allocator = t_allocator;
  const bool meant = size == allocator.size;
  if (meant && allocator.refusal == Refusal::kNull) return nullptr;
  void* block = meant && allocator.refusal == Refusal::kThrow ? nullptr : __real_malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  if (meant) allocator.last = block;
  return block;
}

}  // namespace

void* operator new(size_t size) {
  return Allocate(size);
}
void operator delete(void* block) noexcept {
  __real_free(block);
}
void operator delete(void* block, size_t) noexcept {
  __real_free(block);
}

namespace {

/// Its fields, which the framework alone reads.
struct Application : olm::CEmpAppPicturePlayer {
  using CEmpAppBase::m_iReserved;
  using CEmpAppBase::m_strEngineId;
  using CEmpAppBase::m_strEngineName;
  using CEmpAppBase::m_strEngineType;
  using CEmpAppBase::m_strVersion;
};

class AnApplication : public kit::EngineTest {
 protected:
  void TearDown() override {
    t_allocator = {};
    EngineTest::TearDown();
  }
  static void Refuse(size_t size, Refusal refusal) { t_allocator = {size, refusal, nullptr}; }

  Application m_application;
};

TEST_F(AnApplication, NamesTheEngineToTheFramework) {
  constexpr int kAsTheBaseSetIt = 4711;
  EXPECT_EQ(m_application.m_strEngineName, "Picture");
  EXPECT_EQ(m_application.m_strEngineId, "0001");
  EXPECT_EQ(m_application.m_strVersion, "0.1");
  EXPECT_EQ(m_application.m_strEngineType, "Picture");
  EXPECT_EQ(m_application.m_iReserved, kAsTheBaseSetIt);
}

TEST_F(AnApplication, HasTheReservedFieldBetweenTheThirdTextAndTheFourth) {
  EXPECT_LT(static_cast<void*>(&m_application.m_strEngineName), static_cast<void*>(&m_application.m_strEngineId));
  EXPECT_LT(static_cast<void*>(&m_application.m_strEngineId), static_cast<void*>(&m_application.m_strVersion));
  EXPECT_LT(static_cast<void*>(&m_application.m_strVersion), static_cast<void*>(&m_application.m_iReserved));
  EXPECT_LT(static_cast<void*>(&m_application.m_iReserved), static_cast<void*>(&m_application.m_strEngineType));
}

TEST_F(AnApplication, LogsAndHandsOnOpenAndClose) {
  for (const bool answer : {true, false}) {
    const std::string path = answer ? "base answers true" : "base answers false";
    kit::world().openResult = kit::world().closeResult = answer;
    kit::Begin();
    EXPECT_EQ(kit::Run([&] { return m_application.Open(3, "one", "two", "three"); }), answer);
    kit::ExpectGolden("Open", path);
    kit::Begin();
    EXPECT_EQ(kit::Run([&] { return m_application.Close(3); }), answer);
    kit::ExpectGolden("Close", path);
  }
}

TEST_F(AnApplication, MakesAnEngine) {
  const std::unique_ptr<olm::CEmpEngineBase> engine(m_application.CreateEmpEngine());
  kit::ExpectGolden("CreateEmpEngine", "engine made");
  EXPECT_EQ(engine.get(), olm::m_pEngine);
}

TEST_F(AnApplication, ReportsAnAllocatorThatReturnsNull) {
  Refuse(sizeof(olm::CEmpEnginePicture), Refusal::kNull);
  EXPECT_EQ(m_application.CreateEmpEngine(), nullptr);
  t_allocator = {};
  kit::ExpectGolden("CreateEmpEngine", "no memory");
}

TEST_F(AnApplication, LetsAFailedAllocationThrough) {
  Refuse(sizeof(olm::CEmpEnginePicture), Refusal::kThrow);
  EXPECT_THROW(m_application.CreateEmpEngine(), std::bad_alloc);
  Refuse(sizeof(olm::CPictureAdapter), Refusal::kThrow);
  EXPECT_THROW(m_application.CreateEmpEngine(), std::bad_alloc);
}

TEST_F(AnApplication, IsHandedToTheFrameworkByTheEntry) {
  Refuse(sizeof(olm::CEmpAppPicturePlayer), Refusal::kNone);
  setenv("DISPLAY", ":7", 1);
  std::string displayOfTheLoop;
  kit::OnCall("EmpMain", [&] { displayOfTheLoop = std::getenv("DISPLAY"); });
  kit::FailNext("EmpMain", 3);
  char name[] = "picture-player";
  char* argv[] = {name, nullptr};
  kit::Begin();

  kit::Run([&] { return PicturePlayerMain(1, argv); });

  kit::ExpectGolden("main", "status 3");
  EXPECT_EQ(displayOfTheLoop, ":0");
  // The framework's from here on, which this one does not delete.
  const auto* application = static_cast<olm::CEmpAppPicturePlayer*>(t_allocator.last);
  ASSERT_NE(application, nullptr);
  delete application;
}

TEST_F(AnApplication, IsNotMadeByAnEntryWithoutMemory) {
  Refuse(sizeof(olm::CEmpAppPicturePlayer), Refusal::kThrow);
  char* argv[] = {nullptr};
  EXPECT_THROW(PicturePlayerMain(0, argv), std::bad_alloc);
  t_allocator = {};
  EXPECT_EQ(kit::CallCount("EmpMain"), 0U);
}

}  // namespace
