// SPDX-License-Identifier: Apache-2.0
/// Both pictures dissolve into squares that grow until half-time and shrink again, while one fades into the other.
#include <algorithm>
#include <cmath>

#include "simulator/lumaview/effect/Frame.h"
#include "simulator/lumaview/effect/Pixel.h"

namespace sim::lumaview {
namespace {

/// The largest square: parts of the picture's shorter side.
constexpr int kLargestPart = 16;
/// Sizes from none to the largest; more of them flicker.
constexpr float kSizes = 16.0F;

/// What is drawn at once.
constexpr int kColumns = 1024;

/// Squares of `side` pixels, laid out from the middle of the picture, so that they grow evenly around it.
class Grid {
 public:
  Grid(int side, Size size) : m_side(side), m_size(size) {}

  int GetSide() const { return m_side; }
  /// Where the square that covers column `x` ends.
  int EndColumn(int x) const { return std::min(End(x, m_size.width), m_size.width); }
  int EndRow(int y) const { return std::min(End(y, m_size.height), m_size.height); }
  /// The pixel that gives that square its colour.
  int MiddleColumn(int x) const { return Middle(x, m_size.width); }
  int MiddleRow(int y) const { return Middle(y, m_size.height); }

 private:
  int End(int position, int length) const {
    const int lead = m_side - (length / 2) % m_side;  // of the first square, what lies outside the picture
    return ((position + lead) / m_side + 1) * m_side - lead;
  }
  int Middle(int position, int length) const {
    return std::clamp(End(position, length) - (m_side + 1) / 2, 0, length - 1);
  }

  const int m_side;
  const Size m_size;
};

int SquareSide(const Frame& frame) {
  const float largest = static_cast<float>(std::min(frame.GetWidth(), frame.GetHeight())) / kLargestPart;
  const float grown = std::ceil((1.0F - std::abs(2.0F * frame.progress - 1.0F)) * kSizes) / kSizes;
  return std::max(1, static_cast<int>(largest * grown));
}

/// Mixes the colours of the squares at row `y` that cover columns [first, last) and spreads them into `line`.
void DrawLine(const Frame& frame, const Grid& grid, int y, int first, int last, uint32_t* line) {
  uint32_t from[kColumns];
  uint32_t to[kColumns];
  uint32_t mixed[kColumns];
  int squares = 0;
  for (int x = first; x < last; x = grid.EndColumn(x), ++squares) {
    const int middle = grid.MiddleColumn(x);
    from[squares] = frame.from.Row(y)[middle];
    to[squares] = frame.to.Row(y)[middle];
  }
  frame.kernels.mix_near({mixed, from, to, squares}, SmoothWeight(frame.progress));
  squares = 0;
  for (int x = first; x < last; ++squares) {
    const int end = std::min(grid.EndColumn(x), last);
    std::fill(line + (x - first), line + (end - first), mixed[squares]);
    x = end;
  }
}

/// Rows [first_row, last_row) lie in one row of squares.
void DrawSquares(const Frame& frame, const Grid& grid, int first_row, int last_row) {
  uint32_t line[kColumns];
  const int middle = grid.MiddleRow(first_row);
  for (int x = 0; x < frame.GetWidth(); x += kColumns) {
    const int last = std::min(x + kColumns, frame.GetWidth());
    DrawLine(frame, grid, middle, x, last, line);
    for (int y = first_row; y < last_row; ++y) {
      frame.kernels.copy(frame.target.Row(y) + x, line, last - x);
    }
  }
}

}  // namespace

void DrawPixelize(const Frame& frame) {
  const Grid grid(SquareSide(frame), frame.target.GetSize());
  for (int y = frame.first_row; y < frame.last_row;) {
    const int end = std::min(grid.EndRow(y), frame.last_row);
    DrawSquares(frame, grid, y, end);
    y = end;
  }
}

}  // namespace sim::lumaview
