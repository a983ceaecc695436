// SPDX-License-Identifier: Apache-2.0
/// What happens to a decode while it runs: nobody wants the picture any more, the file becomes shorter.
#include <fcntl.h>
#include <unistd.h>

#include "simulator/base/UniqueFd.h"
#include "tests/lumaview/TestPictures.h"

namespace sim::lumaview::test {
namespace {

class GivenOpenPicture : public testing::TestWithParam<const char*> {
 protected:
  GivenOpenPicture() : m_path(m_folder / (std::string("photograph.") + GetParam())) {
    Convert({"-size", "200x150", "-seed", "7", "plasma:red-blue", "-depth", "8", "-quality", "90", m_path});
    m_file = UniqueFd(open(m_path.c_str(), O_RDONLY | O_CLOEXEC));
    m_source.emplace(m_file.Get(), m_limits, m_cancelled);
    Result<std::unique_ptr<Decoder>> decoder = OpenPicture(*m_source);
    EXPECT_TRUE(decoder) << decoder.error().reason;
    if (decoder) {
      m_decoder = std::move(*decoder);
    }
  }

  Status Render() {
    std::vector<uint32_t> pixels(160 * 120);
    return RenderFrame(*m_decoder, {}, {pixels.data(), 160, 120, 160});
  }

  TempFolder m_folder;
  const std::string m_path;
  const Limits m_limits;
  std::atomic<bool> m_cancelled{false};
  UniqueFd m_file;
  std::optional<Source> m_source;
  std::unique_ptr<Decoder> m_decoder;
};

TEST_P(GivenOpenPicture, ADroppedOneIsNotDecoded) {
  ASSERT_TRUE(m_decoder);
  m_cancelled = true;

  const Status rendered = Render();

  ASSERT_FALSE(rendered);
  EXPECT_EQ(rendered.error().code, kCancelled);
}

TEST_P(GivenOpenPicture, AFileThatBecomesShorterIsDamagedOrWasReadBefore) {
  ASSERT_TRUE(m_decoder);
  ASSERT_EQ(truncate(m_path.c_str(), 700), 0);

  const Status rendered = Render();

  EXPECT_TRUE(rendered || rendered.error().code == kDamaged) << rendered.error().code << rendered.error().reason;
}

TEST_P(GivenOpenPicture, AFileThatIsEmptiedIsDamagedOrWasReadBefore) {
  ASSERT_TRUE(m_decoder);
  ASSERT_EQ(truncate(m_path.c_str(), 0), 0);

  const Status rendered = Render();

  EXPECT_TRUE(rendered || rendered.error().code == kDamaged) << rendered.error().code << rendered.error().reason;
}

INSTANTIATE_TEST_SUITE_P(Formats, GivenOpenPicture,
                         testing::Values("jpg", "png", "gif", "webp", "tif", "bmp", "ppm", "tga", "heic", "avif"),
                         [](const auto& test) { return std::string(test.param); });

}  // namespace
}  // namespace sim::lumaview::test
