// SPDX-License-Identifier: Apache-2.0
/// "SetDisplayArea" over a table of screens, layouts and rectangles. What is expected is computed here in whole numbers
/// and doubles; the engine's single-precision arithmetic is not used.
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <tuple>

#include "tests/engine/DisplayGivens.h"

namespace {

constexpr int kSmallest = std::numeric_limits<int>::min();
constexpr int kLargest = std::numeric_limits<int>::max();

/// `value` with 24 bits, the tie going to the even neighbour, as single precision holds it.
double ToSingle(double value) {
  if (value == 0) return 0;
  int exponent = 0;
  const double mantissa = std::frexp(value, &exponent);
  return std::ldexp(std::nearbyint(std::ldexp(mantissa, 24)), exponent - 24);
}

int ToNearestInt(double value) {
  const double whole = std::trunc(value);
  if (whole >= kLargest) return kLargest;
  if (whole <= kSmallest) return kSmallest;
  return static_cast<int>(whole);
}

struct Screen {
  const char* name;
  int width, height;  ///< 0, 0: there is no server
  int nominalHeight;
};

struct Rectangle {
  int x, y, width, height;
};

constexpr std::array<Screen, 5> kScreens = {{{"1920", 1920, 1080, 1080},
                                             {"1280", 1280, 720, 720},
                                             {"3840", 3840, 2160, 1080},
                                             {"empty", 0, 0, 1080},
                                             {"none", 0, 0, 1080}}};

constexpr std::array<int, 9> kBaseResolutions = {0, -5, kSmallest, 1, 540, 720, 1080, 2160, 7};

constexpr std::array<Rectangle, 22> kRectangles = {{
    {0, 0, 960, 540},
    {100, 50, 640, 360},
    {1, 1, 3, 5},
    {-1, -3, 3, 1},
    {-100, -50, 333, 777},
    {0, 0, 0, 0},
    {10, 20, 0, 500},
    {10, 20, 500, 0},
    {10, 20, -1, 500},
    {10, 20, 500, kSmallest},
    {100, 0, 2000, 500},
    {0, 100, 500, 1081},
    {0, 0, 4000, 4000},
    {1900, 1000, 500, 500},
    {2000, 0, 2000, 500},
    {16777217, 16777219, 10, 10},
    {33554435, -33554437, 11, 13},
    {kLargest, kSmallest, 10, 10},
    {0, 0, kLargest, 10},
    {0, 0, 10, kLargest},
    {kSmallest, kLargest, kLargest, kLargest},
    {-kLargest, 5, kLargest, 1},
}};

/// What the steps of the operation give, one after the other.
struct Expected {
  double ratio;
  Rectangle scaled;
  Rectangle area;
};

Expected Compute(const Screen& screen, int baseRes, const Rectangle& given) {
  Expected expected{};
  const double lines = baseRes <= 0 ? 1080.0 : ToSingle(baseRes);
  expected.ratio = ToSingle(screen.nominalHeight / lines);
  const auto scale = [&](int value) { return ToNearestInt(ToSingle(ToSingle(value) * expected.ratio)); };
  expected.scaled = {scale(given.x), scale(given.y), scale(given.width), scale(given.height)};
  Rectangle area = expected.scaled;
  const bool known = screen.width > 0 && screen.height > 0;
  if (given.width <= 0 || given.height <= 0) {
    const bool answers = std::string(screen.name) != "none";
    area = known ? Rectangle{0, 0, screen.width, screen.height} : answers ? Rectangle{} : Rectangle{0, 0, 1920, 1080};
  }
  if (known && (area.width > screen.width || area.height > screen.height)) {
    // A place beyond the range of int leaves a size that is as far off; it is cut to the nearest int, too.
    area.width = ToNearestInt(static_cast<double>(screen.width) - area.x);
    area.height = ToNearestInt(static_cast<double>(screen.height) - area.y);
  }
  expected.area = area;
  return expected;
}

/// The protocol carries 16 bits of a size; where these are zero there is nothing to ask the server for.
bool IsCarried(const Rectangle& area) {
  return area.width >= 1 && area.height >= 1 && area.width % 65536 != 0 && area.height % 65536 != 0;
}

std::string Printed(const char* format, const Rectangle& r) {
  char text[200];
  std::snprintf(text, sizeof text, format, r.x, r.y, r.width, r.height);
  return text;
}

class GivenScreenAndLayout : public given::FreshAdapter, public testing::WithParamInterface<std::tuple<Screen, int>> {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    kit::world().screenWidth = TheScreen().width;
    kit::world().screenHeight = TheScreen().height;
    adapter = &MakeAdapter();
    kit::Begin();
    ASSERT_EQ(adapter->InitWindow(0, 0, 10, 10), 1);
    adapter->m_bInitWindow = true;
  }

