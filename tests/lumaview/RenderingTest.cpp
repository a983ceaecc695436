// SPDX-License-Identifier: Apache-2.0
// Decoding in the background: results, cancelling, the cache of what was never shown.
#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "simulator/lumaview/picture/FrameCache.h"
#include "simulator/lumaview/picture/Rendering.h"
#include "tests/lumaview/PictureFiles.h"

namespace sim::lumaview {
namespace {

using lumaview_test::PictureFolder;
using lumaview_test::Solid;

constexpr Size kWindow{160, 120};

PictureFilePtr OpenFile(const std::string& path) {
  auto file = PictureFile::Open(path);
  EXPECT_TRUE(file);
  return *file;
}

class GivenFileAndPool : public ::testing::Test {
 protected:
  /// Starts and waits for the frame; `on_header` runs in between, on the pool's thread.
  Result<Rendered> Render(const std::string& path, const View& view, Rendering::OnHeader on_header) {
    std::promise<Result<Rendered>> done;
    m_rendering.set_value(Rendering::Start(m_pool, OpenFile(path), view, kWindow, std::move(on_header),
                                           [&done](Result<Rendered> result) { done.set_value(std::move(result)); }));
    return done.get_future().get();
  }

  PictureFolder folder;
  WorkerPool m_pool{1};
  std::promise<std::shared_ptr<Rendering>> m_rendering;
};

TEST_F(GivenFileAndPool, HeaderComesFirstThenTheFrame) {
  Size upright;
  const auto rendered = Render(folder.WritePng("red.png", 64, 48, Solid(0xFF0000)), View{},
                               [&upright](const auto& header) { upright = UprightSize(*header); });
  ASSERT_TRUE(rendered);
  EXPECT_EQ(upright, (Size{64, 48}));
  EXPECT_EQ(rendered->frame->GetSize(), kWindow);
  EXPECT_EQ(*rendered->frame->GetPixels().Row(60), 0xFFFF0000u);
  EXPECT_EQ(rendered->stream, nullptr);
}

TEST_F(GivenFileAndPool, CancelledDecodeEndsBeforeItsTime) {
  // 12 Mpx take a while; what is asked for here is that the rest is not waited for.
  const auto path = folder.WriteJpeg("large.jpg", 4000, 3000, Solid(0x808080));
  auto started = m_rendering.get_future().share();

  const auto rendered = Render(path, View{}, [started](const auto&) { started.get()->Cancel(); });

  ASSERT_FALSE(rendered);
  EXPECT_EQ(rendered.error().code, kCancelled);
}

TEST_F(GivenFileAndPool, PanIsLimitedToWhatTheWindowAllows) {
  View view;
  view.zoom = 2;
  view.pan_x = 100000;
  const auto rendered = Render(folder.WritePng("red.png", 64, 48, Solid(0xFF0000)), view, [](const auto&) {});
  ASSERT_TRUE(rendered);
  EXPECT_EQ(rendered->view.pan_x, kWindow.width / 2);
}

class GivenCacheOfTwoFrames : public GivenFileAndPool {
 protected:
  GivenCacheOfTwoFrames() : m_cache(2 * kWindow.width * kWindow.height * sizeof(uint32_t)) {}

  Rendered RenderNamed(const std::string& name) {
    m_rendering = {};
    auto rendered = Render(folder.WritePng(name, 64, 48, Solid(0xFF0000)), View{}, [](const auto&) {});
    return *rendered;
  }

  FrameCache m_cache;
};

TEST_F(GivenCacheOfTwoFrames, WhatIsTakenIsGone) {
  const Rendered rendered = RenderNamed("a.png");
  m_cache.Put(rendered);

  const auto taken = m_cache.Take(rendered.file->GetIdentity(), View{}, kWindow);

  ASSERT_TRUE(taken);
  EXPECT_EQ(taken->frame, rendered.frame);
  EXPECT_FALSE(m_cache.Take(rendered.file->GetIdentity(), View{}, kWindow));
}

TEST_F(GivenCacheOfTwoFrames, AnotherViewOrSizeOrStateOfTheFileIsAnotherPicture) {
  const Rendered rendered = RenderNamed("a.png");
  m_cache.Put(rendered);
  View turned;
  turned.rotation = 90;
  FileIdentity touched = rendered.file->GetIdentity();
  touched.modified_ns += 1;

  EXPECT_FALSE(m_cache.Take(rendered.file->GetIdentity(), turned, kWindow));
  EXPECT_FALSE(m_cache.Take(rendered.file->GetIdentity(), View{}, {320, 240}));
  EXPECT_FALSE(m_cache.Take(touched, View{}, kWindow));
  EXPECT_TRUE(m_cache.Take(rendered.file->GetIdentity(), View{}, kWindow));
}

TEST_F(GivenCacheOfTwoFrames, TheOldestIsDroppedForTheThird) {
  const Rendered a = RenderNamed("a.png");
  const Rendered b = RenderNamed("b.png");
  const Rendered c = RenderNamed("c.png");
  m_cache.Put(a);
  m_cache.Put(b);
  m_cache.Put(c);

  EXPECT_FALSE(m_cache.Take(a.file->GetIdentity(), View{}, kWindow));
  EXPECT_TRUE(m_cache.Take(b.file->GetIdentity(), View{}, kWindow));
  EXPECT_TRUE(m_cache.Take(c.file->GetIdentity(), View{}, kWindow));
}

}  // namespace
}  // namespace sim::lumaview
