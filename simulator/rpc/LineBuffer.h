// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_LINEBUFFER_H
#define SIMULATOR_RPC_LINEBUFFER_H

#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/rpc/Framing.h"

namespace sim::rpc {

/// Messages as lines. Holds at most one line of `limit` bytes and what came with its end.
class LineBuffer final : public Framing {
 public:
  using Line = Message;

  explicit LineBuffer(size_t limit) : m_limit(limit) {}

  void Append(std::string_view bytes) override;
  /// What stands without a line end is a line too.
  void End() override { FinishLine(); }

  bool HasNext() const override { return !m_lines.empty(); }
  std::optional<Line> Next() override;
  void Reuse(Line line) override;

  Envelope Around(std::string_view) const override { return {"", "\n"}; }

 private:
  void Extend(std::string_view piece);
  void FinishLine();

  const size_t m_limit;
  Line m_current;
  std::string m_room;  ///< empty, for the next line
  std::deque<Line> m_lines;
};

}  // namespace sim::rpc

#endif
