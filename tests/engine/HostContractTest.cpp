// SPDX-License-Identifier: Apache-2.0
/// The binary contract with the framework: where each virtual operation stands in its table. The framework was
/// compiled elsewhere and calls by position.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <new>

#include "adapter/CPictureAdapter.h"
#include "host/CEmpAppPicturePlayer.h"
#include "host/CEmpEnginePicture.h"

extern int32_t duration;

namespace {

using olm::CEmpAppBase;
using olm::CEmpAppPicturePlayer;
using olm::CEmpEngineBase;
using olm::CEmpEnginePicture;
using olm::EmpType;
using olm::ParamList;
using Text = const std::string&;

/// The slot of a virtual operation, counted from 1. In the Itanium ABI a pointer to one holds its offset in the table;
/// ARM keeps the mark "virtual" in the other word.
template <typename Operation>
size_t SlotOf(Operation operation) {
  const auto words = std::bit_cast<std::array<ptrdiff_t, 2>>(operation);
#if defined(__arm__) || defined(__aarch64__)
  const ptrdiff_t offset = words[0];
#else
  const ptrdiff_t offset = words[0] - 1;
#endif
  return static_cast<size_t>(offset) / sizeof(void*) + 1;
}

using Destructor = void (*)(void*);

Destructor DestructorInSlot(void* object, size_t slot) {
  return (*static_cast<Destructor**>(object))[slot - 1];
}

template <typename Base>
struct Watched : Base {
  ~Watched() override { ++destroyed; }
  static void* operator new(size_t size) { return ::operator new(size); }
  static void* operator new(size_t, void* place) { return place; }
  static void operator delete(void* object) {
    ++deleted;
    ::operator delete(object);
  }
  static inline int destroyed = 0;
  static inline int deleted = 0;
};

template <typename Base>
struct TheDestructorsOf : testing::Test {};
using Bases = testing::Types<CEmpEngineBase, CEmpAppBase>;
TYPED_TEST_SUITE(TheDestructorsOf, Bases, );

TYPED_TEST(TheDestructorsOf, StandInTheFirstTwoSlots) {
  using Object = Watched<TypeParam>;
  Object::destroyed = Object::deleted = 0;

  alignas(Object) std::byte storage[sizeof(Object)];
  void* placed = new (storage) Object;
  DestructorInSlot(placed, 1)(placed);
  EXPECT_EQ(Object::destroyed, 1);
  EXPECT_EQ(Object::deleted, 0);

  void* allocated = new Object;
  DestructorInSlot(allocated, 2)(allocated);
  EXPECT_EQ(Object::destroyed, 2);
  EXPECT_EQ(Object::deleted, 1);
}

TEST(TheEngineBase, HasItsOperationsInOrder) {
  EXPECT_EQ(SlotOf(static_cast<bool (CEmpEngineBase::*)(std::string&, Text, Text, Text, Text, Text)>(
                &CEmpEngineBase::Execute)),
            3U);
  EXPECT_EQ(SlotOf(static_cast<bool (CEmpEngineBase::*)(std::string&, Text, const ParamList&)>(
                &CEmpEngineBase::ExecuteWithParamList)),
            4U);
  EXPECT_EQ(SlotOf(static_cast<void (CEmpEngineBase::*)()>(&CEmpEngineBase::Destroy)), 5U);
  EXPECT_EQ(SlotOf(static_cast<void (CEmpEngineBase::*)(int, std::string, std::string, std::string)>(
                &CEmpEngineBase::SetAppInfo)),
            6U);
}

TEST(TheEngine, OverridesInTheBasesSlots) {
  EXPECT_EQ(SlotOf(&CEmpEnginePicture::Execute), 3U);
  EXPECT_EQ(SlotOf(&CEmpEnginePicture::ExecuteWithParamList), 4U);
}

TEST(TheApplicationBase, HasItsOperationsInOrder) {
  using Base = CEmpAppBase;
  EXPECT_EQ(SlotOf(static_cast<bool (Base::*)(Text, Text, Text, Text)>(&Base::Open)), 3U);
  EXPECT_EQ(SlotOf(static_cast<bool (Base::*)(Text, EmpType::type)>(&Base::Close)), 4U);
  EXPECT_EQ(SlotOf(static_cast<bool (Base::*)(std::string&, Text, Text, Text, Text, Text, Text)>(&Base::Execute)), 5U);
  EXPECT_EQ(
      SlotOf(static_cast<bool (Base::*)(std::string&, Text, Text, const ParamList&)>(&Base::ExecuteWithParamList)), 6U);
  EXPECT_EQ(SlotOf(&Base::Destroy), 7U);
  EXPECT_EQ(SlotOf(static_cast<bool (Base::*)(int, Text, Text, Text)>(&Base::Open)), 8U);
  EXPECT_EQ(SlotOf(static_cast<bool (Base::*)(int)>(&Base::Close)), 9U);
  EXPECT_EQ(SlotOf(static_cast<bool (Base::*)(std::string&, int, Text, Text, Text, Text, Text)>(&Base::Execute)), 10U);
  EXPECT_EQ(SlotOf(static_cast<bool (Base::*)(std::string&, int, Text, const ParamList&)>(&Base::ExecuteWithParamList)),
            11U);
  EXPECT_EQ(SlotOf(&Base::CreateEmpEngine), 12U);
  EXPECT_EQ(SlotOf(static_cast<void (Base::*)(std::string)>(&Base::OnAppEvent)), 13U);
  EXPECT_EQ(SlotOf(static_cast<void (Base::*)(std::string)>(&Base::OnSystemEvent)), 14U);
}

TEST(TheApplication, OverridesInTheBasesSlots) {
  using Application = CEmpAppPicturePlayer;
  EXPECT_EQ(SlotOf(static_cast<bool (Application::*)(int, Text, Text, Text)>(&Application::Open)), 8U);
  EXPECT_EQ(SlotOf(static_cast<bool (Application::*)(int)>(&Application::Close)), 9U);
  EXPECT_EQ(SlotOf(&Application::CreateEmpEngine), 12U);
}

/// What a fresh process holds: read before the first test, because every test sets these anew.
struct ProcessWideState {
  int32_t length = duration;
  const void* application = olm::m_pBase;
  const void* engine = olm::m_pEngine;
  int initPlayerCount = olm::s_initPlayerCount;
  int playCount = olm::s_playCount;
  const void* display = olm::CPictureAdapter::pDisplay;
  Window window = olm::CPictureAdapter::window_id;
  int displayNumber = olm::CPictureAdapter::displayNum;
  int windowHolders = olm::CPictureAdapter::winNum;
  int displayInitialised = olm::CPictureAdapter::lumaviewInitFlag;
};
const ProcessWideState kAtStart;

TEST(AFreshProcess, HoldsNothing) {
  EXPECT_EQ(kAtStart.length, 0);
  EXPECT_EQ(kAtStart.application, nullptr);
  EXPECT_EQ(kAtStart.engine, nullptr);
  EXPECT_EQ(kAtStart.initPlayerCount, 0);
  EXPECT_EQ(kAtStart.playCount, 0);
  EXPECT_EQ(kAtStart.display, nullptr);
  EXPECT_EQ(kAtStart.window, olm::kNoWindow);
  EXPECT_EQ(kAtStart.displayNumber, 0);
  EXPECT_EQ(kAtStart.windowHolders, 0);
  EXPECT_EQ(kAtStart.displayInitialised, 0);
}

}  // namespace
