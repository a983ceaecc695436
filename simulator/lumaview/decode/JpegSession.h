// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_JPEGSESSION_H
#define SIMULATOR_LUMAVIEW_DECODE_JPEGSESSION_H

#include <array>
#include <csetjmp>
#include <cstdio>
// jpeglib.h needs FILE and size_t before it.
#include <jpeglib.h>

#include "simulator/lumaview/decode/Decoder.h"
#include "simulator/lumaview/decode/JpegCoefficients.h"
#include "simulator/lumaview/decode/JpegScanAhead.h"

namespace sim::lumaview {

/// One run of libjpeg over one JPEG stream of a file. Its errors leave by longjmp; only `Succeeds` is jumped to, and
/// what runs there owns nothing.
class JpegSession {
 public:
  /// The stream begins at `start` in the file.
  JpegSession(Source& source, uint64_t start);
  ~JpegSession();
  JpegSession(const JpegSession&) = delete;
  JpegSession& operator=(const JpegSession&) = delete;

  /// What decodes: this thread alone, or a second one beside it where the file is of a kind that allows it and gains.
  enum class Threads { kOne, kTwo };

  Status ReadHeader();
  /// Chooses the output layout, and the smallest of the scales 1/8, 1/4, 1/2 and 1 that is not below `ideal`.
  Status Start(Size ideal, Threads threads);
  /// Reads at least one row into `rows`, which have room for one each; the number read.
  Result<int> ReadRows(std::span<JSAMPROW> rows);
  /// Whether a second thread has met what it cannot judge. The rows read so far are right; a session with one thread
  /// tells what comes of the others.
  bool IsStuck() const { return m_is_stuck; }
  /// After the last row: kDamaged when the file ended before the picture did.
  Status Finish();

  Size GetStoredSize() const;
  Size GetOutputSize() const;
  unsigned int GetThreads() const { return m_ahead != nullptr ? 2 : 1; }
  PixelLayout GetLayout() const { return m_layout; }
  /// Whether ink is stored as light, as Adobe's programs do.
  bool IsInkInverted() const { return m_cinfo.saw_Adobe_marker != 0; }

 private:
  static constexpr size_t kBufferBytes = 64 * 1024;

  template <typename Step>
  [[gnu::noinline]] bool Succeeds(Step step);
  template <typename Step>
  Status Run(Step step);
  void ChooseLayout();
  void ChooseScale(Size ideal);
  void HookCoefficients();
  bool GainsByThread() const;
  void StartOutputOfAhead();
  JBLOCKARRAY AccessAhead(jvirt_barray_ptr array, JDIMENSION first, bool writable);
  bool MakeRoom();
  bool Fill();
  void Skip(long bytes);
  [[noreturn]] void Escape();

  static JpegSession& Self(j_common_ptr cinfo) { return *static_cast<JpegSession*>(cinfo->client_data); }
  static void OnError(j_common_ptr cinfo);
  static void OnMessage(j_common_ptr cinfo, int level);
  static void OnProgress(j_common_ptr cinfo);

  static jvirt_barray_ptr OnRequest(j_common_ptr cinfo, int pool, boolean zeroed, JDIMENSION blocks, JDIMENSION rows,
                                    JDIMENSION most_rows);
  static void OnRealize(j_common_ptr cinfo);
  static JBLOCKARRAY OnAccess(j_common_ptr cinfo, jvirt_barray_ptr array, JDIMENSION first, JDIMENSION count,
                              boolean writable);

  Source& m_source;
  JpegCoefficients m_coefficients;
  std::unique_ptr<JpegScanAhead> m_ahead;  ///< has the coefficients instead, where a second thread reads them
  bool m_is_stuck = false;
  void (*m_realize_others)(j_common_ptr) = nullptr;  ///< libjpeg's own, for its other arrays
  uint64_t m_position;                               ///< in the file, behind what the buffer holds
  bool m_at_end = false;
  bool m_is_cut_off = false;
  Error m_error;
  PixelLayout m_layout = PixelLayout::kBgrx;
  jpeg_decompress_struct m_cinfo{};
  jpeg_error_mgr m_error_manager{};
  jpeg_source_mgr m_source_manager{};
  jpeg_progress_mgr m_progress_manager{};
  std::jmp_buf m_escape{};
  std::array<uint8_t, kBufferBytes> m_buffer;
};

}  // namespace sim::lumaview

#endif
