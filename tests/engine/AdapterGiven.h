// SPDX-License-Identifier: Apache-2.0
/// States of an adapter that several tests begin with. Each leaves an empty journal.
#ifndef TESTS_ENGINE_ADAPTERGIVEN_H
#define TESTS_ENGINE_ADAPTERGIVEN_H

#include <string>

#include "tests/kit/Kit.h"

/// An adapter of an application with the widget id "abcd1234.Viewer", without an engine.
struct GivenAdapter : kit::EngineTest {
  void SetUp() override {
    EngineTest::SetUp();
    adapter = &MakeAdapter();
    adapter->SetAppID(0, "org.example.photos", "abcd1234.Viewer");
    kit::Begin();
  }

  int InitPlayer(const char* url) {
    return kit::Run([&] { return adapter->InitPlayer(url); });
  }
  int StartPlayback(unsigned int sec = 5) {
    return kit::Run([&] { return adapter->StartPlayback(sec); });
  }
  int Play(const char* url, unsigned int sec = 0) {
    return kit::Run([&] { return adapter->Play(url, sec); });
  }
  int Stop() {
    return kit::Run([&] { return adapter->Stop(); });
  }
  int ChangePlayingURL(const char* url) {
    return kit::Run([&] { return adapter->ChangePlayingURL(url); });
  }

  olm::CPictureAdapter* adapter = nullptr;
};

/// After InitPlayer("/pictures/a.jpg").
struct GivenPreparedAdapter : GivenAdapter {
  void SetUp() override {
    GivenAdapter::SetUp();
    ASSERT_EQ(adapter->InitPlayer("/pictures/a.jpg"), 1);
    kit::Begin();
  }
};

/// After StartPlayback.
struct GivenPlayingAdapter : GivenPreparedAdapter {
  void SetUp() override {
    GivenPreparedAdapter::SetUp();
    ASSERT_EQ(adapter->StartPlayback(0), 1);
    kit::Begin();
  }
};

#endif
