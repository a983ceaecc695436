// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_LINEBUFFER_H
#define SIMULATOR_RPC_LINEBUFFER_H

#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace sim::rpc {

/// Cuts a stream of bytes into lines. Holds at most one line of `limit` bytes and what came with its end.
class LineBuffer {
 public:
  struct Line {
    std::string text;        ///< without its line end; empty when the line was oversized
    bool oversized = false;  ///< the line was longer than the limit and has been thrown away
  };

  explicit LineBuffer(size_t limit) : m_limit(limit) {}

  void Append(std::string_view bytes);
  /// No more bytes come: what stands without a line end is a line too.
  void End() { FinishLine(); }

  bool HasNext() const { return !m_lines.empty(); }
  /// The next line that is not empty, in the order of the stream.
  std::optional<Line> Next();

 private:
  void Extend(std::string_view piece);
  void FinishLine();

  const size_t m_limit;
  Line m_current;
  std::deque<Line> m_lines;
};

}  // namespace sim::rpc

#endif