  const Screen& TheScreen() const { return std::get<0>(GetParam()); }
  int BaseRes() const { return std::get<1>(GetParam()); }

  void TearDown() override {
    kit::ResetScript();
    FreshAdapter::TearDown();
  }

  /// No pixels for images, which would be as large as the numbers are. Where there is no server it went after the
  /// window was made, and no measuring succeeds.
  void TakeAwayWhatIsNotThere() {
    kit::ResetScript();
    kit::FailNext("calloc");
    if (std::string(TheScreen().name) != "none") return;
    adapter->m_iScreenWidth = 0;
    adapter->m_iScreenHeight = 0;
    kit::FailAt("XOpenDisplay", 1);
    kit::FailAt("XOpenDisplay", 2);
  }
};

std::vector<std::string> EntriesWith(const std::string& text) {
  std::vector<std::string> found;
  for (const std::string& entry : kit::Entries()) {
    if (entry.find(text) != std::string::npos) found.push_back(entry);
  }
  return found;
}

TEST_P(GivenScreenAndLayout, EveryRectangleIsScaledInSinglePrecision) {
  for (const Rectangle& given : kRectangles) {
    SCOPED_TRACE(Printed("%d, %d, %d x %d", given));
    TakeAwayWhatIsNotThere();
    kit::Begin();
    const Expected expected = Compute(TheScreen(), BaseRes(), given);

    ASSERT_EQ(adapter->SetDisplayArea(given.x, given.y, given.width, given.height, BaseRes(), true), 1);

    char ratio[100];
    std::snprintf(ratio, sizeof ratio, "Get the BaseResolution=%d ratio=%f.\\n", TheScreen().nominalHeight,
                  expected.ratio);
    EXPECT_EQ(EntriesWith("ratio="), std::vector<std::string>{std::string("log 4 blue SetDisplayArea: ") + ratio});
    const std::string blue = "log 4 blue SetDisplayArea: ";
    const std::string scaled = Printed("iDis_x: %d\\tiDis_y: %d\\tiDis_w: %d\\tiDis_h: %d\\n", expected.scaled);
    const std::string area = Printed("iDis_x: %d   iDis_y: %d  iDis_w: %d  iDis_h: %d\\n", expected.area);
    EXPECT_EQ(EntriesWith("iDis_x:"), (std::vector<std::string>{blue + scaled, blue + area, blue + area}));
    std::vector<std::string> moves;
    if (IsCarried(expected.area)) {
      moves.push_back("x XMoveResizeWindow(display#1, 0x400001, " + Printed("%d, %d, %d, %d)", expected.area));
    }
    EXPECT_EQ(EntriesWith("XMoveResizeWindow"), moves);
  }
}

INSTANTIATE_TEST_SUITE_P(Table, GivenScreenAndLayout,
                         testing::Combine(testing::ValuesIn(kScreens), testing::ValuesIn(kBaseResolutions)),
                         [](const auto& cell) {
                           const int base = std::get<1>(cell.param);
                           const std::string sign = base < 0 ? "Minus" : "";
                           return std::string("Screen") + std::get<0>(cell.param).name + "Lines" + sign +
                                  std::to_string(std::abs(static_cast<long>(base)));
                         });

}  // namespace
