// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_HANDOVER_H
#define SIMULATOR_LUMAVIEW_DECODE_HANDOVER_H

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace sim::lumaview {

/// Counts pieces that one thread makes and another takes, in order, from room that both share: piece n lies at place
/// n modulo the room. Who has to wait waits for half of the room, as to sleep and be woken piece by piece takes longer
/// than the work, and far longer on a machine that is busy with something else.
class Handover {
 public:
  /// `room`: pieces, two at least.
  explicit Handover(uint32_t room) : m_room(room) {}

  /// Of the thread that gives: waits for the place of the next piece. False: no more are wanted.
  bool AwaitRoom();
  /// That piece is there.
  void Give();
  /// There will be no more pieces.
  void End();

  /// Of the thread that takes: those before `piece` are over, and their places free; waits for it. False: it does not
  /// come.
  bool Take(uint32_t piece);
  /// No more pieces are wanted.
  void Refuse();

 private:
  bool HalfIsFree() const { return m_given <= m_over + m_room / 2; }
  void KeepApart(int takers_processor);

  const uint32_t m_room;
  std::mutex m_mutex;  ///< of what follows
  std::condition_variable m_free;
  std::condition_variable m_filled;
  uint32_t m_given = 0;  ///< pieces
  uint32_t m_over = 0;   ///< pieces that nobody takes again, given or not
  bool m_ended = false;
  bool m_refused = false;
  int m_takers_processor = -1;
};

}  // namespace sim::lumaview

#endif
