// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_LINEBUFFER_H
#define SIMULATOR_RPC_LINEBUFFER_H

#include <optional>
#include <string>
#include <string_view>

#include "simulator/rpc/Framing.h"

namespace sim::rpc {

/// Messages as lines. Holds at most one line of `limit` bytes and what came with its end.
class LineBuffer final : public Framing {
 public:
  explicit LineBuffer(size_t limit) : m_limit(limit) {}

  void Append(std::string_view bytes) override;
  /// What stands without a line end is a line too.
  void End() override { Append("\n"); }

  bool HasNext() const override { return m_next.has_value(); }
  std::optional<Message> Next() override;

  Envelope Around(std::string_view) const override { return {"", "\n"}; }

 private:
  struct Line {
    size_t begin = 0;
    size_t size = 0;
    bool oversized = false;
  };

  void FindNext();
  void ForgetTaken();

  const size_t m_limit;
  std::string m_bytes;
  size_t m_begin = 0;          ///< of the line that is looked for, behind those that were found
  size_t m_searched = 0;       ///< bytes of it in which no line end is
  bool m_isOversized = false;  ///< it is, and what came of it is not kept
  std::optional<Line> m_next;
};

}  // namespace sim::rpc

#endif
